#include "python/src/Bindings.h"
#include "python/src/Extents.h"
#include "python/src/History.h"

#include <QMetaObject>

#include <utility>

namespace PrmPython {

namespace {

/// What a callback is given.
struct Change {
    QString kind;
    py::object parameter;
    unsigned int index = 0;
    std::vector<unsigned int> indices;
    Prm::Context context;
    KeeperPointer keeper;
    /// Null after the call.
    std::shared_ptr<const Prm::ParameterChange*> record;
};

/// The callback, which the subscription and the connection share. Guarded by the interpreter's lock.
struct Listener {
    PyObject* callback = nullptr;
};

Change changeFor(const KeeperPointer& keeper, const Prm::ParameterChange& record) {
    Change change;
    change.kind = record.typeToString();
    change.parameter = wrap(keeper, *record.parameter);
    change.index = record.affectedIndex;
    if (record.affectedIndices)
        change.indices.assign(record.affectedIndices->begin(), record.affectedIndices->end());
    change.context = record.context;
    change.keeper = keeper;
    change.record = std::make_shared<const Prm::ParameterChange*>(&record);
    return change;
}

/// Ends the validity of a record.
struct RecordScope {
    explicit RecordScope(const Change& change) : record(change.record) {}
    ~RecordScope() { *record = nullptr; }
    RecordScope(const RecordScope&) = delete;
    RecordScope& operator=(const RecordScope&) = delete;
    std::shared_ptr<const Prm::ParameterChange*> record;
};

void callBack(const Listener& listener, const std::weak_ptr<Keeper>& keeper, const Prm::ParameterChange& record) {
    if (!Py_IsInitialized())
        return;
    const py::gil_scoped_acquire acquired;
    const KeeperPointer kept = keeper.lock();
    const bool isDeleted = record.type == Prm::ParameterChange::PARAMETER_DELETED;
    if (!listener.callback || (!kept && !isDeleted))
        return;
    const auto callback = py::reinterpret_borrow<py::object>(listener.callback);
    try {
        const Change change = changeFor(kept, record);
        const RecordScope scope(change);
        callback(change);
    } catch (py::error_already_set& error) {
        if (!isDeleted && !History::isPuttingBack())
            throw;
        error.discard_as_unraisable(callback);
    }
}

/// Ends when it dies.
class Subscription {
public:
    explicit Subscription(const py::object& callback) {
        if (!PyCallable_Check(callback.ptr()))
            throw py::type_error("a callback is called with one argument, the change");
        m_listener->callback = callback.inc_ref().ptr();
    }
    Subscription(Subscription&& other) noexcept
        : m_listener(std::exchange(other.m_listener, std::make_shared<Listener>())),
          m_connections(std::exchange(other.m_connections, {})) {}
    ~Subscription() { close(); }

    void connect(const KeeperPointer& keeper, Prm::ParameterWithoutType& parameter) {
        const std::weak_ptr<Keeper> by = keeper;
        m_connections.push_back(QObject::connect(
            &parameter, &Prm::ParameterWithoutType::changed,
            [listener = m_listener, by](Prm::ParameterChange& record) { callBack(*listener, by, record); }));
    }
    void close() {
        for (const QMetaObject::Connection& connection : m_connections)
            QObject::disconnect(connection);
        m_connections.clear();
        Py_CLEAR(m_listener->callback);
    }
    bool isActive() const { return m_listener->callback != nullptr; }
    PyObject* callback() const { return m_listener->callback; }

private:
    std::shared_ptr<Listener> m_listener = std::make_shared<Listener>();
    std::vector<QMetaObject::Connection> m_connections;
};

Subscription subscribe(const Animated& self, const py::object& callback) {
    Subscription subscription(callback);
    subscription.connect(self.keeper, self.owned());
    return subscription;
}

Subscription subscribeGroup(const GroupHandle& self, const py::object& callback) {
    Subscription subscription(callback);
    self.owned().forEachParameterAndPart(
        [&](Prm::ParameterWithoutType* parameter) { subscription.connect(self.keeper, *parameter); });
    return subscription;
}

Extent extentOfChange(const Change& self) {
    if (!*self.record)
        throw NotNow("the extent of a change is known during the callback only");
    return extentOf(self.keeper, **self.record);
}

// A callback may refer to its own subscription; so the garbage collector visits it.
void setCollected(PyHeapTypeObject* heapType) {
    PyTypeObject* const type = &heapType->ht_type;
    type->tp_flags |= Py_TPFLAGS_HAVE_GC;
    type->tp_traverse = [](PyObject* self, visitproc visit, void* arg) {
        Py_VISIT(Py_TYPE(self));
        Py_VISIT(py::cast<Subscription&>(py::handle(self)).callback());
        return 0;
    };
    type->tp_clear = [](PyObject* self) {
        py::cast<Subscription&>(py::handle(self)).close();
        return 0;
    };
}

} // namespace

void bindChanges(py::module_& module, py::class_<Animated, Handle>& animated) {
    py::class_<Change>(module, "Change", "One change of a parameter, as a callback receives it.")
        .def_readonly("kind", &Change::kind, "For example \"KEYFRAME_ADDED\".")
        .def_readonly("parameter", &Change::parameter)
        .def_readonly("index", &Change::index, "The place of the keyframe in its view.")
        .def_readonly("indices", &Change::indices, "Those that have moved.")
        .def_property_readonly("view", [](const Change& self) { return self.context.view.id(); })
        .def_property_readonly(
            "time", [](const Change& self) { return self.context.time.toDouble(); },
            "That of the keyframe; 0 for changes without one.")
        .def_property_readonly("extent", &extentOfChange,
                               "Where values may differ. During the callback only: RuntimeError after it.")
        .def("__repr__",
             [](const Change& self) { return py::str("<prm.Change {} of {!r}>").format(self.kind, self.parameter); });
    py::class_<Subscription>(module, "Subscription",
                             "A callback that is called for each change, as long as this lives.",
                             py::custom_type_setup(&setCollected))
        .def("close", &Subscription::close, "Ends it.")
        .def_property_readonly("active", &Subscription::isActive)
        .def("__enter__", [](const py::object& self) { return self; })
        .def("__exit__", [](Subscription& self, py::handle, py::handle, py::handle) { self.close(); });
    animated.def("on_change", &subscribe, py::arg("callback"), py::keep_alive<0, 1>(),
                 "Calls the function with each Change, before the edit that makes it returns. What it raises comes out "
                 "of that edit, which is then not done. Keep what is returned: when it dies, calls end.");
    auto group = py::reinterpret_borrow<py::class_<GroupHandle>>(module.attr("Group"));
    group.def("on_change", &subscribeGroup, py::arg("callback"), py::keep_alive<0, 1>(),
              "The same for all parameters that are below the group now, and the parts of compounds.");
}

} // namespace PrmPython
