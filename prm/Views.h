#pragma once

#include "prm/Export.h"
#include "prm/View.h"

#include <QStringList>
#include <QVector>

#include <cstddef>
#include <mutex>
#include <vector>

namespace Prm {

class AnimationFlags;
/// Supplied by the host; the library only keeps the pointer.
class IAnimationStateProvider;

/// Resolves flags into views and names them: what `AnimationState` needs of a registry.
///
/// \snippet times_and_views.cpp provider
/// \threads Asked on the thread that edits, inside the edit. `Views` may be asked from several.
class PRM_EXPORT IViewsProvider {
public:
    virtual ~IViewsProvider();
    virtual const IAnimationStateProvider* stateProvider() const = 0;
    virtual QString viewName(const View& view) const = 0;
    virtual QString viewNameShort(const View& view) const = 0;
    /// All views when the flags say so, else the current ones.
    virtual std::vector<View> views(const AnimationFlags& flags) const = 0;
    virtual std::vector<View> allViews() const = 0;
    virtual void setCurrentView(const View& view) = 0;
    virtual const View& currentView() const = 0;
    virtual std::vector<View> currentViews() const = 0;
};

/// The views of one project: their names, which of them are current (being edited), and the hero view, whose values an
/// unsplit parameter shows in every view. Views are always numbered 0 to count-1. A new registry is mono: one view,
/// named "Mono" and "M".
///
/// \snippet times_and_views.cpp views
/// \threads Every operation takes the registry's recursive lock unless it says otherwise, so that worker threads may
/// ask while the owner changes the names. What is returned by reference is for the owning thread.
class PRM_EXPORT Views : public IViewsProvider {
public:
    /// Two empty names, the answer for an unknown view.
    static const QStringList s_emptyName;

    /// The provider is not owned and may be null.
    explicit Views(const IAnimationStateProvider* stateProvider = nullptr);
    /// Copies everything, the hero view too, without locking the source.
    Views(const Views& other);
    /// Copies everything but the hero view. Safe against an assignment the other way round in another thread.
    Views& operator=(const Views& other);
    ~Views() override;

    /// The same names, current views and provider; the hero view does not count. Takes no lock.
    bool operator==(const Views& other) const;
    bool operator!=(const Views& other) const { return !(*this == other); }

    const IAnimationStateProvider* stateProvider() const override;

    /// One entry per view: the long name, then the short name. Makes view 0 the current view (the invalid view when
    /// there are no names) and leaves the hero view alone.
    void setViewNames(const QVector<QStringList>& names);
    /// Takes no lock.
    const QVector<QStringList>& viewNames() const;
    /// The names of a view: of view 0 for an invalid one, `s_emptyName` for an unknown one.
    const QStringList& viewNames(const View& view) const;
    QString viewName(const View& view) const override;
    QString viewNameShort(const View& view) const override;
    std::size_t viewCount() const;

    /// The position of a view, or the largest `std::size_t` when it is not registered.
    std::size_t viewIndex(const View& view) const;
    /// The view at a position, view 0 when there is none.
    View lookupView(unsigned long index) const;
    /// The first view with exactly that long name, view 0 when there is none.
    View lookupView(const QString& name) const;

    std::vector<View> allViews() const override;
    /// Fills `out` and returns the number of views.
    std::size_t allViews(std::vector<View>& out) const;
    std::vector<View> views(const AnimationFlags& flags) const override;
    std::vector<View> currentViews() const override;
    /// The one view becomes the current one; it is not checked.
    void setCurrentView(const View& view) override;
    const View& currentView() const override;

    /// The hero view: the last view when the stored one is after it, invalid when there are no views.
    View heroView() const;
    /// Stored as it is, also when no such view exists.
    void setHeroView(const View& view);

    /// The setting "MaxViews" (default 3, at least 1), read once per process.
    static unsigned int maxViews();

private:
    std::vector<View> m_allViews;
    View m_heroView;
    QVector<QStringList> m_viewNames;
    std::vector<View> m_currentViews;
    const IAnimationStateProvider* m_stateProvider;
    mutable std::recursive_mutex m_mutex;
};

} // namespace Prm
