#include "python/src/Extents.h"

#include "prm/ChangedSince.h"
#include "prm/ParameterChange.h"
#include "python/src/Bindings.h"
#include "python/src/Home.h"

#include <cmath>
#include <map>
#include <utility>

namespace PrmPython {

namespace {

struct Times {
    Prm::TimeSpans spans;
};

py::array framesWithin(const Times& self, int first, int last) {
    std::vector<int> frames;
    for (const Prm::TimeSpan& span : self.spans) {
        double from = std::max(std::ceil(span.from), static_cast<double>(first));
        if (from == span.from && !span.withFrom)
            ++from;
        for (double frame = from; frame <= last && span.contains(Prm::Time::fromDouble(frame)); ++frame)
            frames.push_back(static_cast<int>(frame));
    }
    return py::array_t<int>(static_cast<py::ssize_t>(frames.size()), frames.data());
}

Home* projectOf(const Extent& extent) {
    if (extent.watched)
        return extent.watched->isAlive() ? homeOf(*extent.watched->set) : nullptr;
    return extent.changed->object ? homeOf(*extent.changed->object) : nullptr;
}

Times framesOf(const Extent& self, const ViewName& name, const std::optional<Handle>& of, bool ofAll) {
    const Prm::View view = findView(projectOf(self), name);
    if (of)
        return {self.extent.in(&of->alive(), view)};
    if (ofAll || self.watched)
        return {self.extent.in(view)};
    return {self.extent.in(static_cast<const Prm::BasicParameter*>(self.changed->address), view)};
}

/// What has changed below a group since it was asked last.
class Watch : public Zeroed {
public:
    explicit Watch(const GroupHandle& group)
        : m_group(group), m_changed(betweenWork<Prm::ChangedSince>(group.owned())) {
        listMembers();
    }

    Extent take() {
        m_group.owned();
        Extent taken;
        taken.watched = m_group;
        taken.extent = m_changed->take();
        for (const auto& member : taken.extent.went()) {
            const auto found = m_members.find(addressOf(member));
            if (found != m_members.end())
                taken.went << found->second.path;
        }
        if (!taken.extent.came().isEmpty() || !taken.extent.went().isEmpty() || !taken.extent.renamed().isEmpty())
            listMembers();
        for (const Prm::BasicParameter* const parameter : taken.extent.parameters())
            addTo(taken.parameters, parameter);
        for (const auto& member : taken.extent.came())
            addTo(taken.came, addressOf(member));
        for (const auto& member : taken.extent.renamed())
            addTo(taken.renamed, addressOf(member));
        return taken;
    }

private:
    struct Named {
        Prm::ParameterSet::Member member{};
        QString path;
    };

    static const void* addressOf(const Prm::Extent::Member& member) {
        return member.set ? static_cast<const void*>(member.set) : member.parameter;
    }

    void listMembers() {
        m_members.clear();
        forEachBelow(*m_group.set, {}, [this](const Prm::ParameterSet::Member& member, const QString& path) {
            const void* const address = member.set ? static_cast<const void*>(member.set) : member.parameter;
            m_members[address] = {member, path};
        });
    }
    /// Unless it has gone.
    void addTo(py::list& list, const void* address) const {
        const auto found = m_members.find(address);
        if (found != m_members.end())
            list.append(wrap(m_group.keeper, found->second.member));
    }

    GroupHandle m_group;
    std::shared_ptr<Prm::ChangedSince> m_changed;
    /// By their addresses, as they were when the members changed last.
    std::map<const void*, Named> m_members;
};

Watch watch(const py::object& group) {
    const py::object members = py::isinstance<Home>(group) ? group.attr("root") : group;
    if (!py::isinstance<GroupHandle>(members))
        throw py::type_error("a group or a project is needed");
    return Watch(members.cast<const GroupHandle&>());
}

void bindTimes(py::module_& module) {
    using Span = Prm::TimeSpan;
    py::class_<Span>(module, "Span", "The times from one to another, in frames; ends may be infinite.")
        .def_readonly("start", &Span::from)
        .def_readonly("end", &Span::to)
        .def_readonly("with_start", &Span::withFrom, "Whether the start belongs to it.")
        .def_readonly("with_end", &Span::withTo, "Whether the end belongs to it.")
        .def("__contains__", [](const Span& self, double time) { return self.contains(timeOf(time)); })
        .def("__bool__", [](const Span& self) { return !self.isEmpty(); })
        .def(
            "__eq__", [](const Span& self, const Span& other) { return self == other; }, py::is_operator())
        .def("__hash__", [](const Span& self) { return py::hash(py::make_tuple(self.from, self.to)); })
        .def("__repr__", [](const Span& self) {
            return py::str("<prm.Span {}{}, {}{}>")
                .format(self.withFrom ? "[" : "(", self.from, self.to, self.withTo ? "]" : ")");
        });
    py::class_<Times>(module, "Times", "A set of times: spans in ascending order.")
        .def("__contains__", [](const Times& self, double time) { return self.spans.contains(timeOf(time)); })
        .def("__iter__",
             [](const Times& self) {
                 return py::iter(py::cast(std::vector<Span>(self.spans.begin(), self.spans.end())));
             })
        .def(
            "__len__", [](const Times& self) { return self.spans.size(); }, "The number of spans.")
        .def("within", &framesWithin, py::arg("first"), py::arg("last"),
             "The whole frames from the first to the last, both included, as an array.");
}

} // namespace

Extent extentOf(const KeeperPointer& keeper, const Prm::ParameterChange& change) {
    Extent extent;
    extent.extent = Prm::extentOf(change);
    extent.changed.emplace(keeper, *change.parameter);
    for (const Prm::BasicParameter* const reached : extent.extent.parameters()) {
        auto* const changed =
            const_cast<Prm::BasicParameter*>(reached); // NOLINT(cppcoreguidelines-pro-type-const-cast)
        extent.parameters.append(wrap(keeper, *changed));
    }
    return extent;
}

void bindExtents(py::module_& module) {
    bindTimes(module);
    py::class_<Extent>(module, "Extent", "Where values may differ: after a change, or since a group was asked last.")
        .def("frames", &framesOf, py::arg("view") = ViewName(), py::arg("of") = py::none(), py::arg("all") = false,
             "The times at which the value of a parameter may differ in a view; without one, of the parameter that "
             "changed, or of any below the group. all: of any parameter.")
        .def_readonly("parameters", &Extent::parameters, "The parameters whose values may differ.")
        .def_readonly("came", &Extent::came, "Members that the group did not have before. Of a change, none.")
        .def_property_readonly(
            "went", [](const Extent& self) { return toPython(self.went); },
            "The paths, below the group, that members had which it does not have any more. A member that has another "
            "place went and came.")
        .def_readonly("renamed", &Extent::renamed, "Members with another name or display name.")
        .def("__bool__", [](const Extent& self) { return !self.extent.isEmpty(); })
        .def("__repr__", [](const Extent& self) { return py::str("<prm.Extent in {!r}>").format(self.parameters); });
    py::class_<Watch>(module, "ChangedSince", "Finds what has changed below a group: values, members, names.")
        .def(py::init(&watch), py::arg("group"), "Of a group or a project.")
        .def("take", &Watch::take,
             "What has changed since the last call, or since this was made, however it was changed. For a cache or a "
             "view of a project that is brought up to date once a frame. What was changed and changed back is not "
             "included.\n\nRaises ReferenceError if the group was deleted.");
}

} // namespace PrmPython
