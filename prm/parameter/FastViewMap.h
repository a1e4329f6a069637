#pragma once

#include "prm/KeyframeData.h"
#include "prm/ParameterWithoutTypeBase.h"
#include "prm/ValueType.h"
#include "prm/View.h"
#include "prm/parameter/BlockList.h"
#include "prm/thread/HazardPointers.h"
#include "prm/track/Track.h"

#include <QVector>
#include <boost/ptr_container/exception.hpp>

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <vector>

#if defined(__has_feature)
#define PRM_HAS_THREAD_SANITIZER __has_feature(thread_sanitizer)
#else
#define PRM_HAS_THREAD_SANITIZER 0
#endif

namespace Prm::detail {

/// A block that belongs to a view for as long as it lives.
class ViewBlock : public Protected {
public:
    explicit ViewBlock(View owner) : view(owner) {}

    const View view;
};

/// The data of one view. Read by any thread while it is protected, edited by the owning thread inside a
/// `LockedKeyframes`. There is one for every parameter that was ever written: no byte more than for its contents.
template <class T> class PVData : public ViewBlock, public Track<T> {
public:
    using KeyframeVector = QVector<KeyframeData<T>>;

    explicit PVData(const T& value = T()) : PVData(Track<T>{value, {}}, View::INVALID()) {}
    PVData(const Track<T>& contents, View owner) : ViewBlock(owner), Track<T>(contents) {}
};

/// Orders edits of a list that is no longer shared after the reads of evaluations, on other threads, that shared it. Qt
/// loads the number of owners without acquire order.
template <class Keyframes> void followReads(const Keyframes& list) {
#if defined(__SANITIZE_THREAD__) || PRM_HAS_THREAD_SANITIZER
    // The thread sanitizer does not know fences, but it knows a further owner.
    const Keyframes owner(list); // NOLINT(performance-unnecessary-copy-initialization)
#else
    static_cast<void>(list);
    std::atomic_thread_fence(std::memory_order_acquire);
#endif
}

/// The exclusive access to one view's data; null locks nothing. Recursive for its thread.
template <class T> class LockedKeyframes {
public:
    using KeyframeVector = typename PVData<T>::KeyframeVector;

    explicit LockedKeyframes(PVData<T>* data) : m_data(data), m_scope(data) {}

    /// For editing in place: the list is no longer shared.
    KeyframeVector& keyframes() {
        if (m_data->keyframes.capacity() > 0) {
            m_data->keyframes.detach();
            followReads(m_data->keyframes);
        }
        return m_data->keyframes;
    }
    const KeyframeVector& keyframes() const { return m_data->keyframes; }
    /// Needs no memory.
    void setKeyframes(const KeyframeVector& other) { m_data->keyframes = other; }
    void swapKeyframes(KeyframeVector& other) { m_data->keyframes.swap(other); }

private:
    PVData<T>* m_data;
    const Exclusive m_scope;
};

/// Whether the value was new.
template <class T> bool storeStaticValue(PVData<T>& data, const T& value) {
    if (ValueType<T>::equal(data.staticValue, value))
        return false;
    const LockedKeyframes<T> lock(&data);
    data.staticValue = value;
    return true;
}

/// The same of a keyframe, if there is one at the position.
template <class T> bool storeKeyframeValue(PVData<T>& data, int position, const T& value) {
    if (position < 0 || ValueType<T>::equal(data.keyframes.at(position).value, value))
        return false;
    LockedKeyframes<T> lock(&data);
    lock.keyframes()[position].value = value;
    return true;
}

/// The per-view storage of one parameter.
///
/// Its shape (which views have data) is changed by the owning thread only. Readers reach a block without touching the
/// lists as long as every view reads the same one, and the own data of a view with a small id. Otherwise they protect
/// the template while they look into the lists: the owning thread has the template exclusively while it changes them,
/// and the parameter's settings with them.
template <class T> class FastViewMap : public ParameterWithoutTypeBase::FastViewMapBase {
public:
    using Block = PVData<T>;

    explicit FastViewMap(const T& defaultValue = T()) : m_template(defaultValue) {}
    /// A deep copy, template included.
    FastViewMap(const FastViewMap& other)
        : FastViewMapBase(other.viewList()), m_slots(other.m_slots), m_template(other.m_template, View::INVALID()) {
        publish(copyForReplacing(other));
    }
    /// A copy of the views, over a template of its own.
    FastViewMap(const FastViewMap& other, const T& defaultValue)
        : FastViewMapBase(other.viewList()), m_slots(other.m_slots), m_template(defaultValue) {
        publish(copyForReplacing(other));
    }
    /// A copy of the template, too. Where copying a value throws, the views are as they were.
    FastViewMap& operator=(const FastViewMap& other) {
        if (this == &other)
            return *this;
        Blocks blocks = copyForReplacing(other);
        std::vector<View> views = other.viewList();
        {
            const Exclusive scope(m_template);
            static_cast<Track<T>&>(m_template) = other.m_template;
        }
        replace(std::move(views), std::move(blocks), other.m_slots, [] {});
        return *this;
    }
    ~FastViewMap() override {
        forEach([](Block& block) { retire(&block); });
        release(takeAll());
    }

    /// Takes over the other's views, but not its template. Readers see all of the change or none of it, together with
    /// what `andAlso` changes, which must not throw; an exception changes nothing.
    template <class Function> void assignViews(const FastViewMap& other, const Function& andAlso) {
        Blocks blocks = copyForReplacing(other);
        std::vector<View> views = other.viewList();
        replace(std::move(views), std::move(blocks), other.m_slots, andAlso);
    }

    /// Removes the data of every view.
    void clear() {
        replace({}, {}, 0, [] {});
    }

    /// How many views have data.
    std::size_t count() const {
        if (hasSeveral())
            return m_several->list.size();
        return m_only.load(std::memory_order_relaxed) == &m_template ? 0 : 1;
    }

    /// The view's own data, or null.
    Block* findRealViewData(View view) const {
        return view.isValid() && view.id() < m_slots ? ownBlock(view) : nullptr;
    }

    /// What a write to the view changes: its own data, created if there are none. View 0 gets data before any other
    /// view. An invalid view means the source data.
    Block& operator[](View view) { return obtain(view, m_template); }
    /// The same; data that are created have these contents from the start, so that no reader sees them empty.
    Block& obtain(View view, const Track<T>& contents) {
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
        const Replacement scope(m_template, {ownBlock(view)});
        Blocks blocks = takeAll();
        static_cast<void>((blocks.one ? std::move(blocks.one) : blocks.several.take(view)).release());
        if (blocks.several.size() == 1)
            blocks.one = blocks.several.take(blocks.several.first()->view);
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
        if (hasSeveral() && count() < 2)
            return "a list of views is too short";
        std::vector<View> found;
        bool own = true;
        forEach([&](const Block& block) {
            found.push_back(block.view);
            own = own && findRealViewData(block.view) == &block;
        });
        for (quint32 id = 0; m_several && id < Several::reachable; ++id)
            own = own && m_several->own[id].load() == (hasSeveral() ? ownBlock(View(id)) : nullptr);
        if (!own)
            return "a real view does not find its own data";
        if (found != viewList() || found.size() != count() || !std::is_sorted(found.begin(), found.end()))
            return "the list of views is not that of the views with data";
        const Block* const only = hasSeveral() ? nullptr : &resolve(View::INVALID());
        return m_only.load() == only ? nullptr : "views borrow other data than those of the source view";
    }

    Block& templateData() { return m_template; }
    const Block& templateData() const { return m_template; }

    /// Protects the block that a view reads, and returns it. Safe on any thread. `choose` is called with the map and
    /// returns the view; block, map and the parameter's settings are then of one state. It is not called while all
    /// views read one block.
    template <class Choose> PRM_ALWAYS_INLINE const Block& protect(Protection& protection, const Choose& choose) const {
        const Block* const shared = protectShared(protection);
        return shared ? *shared : protectListed(protection, choose);
    }
    /// The same while all views read one block and no thread edits it; otherwise null.
    PRM_ALWAYS_INLINE const Block* protectShared(Protection& protection) const {
        const Block* const only = m_only.load(std::memory_order_acquire);
        return only && protection.protect(only, m_only) ? only : nullptr;
    }
    /// The same for one of several views, if it has data of its own and a small id.
    PRM_ALWAYS_INLINE const Block* protectOwn(Protection& protection, View view) const {
        if (m_only.load(std::memory_order_acquire) || view.id() >= Several::reachable)
            return nullptr;
        const std::atomic<Block*>& own = m_several->own[view.id()];
        const Block* const block = own.load(std::memory_order_acquire);
        return block && protection.protect(block, own) ? block : nullptr;
    }

    /// The same for the template.
    const Block& protectTemplate(Protection& protection) const {
        for (int attempt = 0; !protection.protect(m_template); ++attempt)
            waitALittle(attempt);
        return m_template;
    }

    /// The views with data around one. For the owning thread, and for `choose`.
    ViewsAround viewsAround(View view) const {
        if (hasSeveral())
            return m_several->list.around(view);
        return count() == 0 ? ViewsAround() : ViewsAround(sourceBlock()->view);
    }

private:
    using List = BlockList<Block>;
    /// The blocks of all views: that of one alone without a list, for few parameters ever have more.
    struct Blocks {
        std::unique_ptr<Block> one;
        List several;
    };
    /// Where several views have data: those of all views, and again those of the first views, for readers.
    struct Several {
        static constexpr quint32 reachable = 4;

        List list;
        std::array<std::atomic<Block*>, reachable> own{};
    };

    /// A copy of the other's blocks, and what is needed to publish it.
    Blocks copyForReplacing(const FastViewMap& other) {
        Blocks copy;
        other.forEach([&](const Block& block) {
            auto made = std::make_unique<Block>(block, block.view);
            if (other.hasSeveral()) {
                copy.several.makeRoom(block.view);
                copy.several.add(std::move(made));
            } else {
                copy.one = std::move(made);
            }
        });
        if (other.hasSeveral())
            prepareSeveral();
        return copy;
    }
    void prepareSeveral() {
        if (!m_several)
            m_several = std::make_unique<Several>();
    }
    bool hasSeveral() const { return !m_only.load(std::memory_order_relaxed); }

    template <class Function> void forEach(const Function& function) const {
        if (hasSeveral())
            m_several->list.forEach(function);
        else if (Block* const only = m_only.load(std::memory_order_relaxed); only != &m_template)
            function(*only);
    }

    /// The data of the first view that has some, or the template.
    Block* sourceBlock() const {
        return hasSeveral() ? m_several->list.first() : m_only.load(std::memory_order_relaxed);
    }

    Block* ownBlock(View view) const {
        if (hasSeveral())
            return m_several->list.find(view);
        Block* const only = m_only.load(std::memory_order_relaxed);
        return only->view == view ? only : nullptr;
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
        if (m_several)
            taken.several = std::move(m_several->list);
        return taken;
    }

    /// Gives up ownership of the blocks; the caller retires them.
    static void release(Blocks blocks) {
        static_cast<void>(blocks.one.release());
        blocks.several.release();
    }

    void publish(Blocks blocks) {
        if (m_several) {
            m_several->list = std::move(blocks.several);
            for (quint32 id = 0; id < Several::reachable; ++id)
                m_several->own[id].store(m_several->list.empty() ? nullptr : m_several->list.find(View(id)));
        }
        const bool isOne = !m_several || m_several->list.empty();
        m_only.store(!isOne ? nullptr : blocks.one ? blocks.one.release() : &m_template);
    }

    Block& insert(View view, const Track<T>& contents) {
        auto made = std::make_unique<Block>(contents, view);
        Block& block = *made;
        List list;
        if (count() == 1) {
            list.makeRoom(view);
            prepareSeveral();
        }
        const Exclusive scope(m_template);
        if (hasSeveral())
            m_several->list.makeRoom(view);
        if (m_realViews.size() == m_realViews.capacity())
            m_realViews.reserve(std::max<std::size_t>(1, 2 * m_realViews.size()));
        Blocks blocks = takeAll();
        if (blocks.one) {
            blocks.several = std::move(list);
            blocks.several.add(std::move(blocks.one));
        }
        if (blocks.several.empty())
            blocks.one = std::move(made);
        else
            blocks.several.add(std::move(made));
        if (const auto place = placeInList(view))
            m_realViews.insert(*place, view);
        m_slots = std::max(m_slots, view.id() + 1);
        publish(std::move(blocks));
        return block;
    }

    template <class Function>
    void replace(std::vector<View> views, Blocks blocks, quint32 slotCount, const Function& andAlso) {
        std::vector<Protected*> former;
        former.reserve(count());
        forEach([&](Block& block) { former.push_back(&block); });
        const Replacement scope(m_template, std::move(former));
        release(takeAll());
        m_realViews.swap(views);
        m_isOutdated = false;
        m_slots = slotCount;
        andAlso();
        publish(std::move(blocks));
    }

    template <class Choose>
    PRM_NEVER_INLINE const Block& protectListed(Protection& protection, const Choose& choose) const {
        for (int attempt = 0;; ++attempt) {
            const Block* found = m_only.load(std::memory_order_acquire);
            bool mayRead = found && protection.protect(found, m_only);
            if (!found && protection.protectGuide(m_template)) {
                found = &resolve(choose(*this));
                mayRead = protection.protect(*found);
                protection.releaseGuide();
            }
            if (mayRead)
                return *found;
            waitALittle(attempt);
        }
    }

    /// Ids below this number may have data; all others read the source data. First, in the padding after the base
    /// class.
    quint32 m_slots = 0;
    /// The block that every view reads; null when several views have data, and the lists must be asked.
    std::atomic<Block*> m_only{&m_template};
    /// Made when several views have data for the first time; stays, because readers look into it without protection.
    std::unique_ptr<Several> m_several;
    /// What new views and reads without data begin with. Its mark also keeps readers out of the lists.
    Block m_template;
};

/// A copy of the data that a view reads, which shares its keyframes until they change. For evaluations during which
/// code of a host may run.
template <class T> class HeldTrack : public HeldCopy {
public:
    /// What an assignment changes together with the data.
    struct Settings {
        bool keyframed = false;
        bool splittable = false;
        Outside outside;
    };

    PRM_ALWAYS_INLINE HeldTrack(const FastViewMap<T>& map, const PVData<T>& block, View askedView,
                                const Settings& present, const Protection& protection)
        : HeldCopy(block, map.templateData(), protection.thread()), track(static_cast<const Track<T>&>(block)),
          settings(present), view(block.view), asked(askedView) {}
    HeldTrack(const HeldTrack& around, View askedView, const Protection& protection)
        : HeldCopy(around, protection.thread()), track(around.track), settings(around.settings), view(around.view),
          asked(askedView) {}

    /// The innermost one of this thread for the view.
    PRM_ALWAYS_INLINE static const HeldTrack* find(const FastViewMap<T>& map, View view) {
        for (const HeldCopy* copy = innermost(); copy; copy = copy->below()) {
            if (!copy->isFoundBy(map.templateData()))
                continue;
            const auto* const held = static_cast<const HeldTrack*>(copy);
            if (held->view == view || held->asked == view)
                return held;
        }
        return nullptr;
    }

    const Track<T> track;
    const Settings settings;
    /// The view to which the data belong, and that for which they were asked.
    const View view;
    const View asked;
};

} // namespace Prm::detail
