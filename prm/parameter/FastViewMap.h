#pragma once

#include "prm/KeyframeData.h"
#include "prm/ParameterWithoutTypeBase.h"
#include "prm/View.h"
#include "prm/parameter/BlockList.h"
#include "prm/thread/ReaderSlots.h"

#include <QVector>
#include <boost/ptr_container/exception.hpp>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace Prm::detail {

/// The data of one view. Read by any thread inside a `ReadBlock`, edited by the owning thread inside a
/// `LockedKeyframes`. There is one for every parameter that was ever written: no byte more than for its contents.
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
/// lists as long as every view reads the same one, and otherwise announce the template, whose mark guards the lists,
/// for as long as they look into them.
template <class T> class FastViewMap : public ParameterWithoutTypeBase::FastViewMapBase {
public:
    using Block = PVData<T>;

    explicit FastViewMap(const T& defaultValue = T()) : m_template(defaultValue) {}
    /// A deep copy, template included.
    FastViewMap(const FastViewMap& other)
        : FastViewMapBase(other.viewList()), m_slots(other.m_slots), m_template(other.m_template, View::INVALID()) {
        publish(copyOf(other));
    }
    /// A copy of the views, over a template of its own.
    FastViewMap(const FastViewMap& other, const T& defaultValue)
        : FastViewMapBase(other.viewList()), m_slots(other.m_slots), m_template(defaultValue) {
        publish(copyOf(other));
    }
    /// A copy of the template, too. Where copying a value throws, the views are as they were.
    FastViewMap& operator=(const FastViewMap& other) {
        if (this == &other)
            return *this;
        Blocks blocks = copyOf(other);
        std::vector<View> views = other.viewList();
        {
            const WriteScope scope(m_template);
            m_template.staticValue = other.m_template.staticValue;
            m_template.keyframes = other.m_template.keyframes;
        }
        replace(std::move(views), std::move(blocks), other.m_slots, [] {});
        return *this;
    }
    ~FastViewMap() override {
        forEach([](Block& block) { retire(&block); });
        letGo(takeAll());
    }

    /// Takes over the other's views, but not its template. Readers see all of the change or none of it, together with
    /// what `andAlso` changes, which must not throw; an exception changes nothing.
    template <class Function> void assignViews(const FastViewMap& other, const Function& andAlso) {
        Blocks blocks = copyOf(other);
        std::vector<View> views = other.viewList();
        replace(std::move(views), std::move(blocks), other.m_slots, andAlso);
    }

    /// Removes the data of every view.
    void clear() {
        replace({}, {}, 0, [] {});
    }

    /// How many views have data.
    std::size_t count() const {
        if (m_several)
            return m_several->size();
        return m_only.load(std::memory_order_relaxed) == &m_template ? 0 : 1;
    }

    /// The view's own data, or null.
    Block* findRealViewData(View view) const {
        return view.isValid() && view.id() < m_slots ? ownBlock(view) : nullptr;
    }

    /// The same, null also where several views have data.
    PRM_ALWAYS_INLINE Block* findSingleViewData(View view) const {
        Block* const only = m_only.load(std::memory_order_relaxed);
        return only && only->view == view && view.isValid() ? only : nullptr;
    }

    /// What a write to the view changes: its own data, made when there is none. View 0 gets data before any other view
    /// does. A view whose id is no valid one stands for the source data.
    Block& operator[](View view) { return obtain(view, m_template); }
    /// The same; data that have to be made begin with these contents, so that no reader sees them empty.
    Block& obtain(View view, const Block& contents) {
        if (!view.isValid())
            return count() == 0 ? (*this)[View(View::defaultViewId())] : *sourceBlock();
        if (Block* own = findRealViewData(view))
            return *own;
        if (view != View(View::defaultViewId()) && m_slots == 0)
            (*this)[View(View::defaultViewId())];
        return insert(view, contents);
    }

    /// The data that the view reads: its own data, the source data, or the template. For the owning thread.
    const Block& resolve(View view) const {
        if (const Block* own = findRealViewData(view))
            return *own;
        return *sourceBlock();
    }

    /// Removes the data of one view, which must have some.
    void remove(View view) {
        const WriteScope scope({&m_template}, {ownBlock(view)});
        Blocks blocks = takeAll();
        if (blocks.several) {
            static_cast<void>(blocks.several->take(view).release());
            if (blocks.several->size() == 1)
                blocks = Blocks{blocks.several->take(blocks.several->first()->view), nullptr};
        } else {
            static_cast<void>(blocks.one.release());
        }
        const auto place = placeInList(view);
        if (place)
            m_realViews.erase(*place);
        publish(std::move(blocks));
    }

    /// Gives this map as many slots for views as the other one has, over its own data. Throws `boost::bad_index` where
    /// one slot has no data to show.
    void initSourceData(const FastViewMap& other) {
        if (other.m_slots == 1 && count() == 0)
            throw boost::bad_index("'at()' out of bounds");
        m_slots = other.m_slots;
    }

    /// For the owning thread: the first of its invariants that does not hold, or null.
    const char* brokenInvariant() const {
        if (m_several && m_several->size() < 2)
            return "a list of views is too short";
        std::vector<View> found;
        bool own = true;
        forEach([&](const Block& block) {
            found.push_back(block.view);
            own = own && findRealViewData(block.view) == &block;
        });
        if (!own)
            return "a real view does not find its own data";
        if (found != viewList() || found.size() != count() || !std::is_sorted(found.begin(), found.end()))
            return "the list of views is not that of the views with data";
        const Block* const only = m_several ? nullptr : &resolve(View::INVALID());
        return m_only.load() == only ? nullptr : "views borrow other data than those of the source view";
    }

    Block& templateData() { return m_template; }
    const Block& templateData() const { return m_template; }

    /// Announces, in the scope, the block that the view reads, and answers it once it may be read; the scope keeps it
    /// as it is. For any thread.
    PRM_ALWAYS_INLINE const Block& pin(View view, ReadScope& scope) const {
        const Block* const shared = pinShared(scope);
        return shared ? *shared : pinOrWait(view, scope);
    }

    /// The same at once, or null; only while all views read one block.
    PRM_ALWAYS_INLINE const Block* pinShared(ReadScope& scope) const {
        const Block* const only = m_only.load(std::memory_order_acquire);
        if (!only)
            return nullptr;
        if (const Block* const pinned = pinOnly(only, scope))
            return pinned;
        scope.retract();
        return nullptr;
    }

    /// The same, or null where it takes more than a brief look.
    PRM_ALWAYS_INLINE const Block* pinShared(BriefReadScope& scope) const {
        const Block* const only = m_only.load(std::memory_order_acquire);
        return only && scope.announce(only) && m_only.load() == only && scope.mayRead(*only) ? only : nullptr;
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

    /// The same for the view that the function picks when it is shown those with data around a view. They and the data
    /// are of one state, and so is what the function asks of the parameter.
    template <class Pick> const Block& pinPicked(View view, const Pick& pick, ReadScope& scope) const {
        for (int attempt = 0;; ++attempt) {
            scope.announce(&m_template);
            if (scope.mayRead(m_template)) {
                const Block& block = resolve(pick(viewsAround(view)));
                scope.announce(&block);
                if (scope.mayRead(block)) {
                    if (&block != &m_template)
                        scope.withdraw(&m_template);
                    return block;
                }
            }
            scope.retract();
            ReadScope::standBack(attempt);
        }
    }

private:
    using List = BlockList<Block>;
    /// The blocks of all views: that of one alone without a list, for few parameters ever have more.
    struct Blocks {
        std::unique_ptr<Block> one;
        std::unique_ptr<List> several;
    };

    static Blocks copyOf(const FastViewMap& other) {
        Blocks copy;
        if (other.m_several)
            copy.several = std::make_unique<List>();
        other.forEach([&](const Block& block) {
            auto made = std::make_unique<Block>(block, block.view);
            if (copy.several) {
                copy.several->makeRoom(block.view);
                copy.several->add(std::move(made));
            } else {
                copy.one = std::move(made);
            }
        });
        return copy;
    }

    template <class Function> void forEach(const Function& function) const {
        if (m_several)
            m_several->forEach(function);
        else if (Block* const only = m_only.load(std::memory_order_relaxed); only != &m_template)
            function(*only);
    }

    /// The data of the first view that has some, or the template.
    Block* sourceBlock() const { return m_several ? m_several->first() : m_only.load(std::memory_order_relaxed); }

    Block* ownBlock(View view) const {
        if (m_several)
            return m_several->find(view);
        Block* const only = m_only.load(std::memory_order_relaxed);
        return only->view == view ? only : nullptr;
    }

    ViewsAround viewsAround(View view) const {
        if (m_several)
            return m_several->around(view);
        return count() == 0 ? ViewsAround() : ViewsAround(sourceBlock()->view);
    }

    void listViews() const override {
        m_realViews.clear();
        forEach([this](const Block& block) { m_realViews.push_back(block.view); });
        m_isOutdated = false;
    }

    /// Where the view is or belongs in the list; none where so many others would have to be moved that the list is made
    /// anew when it is asked.
    std::optional<std::vector<View>::iterator> placeInList(View view) const {
        constexpr std::ptrdiff_t few = 4096;
        if (m_isOutdated)
            return {};
        const auto place = std::lower_bound(m_realViews.begin(), m_realViews.end(), view);
        m_isOutdated = m_realViews.end() - place > few;
        return m_isOutdated ? std::nullopt : std::optional(place);
    }

    /// Takes the blocks out, which leaves the map without any until others are published.
    Blocks takeAll() {
        Blocks taken;
        if (count() == 1)
            taken.one.reset(m_only.load());
        taken.several = std::move(m_several);
        return taken;
    }

    /// Gives up ownership of the blocks; the caller retires them.
    static void letGo(Blocks blocks) {
        static_cast<void>(blocks.one.release());
        if (blocks.several)
            blocks.several->release();
    }

    void publish(Blocks blocks) {
        m_several = std::move(blocks.several);
        if (m_several)
            m_only.store(nullptr);
        else
            m_only.store(blocks.one ? blocks.one.release() : &m_template);
    }

    Block& insert(View view, const Block& contents) {
        auto made = std::make_unique<Block>(contents, view);
        Block& block = *made;
        std::unique_ptr<List> list;
        if (count() == 1) {
            list = std::make_unique<List>();
            list->makeRoom(view);
        }
        const WriteScope scope(m_template);
        if (m_several)
            m_several->makeRoom(view);
        if (m_realViews.size() == m_realViews.capacity())
            m_realViews.reserve(std::max<std::size_t>(1, 2 * m_realViews.size()));
        Blocks blocks = takeAll();
        if (blocks.one) {
            blocks.several = std::move(list);
            blocks.several->add(std::move(blocks.one));
        }
        if (blocks.several)
            blocks.several->add(std::move(made));
        else
            blocks.one = std::move(made);
        if (const auto place = placeInList(view))
            m_realViews.insert(*place, view);
        m_slots = std::max(m_slots, view.id() + 1);
        publish(std::move(blocks));
        return block;
    }

    template <class Function>
    void replace(std::vector<View> views, Blocks blocks, quint32 slotCount, const Function& andAlso) {
        std::vector<Lockable*> former;
        former.reserve(count());
        forEach([&](Block& block) { former.push_back(&block); });
        const WriteScope scope({&m_template}, std::move(former));
        letGo(takeAll());
        m_realViews.swap(views);
        m_isOutdated = false;
        m_slots = slotCount;
        andAlso();
        publish(std::move(blocks));
    }

    PRM_NEVER_INLINE const Block& pinOrWait(View view, ReadScope& scope) const {
        for (int attempt = 0;; ++attempt) {
            const Block* const only = m_only.load(std::memory_order_acquire);
            const Block* const found = only ? pinOnly(only, scope) : pinListed(view, scope);
            if (found)
                return *found;
            scope.retract();
            ReadScope::standBack(attempt);
        }
    }

    PRM_ALWAYS_INLINE const Block* pinOnly(const Block* only, ReadScope& scope) const {
        scope.announce(only);
        return m_only.load() == only && scope.mayRead(*only) ? only : nullptr;
    }

    const Block* pinListed(View view, ReadScope& scope) const {
        scope.announce(&m_template);
        if (!scope.mayRead(m_template) || m_only.load())
            return nullptr;
        const Block* const own = view.isValid() ? m_several->find(view) : nullptr;
        const Block* const block = own ? own : m_several->first();
        scope.announce(block);
        scope.withdraw(&m_template);
        return scope.mayRead(*block) ? block : nullptr;
    }

    /// How many ids, from 0 on, are told apart; all others read the source data. First, in the room that the base
    /// leaves.
    quint32 m_slots = 0;
    /// The block that every view reads; null when several views have data, and the lists must be asked.
    std::atomic<Block*> m_only{&m_template};
    /// All of them where several views have data.
    std::unique_ptr<List> m_several;
    /// What new views and reads without data begin with. Its mark also keeps readers out of the lists.
    Block m_template;
};

/// The access of any thread to the data that a view reads.
template <class T> class ReadBlock {
public:
    PRM_ALWAYS_INLINE ReadBlock(const FastViewMap<T>& map, View view) : m_block(map.pin(view, m_scope)) {}
    /// Where views are not told apart, all of them read what an unknown one does, the source data.
    template <class AreToldApart>
    PRM_ALWAYS_INLINE ReadBlock(const FastViewMap<T>& map, View view, const AreToldApart& areToldApart)
        : m_block(pinShown(map, view, areToldApart, m_scope)) {}
    /// The data of the view that the function picks among those around a view; see `pinPicked`.
    template <class Pick>
    ReadBlock(const FastViewMap<T>& map, const Pick& pick, View view) : m_block(map.pinPicked(view, pick, m_scope)) {}

    const PVData<T>* operator->() const { return &m_block; }
    const typename PVData<T>::KeyframeVector& keyframes() const { return m_block.keyframes; }
    /// Where this thread last found a time, in whatever block.
    int& lastPosition() const { return m_scope.lastPosition(); }
    /// Whether the data are the view's own.
    bool belongsTo(View view) const { return view.isValid() && m_block.view == view; }

private:
    template <class AreToldApart>
    PRM_ALWAYS_INLINE static const PVData<T>& pinShown(const FastViewMap<T>& map, View view,
                                                       const AreToldApart& areToldApart, ReadScope& scope) {
        if (const PVData<T>* const shared = map.pinShared(scope))
            return *shared;
        return pinApart(map, view, areToldApart, scope);
    }
    template <class AreToldApart>
    PRM_NEVER_INLINE static const PVData<T>& pinApart(const FastViewMap<T>& map, View view,
                                                      const AreToldApart& areToldApart, ReadScope& scope) {
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
