#pragma once

#include "prm/KeyframeData.h"
#include "prm/ParameterWithoutTypeBase.h"
#include "prm/View.h"
#include "prm/detail/ReaderSlots.h"

#include <QVector>
#include <boost/ptr_container/exception.hpp>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace Prm::detail {

/// The data of one view. Read by any thread inside a `ReadBlock`, edited by the owning thread inside a
/// `LockedKeyframes`.
template <class T> class PVData : public Lockable {
public:
    using KeyframeVector = QVector<KeyframeData<T>>;

    explicit PVData(const T& value = T()) : staticValue(value) {}
    /// A block for a view, with the contents of another one.
    PVData(const PVData& other, View owner)
        : Lockable(other), view(owner), staticValue(other.staticValue), keyframes(other.keyframes) {}

    /// Whose data this is, for as long as the block lives.
    const View view = View::INVALID();
    T staticValue;
    KeyframeVector keyframes;
};

/// The exclusive access to one view's data; null locks nothing. Recursive for its thread.
template <class T> class LockedKeyframes {
public:
    using KeyframeVector = typename PVData<T>::KeyframeVector;

    explicit LockedKeyframes(PVData<T>* data) : m_data(data) {
        if (data)
            m_scope.emplace(*data);
    }

    KeyframeVector& keyframes() { return m_data->keyframes; }
    const KeyframeVector& keyframes() const { return m_data->keyframes; }

private:
    PVData<T>* m_data;
    std::optional<WriteScope> m_scope;
};

/// The per-view storage of one parameter.
///
/// Its shape (which views have data) is changed by the owning thread only. Readers reach a block without touching the
/// lists as long as every view reads the same one, and otherwise announce the lists themselves for as long as they look
/// into them.
template <class T> class FastViewMap : public ParameterWithoutTypeBase::FastViewMapBase {
public:
    using Block = PVData<T>;

    explicit FastViewMap(const T& defaultValue = T()) : FastViewMapBase(m_realViews), m_template(defaultValue) {}
    /// A deep copy, template included.
    FastViewMap(const FastViewMap& other)
        : FastViewMapBase(m_realViews), m_slots(other.m_slots), m_realViews(other.m_realViews),
          m_data(copyOf(other.m_data)), m_template(other.m_template, View::INVALID()) {
        publish();
    }
    FastViewMap& operator=(const FastViewMap& other) {
        if (this != &other) {
            assignViews(other, [&] {
                m_template.staticValue = other.m_template.staticValue;
                m_template.keyframes = other.m_template.keyframes;
            });
        }
        return *this;
    }
    ~FastViewMap() override {
        for (auto& block : m_data)
            retire(block.release());
    }

    /// Takes over the other's views, but not its template. Readers see all of the change or none of it, together with
    /// what `andAlso` changes, which must not throw; an exception changes nothing.
    template <class Function> void assignViews(const FastViewMap& other, const Function& andAlso) {
        Blocks data = copyOf(other.m_data);
        std::vector<View> views = other.m_realViews;
        replace(std::move(views), std::move(data), other.m_slots, andAlso);
    }

    /// Removes the data of every view.
    void clear() {
        replace({}, {}, 0, [] {});
    }

    /// The view's own data, or null.
    Block* findRealViewData(View view) const {
        const int position = view.isValid() && view.id() < m_slots ? positionOf(view) : -1;
        return position < 0 ? nullptr : m_data[static_cast<std::size_t>(position)].get();
    }

    /// What a write to the view changes: its own data, made when there is none. View 0 gets data before any other view
    /// does. A view whose id is no valid one stands for the source data.
    Block& operator[](View view) { return obtain(view, m_template); }
    /// The same; data that have to be made begin with these contents, so that no reader sees them empty.
    Block& obtain(View view, const Block& contents) {
        if (!view.isValid())
            return m_data.empty() ? (*this)[View(View::defaultViewId())] : *m_data.front();
        if (Block* own = findRealViewData(view))
            return *own;
        if (view != View(View::defaultViewId()) && m_slots == 0)
            (*this)[View(View::defaultViewId())];
        return insert(view, contents);
    }

    /// What a read of the view answers from: its own data, the source data, or the template. For the owning thread.
    const Block& resolve(View view) const {
        if (const Block* own = findRealViewData(view))
            return *own;
        return m_data.empty() ? m_template : *m_data.front();
    }

    /// Removes the data of one view, which must have some.
    void remove(View view) {
        const int position = positionOf(view);
        Block* const block = m_data[static_cast<std::size_t>(position)].get();
        const WriteScope scope({&m_lists, &m_template}, {block});
        static_cast<void>(m_data[static_cast<std::size_t>(position)].release());
        m_data.erase(m_data.begin() + position);
        m_realViews.erase(m_realViews.begin() + position);
        publish();
    }

    /// Gives this map as many slots for views as the other one has, over its own data. Throws `boost::bad_index` where
    /// one slot has no data to show.
    void initSourceData(const FastViewMap& other) {
        if (other.m_slots == 1 && m_data.empty())
            throw boost::bad_index("'at()' out of bounds");
        m_slots = other.m_slots;
    }

    /// For the owning thread: the first of its invariants that does not hold, or null.
    const char* brokenInvariant() const {
        if (m_data.size() != m_realViews.size())
            return "not every real view has data";
        for (std::size_t i = 0; i < m_data.size(); ++i) {
            if (!m_data[i] || m_data[i]->view != m_realViews[i] || findRealViewData(m_realViews[i]) != m_data[i].get())
                return "a real view does not find its own data";
        }
        const Block* const only = m_data.size() > 1 ? nullptr : &resolve(View::INVALID());
        return m_only.load() == only ? nullptr : "views borrow other data than those of the source view";
    }

    Block& templateData() { return m_template; }
    const Block& templateData() const { return m_template; }

    /// Announces, in the scope, the block that the view reads, and answers it once it may be read; the scope keeps it
    /// as it is. For any thread.
    const Block& pin(View view, ReadScope& scope) const {
        for (int attempt = 0;; ++attempt) {
            const Block* const only = m_only.load(std::memory_order_acquire);
            const Block* const found = only ? pinOnly(only, scope) : pinListed(view, scope);
            if (found)
                return *found;
            scope.retract();
            ReadScope::standBack(attempt);
        }
    }

    /// The same for the template.
    const Block& pinTemplate(ReadScope& scope) const {
        for (int attempt = 0;; ++attempt) {
            scope.announce(&m_template);
            if (scope.mayRead(m_template))
                return m_template;
            scope.retract();
            ReadScope::standBack(attempt);
        }
    }

    /// The same for the view that the function picks when it is shown the list of those with data. List and data are of
    /// one state, and so is what the function asks of the parameter.
    template <class Pick> const Block& pinPicked(const Pick& pick, ReadScope& scope) const {
        for (int attempt = 0;; ++attempt) {
            scope.announce(&m_lists);
            if (scope.mayRead(m_lists)) {
                const Block& block = resolve(pick(m_realViews));
                scope.announce(&block);
                if (scope.mayRead(block)) {
                    scope.withdraw(&m_lists);
                    return block;
                }
            }
            scope.retract();
            ReadScope::standBack(attempt);
        }
    }

private:
    using Blocks = std::vector<std::unique_ptr<Block>>;

    static Blocks copyOf(const Blocks& data) {
        Blocks copy;
        copy.reserve(data.size());
        for (const auto& block : data)
            copy.push_back(std::make_unique<Block>(*block, block->view));
        return copy;
    }

    /// Small ids usually are their own position; the others are searched for, so that no id costs memory.
    int positionOf(View view) const {
        if (view.id() < m_realViews.size() && m_realViews[view.id()] == view)
            return static_cast<int>(view.id());
        const auto found = std::lower_bound(m_realViews.begin(), m_realViews.end(), view);
        return found != m_realViews.end() && *found == view ? static_cast<int>(found - m_realViews.begin()) : -1;
    }

    Block& insert(View view, const Block& contents) {
        auto made = std::make_unique<Block>(contents, view);
        Block& block = *made;
        const auto place = std::lower_bound(m_realViews.begin(), m_realViews.end(), view) - m_realViews.begin();
        const WriteScope scope(m_lists);
        makeRoom(m_realViews);
        makeRoom(m_data);
        m_data.insert(m_data.begin() + place, std::move(made));
        m_realViews.insert(m_realViews.begin() + place, view);
        m_slots = std::max(m_slots, view.id() + 1);
        publish();
        return block;
    }

    /// So that adding one element cannot fail.
    template <class Vector> static void makeRoom(Vector& vector) {
        if (vector.size() == vector.capacity())
            vector.reserve(std::max<std::size_t>(1, 2 * vector.size()));
    }

    template <class Function>
    void replace(std::vector<View> views, Blocks data, quint32 slotCount, const Function& andAlso) {
        std::vector<Lockable*> former;
        former.reserve(m_data.size());
        for (const auto& block : m_data)
            former.push_back(block.get());
        const WriteScope scope({&m_lists, &m_template}, std::move(former));
        for (auto& block : m_data)
            static_cast<void>(block.release());
        m_data = std::move(data);
        m_realViews.swap(views);
        m_slots = slotCount;
        andAlso();
        publish();
    }

    void publish() {
        const Block* only = nullptr;
        if (m_data.empty())
            only = &m_template;
        else if (m_data.size() == 1)
            only = m_data.front().get();
        m_only.store(only);
    }

    const Block* pinOnly(const Block* only, ReadScope& scope) const {
        scope.announce(only);
        return m_only.load() == only && scope.mayRead(*only) ? only : nullptr;
    }

    const Block* pinListed(View view, ReadScope& scope) const {
        scope.announce(&m_lists);
        if (!scope.mayRead(m_lists) || m_only.load())
            return nullptr;
        const int position = view.isValid() ? positionOf(view) : -1;
        const Block* const block = m_data[static_cast<std::size_t>(std::max(position, 0))].get();
        scope.announce(block);
        scope.withdraw(&m_lists);
        return scope.mayRead(*block) ? block : nullptr;
    }

    /// The block that every view reads; null when several views have data, and the lists must be asked.
    std::atomic<const Block*> m_only{&m_template};
    mutable Lockable m_lists;
    /// How many ids, from 0 on, are told apart; all others read the source data.
    quint32 m_slots = 0;
    std::vector<View> m_realViews;
    Blocks m_data;
    Block m_template;
};

/// The access of any thread to the data that a view reads.
template <class T> class ReadBlock {
public:
    ReadBlock(const FastViewMap<T>& map, View view) : m_block(map.pin(view, m_scope)) {}
    /// Where views are not told apart, all of them read what an unknown one does, the source data.
    template <class AreToldApart>
    ReadBlock(const FastViewMap<T>& map, View view, const AreToldApart& areToldApart)
        : m_block(pinShown(map, view, areToldApart, m_scope)) {}
    /// The data of the view that the function picks; see `pinPicked`.
    template <class Pick>
    ReadBlock(const FastViewMap<T>& map, const Pick& pick) : m_block(map.pinPicked(pick, m_scope)) {}

    const PVData<T>* operator->() const { return &m_block; }
    const typename PVData<T>::KeyframeVector& keyframes() const { return m_block.keyframes; }
    /// Whether the data are the view's own.
    bool belongsTo(View view) const { return view.isValid() && m_block.view == view; }

private:
    template <class AreToldApart>
    static const PVData<T>& pinShown(const FastViewMap<T>& map, View view, const AreToldApart& areToldApart,
                                     ReadScope& scope) {
        for (;;) {
            const bool apart = areToldApart();
            const PVData<T>& block = map.pin(apart ? view : View::INVALID(), scope);
            // Once the block is held, an assignment can change neither.
            if (areToldApart() == apart)
                return block;
            scope.retract();
        }
    }

    ReadScope m_scope;
    const PVData<T>& m_block;
};

} // namespace Prm::detail
