#include "prm/ParameterEdits.h"
#include "prm/ParameterSetEdits.h"
#include "python/src/Bindings.h"
#include "python/src/GroupNameEdit.h"
#include "python/src/Home.h"
#include "python/src/Retimings.h"

#include <boost/make_shared.hpp>

#include <functional>

namespace PrmPython {

namespace {

const QString& nameOf(const Prm::ParameterSet::Member& member) {
    return member.parameter ? member.parameter->scriptName() : member.set->scriptName();
}

std::optional<Prm::ParameterSet::Member> find(const Prm::ParameterSet& set, const QString& path) {
    // Looked up from a handle that may edit.
    auto& searched = const_cast<Prm::ParameterSet&>(set); // NOLINT(cppcoreguidelines-pro-type-const-cast)
    if (Prm::BasicParameter* const parameter = searched.parameterWithName(path))
        return Prm::ParameterSet::Member{parameter, nullptr};
    if (Prm::ParameterSet* const subset = searched.subsetWithName(path))
        return Prm::ParameterSet::Member{nullptr, subset};
    return {};
}

GroupHandle makeGroup(const QString& name, const py::iterable& members) {
    buryLeftBehind();
    const auto made = boost::make_shared<Prm::ParameterSet>(name);
    GroupHandle group(kept(static_cast<Keeper*>(new Made<Prm::ParameterSet>(made))), *made);
    for (const py::handle member : members)
        addMember(group.keeper, *made, member);
    return group;
}

/// The edit that adds what the keeper owns.
template <class Object>
std::unique_ptr<Bsc::Command> adding(Prm::ParameterSet& set, Keeper& keeper, Object& object, int position) {
    if (auto* const made = dynamic_cast<Made<Prm::BasicParameter>*>(&keeper)) {
        if constexpr (std::is_base_of_v<Prm::BasicParameter, Object>) {
            if (made->object.get() == &object)
                return std::make_unique<Prm::ParameterSetAddEdit>(
                    set, boost::dynamic_pointer_cast<Object>(made->object), position);
        }
    }
    if (auto* const made = dynamic_cast<Made<Prm::ParameterSet>*>(&keeper)) {
        if constexpr (std::is_same_v<Object, Prm::ParameterSet>) {
            if (made->object.get() == &object)
                return std::make_unique<Prm::ParameterSetAddEdit>(set, made->object, position);
        }
    }
    throw py::value_error("only a parameter or group that was made by its class can be added, not one that was found "
                          "in a project or group");
}

template <class Object> bool isListed(const Prm::ParameterSet& set, const Object& object) {
    for (const auto& member : set.members())
        if (member.parameter == static_cast<const void*>(&object) || member.set == static_cast<const void*>(&object))
            return true;
    return false;
}

bool isWithin(const Prm::ParameterSet& set, Prm::ParameterSet& group) {
    bool isFound = &set == &group;
    group.forEachSubset([&](Prm::ParameterSet* each) { isFound = isFound || each == &set; }, true);
    return isFound;
}

bool isInGroup(const Prm::ParameterSet& group) {
    return group.parameterTree() || group.path() != group.scriptName();
}

void removeMember(const GroupHandle& self, const QString& name) {
    Prm::ParameterSet& set = self.owned();
    for (const auto& member : set.members()) {
        if (nameOf(member) != name)
            continue;
        std::unique_ptr<Bsc::Command> edit;
        if (auto* const compound = dynamic_cast<Prm::CompoundParameter*>(member.parameter))
            edit = std::make_unique<Prm::ParameterSetRemoveEdit>(set, *compound);
        else if (member.parameter)
            edit = std::make_unique<Prm::ParameterSetRemoveEdit>(set, *member.parameter);
        else
            edit = std::make_unique<Prm::ParameterSetRemoveEdit>(set, *member.set);
        const Deleting deleting;
        perform(homeOf(set), &set, std::move(edit));
        return;
    }
    QStringList present;
    for (const auto& member : set.members())
        present << nameOf(member);
    raiseMissing("member", name, present);
}

py::list namesOf(const GroupHandle& self) {
    py::list names;
    for (const auto& member : self.owned().members())
        names.append(nameOf(member));
    return names;
}

py::list membersOf(const GroupHandle& self) {
    py::list members;
    for (const auto& member : self.owned().members())
        members.append(wrap(self.keeper, member));
    return members;
}

py::list itemsOf(const GroupHandle& self) {
    py::list items;
    for (const auto& member : self.owned().members())
        items.append(py::make_tuple(nameOf(member), wrap(self.keeper, member)));
    return items;
}

py::list walkOf(const GroupHandle& self, bool withParts) {
    py::list found;
    const auto add = [&](Prm::ParameterWithoutType* parameter) { found.append(wrap(self.keeper, *parameter)); };
    if (withParts)
        self.owned().forEachParameterAndPart(add);
    else
        self.owned().forEachParameter(add, true);
    return found;
}

py::list groupsOf(const GroupHandle& self) {
    py::list found;
    self.owned().forEachSubset([&](Prm::ParameterSet* set) { found.append(wrap(self.keeper, *set)); }, true);
    return found;
}

void retimeGroup(const GroupHandle& self, double scale, double pivot, double shift, double start, double end) {
    Prm::ParameterSet& set = self.owned();
    const Prm::Retiming retiming = retimingOf(scale, pivot, shift, start, end);
    auto edits = std::make_unique<Bsc::CompositeCommand>();
    Prm::ParameterRetimeEdit::appendToCommand(set, retiming, *edits);
    for (const auto& edit : edits->commands()) {
        const auto& one = dynamic_cast<const Prm::ParameterRetimeEdit&>(*edit);
        if (!one.refusal().isEmpty())
            raise(PyExc_ValueError, one.summary().subjects.front().path + ": " + one.refusal());
    }
    perform(homeOf(set), &set, std::move(edits));
}

QString titleOf(const GroupHandle& self) {
    if (!self.isAlive())
        return "deleted";
    const QString path = self.set->path();
    return path.isEmpty() ? self.set->name() : path;
}

void bindMapping(py::class_<GroupHandle>& group) {
    group.def(
        "__getitem__",
        [](const GroupHandle& self, const QString& path) { return memberAt(self.keeper, self.owned(), path); },
        py::arg("path"), "The member of that name, or of a path with dots. Raises KeyError, with names that are near.");
    group.def(
        "get",
        [](const GroupHandle& self, const QString& path, const py::object& otherwise) {
            const auto member = find(self.owned(), path);
            return member ? wrap(self.keeper, *member) : otherwise;
        },
        py::arg("path"), py::arg("default") = py::none(), "The member of that path, or the default.");
    group.def(
        "__contains__",
        [](const GroupHandle& self, const py::object& path) {
            return PyUnicode_Check(path.ptr()) && find(self.owned(), textOf(path)).has_value();
        },
        py::arg("path"));
    group.def("__len__", [](const GroupHandle& self) { return self.owned().members().size(); });
    group.def("__iter__", [](const GroupHandle& self) { return py::iter(namesOf(self)); });
    group.def("__delitem__", &removeMember, py::arg("name"), "Removes a member. Raises KeyError.");
    group.def("keys", &namesOf, "The names of the members, in the order of project text.");
    group.def("values", &membersOf, "The members.");
    group.def("items", &itemsOf, "Names and members.");
}

} // namespace

void addMember(const KeeperPointer& keeper, Prm::ParameterSet& set, py::handle member, int position) {
    Home* const home = homeOf(set);
    std::unique_ptr<Bsc::Command> edit;
    bool isThere = false;
    bool isElsewhere = false;
    if (dynamic_cast<const Prm::CompoundParameter*>(&set) && !py::isinstance<Animated>(member))
        throw py::type_error("the parts of a Compound are animatable parameters");
    if (py::isinstance<GroupHandle>(member)) {
        const auto& handle = member.cast<const GroupHandle&>();
        if (isWithin(set, handle.owned()))
            throw py::value_error("a group cannot be a member of itself");
        edit = adding(set, *handle.keeper, handle.owned(), position);
        isThere = isListed(set, *handle.set);
        isElsewhere = isInGroup(*handle.set);
    } else if (py::isinstance<CompoundHandle>(member)) {
        const auto& handle = member.cast<const CompoundHandle&>();
        edit = adding(set, *handle.keeper, handle.owned(), position);
        isThere = isListed(set, static_cast<Prm::BasicParameter&>(handle.owned()));
        isElsewhere = static_cast<Prm::BasicParameter&>(handle.owned()).parentSet() != nullptr;
    } else if (py::isinstance<Handle>(member)) {
        const auto& handle = member.cast<const Handle&>();
        edit = adding(set, *handle.keeper, handle.owned(), position);
        isThere = isListed(set, handle.owned());
        isElsewhere = handle.owned().parentSet() != nullptr;
    } else {
        throw py::type_error("a parameter or a group is needed");
    }
    (void)keeper;
    if (isThere)
        throw py::value_error("it is a member already");
    if (isElsewhere)
        throw py::value_error("it is a member of another group; remove it there first");
    const Deleting deleting;
    perform(home, &set, std::move(edit));
}

py::object memberAt(const KeeperPointer& keeper, const Prm::ParameterSet& set, const QString& path) {
    if (const auto member = find(set, path))
        return wrap(keeper, *member);
    QStringList present;
    forEachBelow(set, {}, [&](const auto&, const QString& known) { present << known; });
    raiseMissing("member", path, present);
}

void bindGroups(py::module_& module) {
    py::class_<GroupHandle> group(module, "Group",
                                  "A group of parameters and groups: a mapping from names and paths to members.");
    group.def(py::init(&makeGroup), py::arg("name"), py::arg("members") = py::tuple(), "A group in no project.");
    bindMapping(group);
    group.def(
        "add",
        [](const GroupHandle& self, py::handle member, int position) {
            addMember(self.keeper, self.owned(), member, position);
        },
        py::arg("member"), py::arg("position") = -1,
        "Adds a parameter or group that Python made, at the end or before a position. A group whose name is taken gets "
        "the next free one.");
    group.def("walk", &walkOf, py::kw_only(), py::arg("parts") = false,
              "All animatable parameters of this group and those below it; with the parts of compounds.");
    group.def("groups", &groupsOf, "All groups below this one, depth first.");
    group.def("retime", &retimeGroup, py::arg("scale") = 1.0, py::arg("pivot") = 0.0, py::arg("shift") = 0.0,
              py::arg("start") = -infinity, py::arg("end") = infinity,
              "Moves the keyframes of all parameters from t to pivot + scale * (t - pivot) + shift.\n\nRaises "
              "ValueError as Parameter.retime does, before anything changes.");
    group.def_property_readonly("name", [](const GroupHandle& self) { return self.owned().scriptName(); });
    group.def_property(
        "display_name", [](const GroupHandle& self) { return self.owned().displayName(); },
        [](const GroupHandle& self, const QString& name) {
            Prm::ParameterSet& set = self.owned();
            if (set.displayName() != name)
                perform(homeOf(set), &set, std::make_unique<GroupNameEdit>(set, set.name(), name));
        },
        "The name shown to users.");
    group.def_property_readonly("path", [](const GroupHandle& self) { return self.owned().path(); });
    group.def_property_readonly("alive", [](const GroupHandle& self) { return self.isAlive(); });
    group.def("__repr__", [](const GroupHandle& self) { return py::str("<prm.Group {!r}>").format(titleOf(self)); });
    group.def(
        "__eq__", [](const GroupHandle& self, const GroupHandle& other) { return self.equals(other); },
        py::is_operator());
    group.def("__hash__", [](const GroupHandle& self) { return std::hash<const void*>()(self.set); });
}

} // namespace PrmPython
