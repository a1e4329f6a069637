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
/// Defined by the host. The library only stores the pointer.
class IAnimationStateProvider;

/// The interface that `AnimationState` needs: it resolves flags into views, and names views.
///
/// \snippet times_and_views.cpp provider
/// \threads Called on the thread that edits, during the edit. `Views` is safe on several threads.
class PRM_EXPORT IViewsProvider {
public:
    virtual ~IViewsProvider();
    /// A pointer for the host; may be null.
    virtual const IAnimationStateProvider* stateProvider() const = 0;
    /// The long name of a view, for example "Left".
    virtual QString viewName(const View& view) const = 0;
    /// The short name of a view, for example "L".
    virtual QString viewNameShort(const View& view) const = 0;
    /// All views if the flags say so, otherwise the current views.
    virtual std::vector<View> views(const AnimationFlags& flags) const = 0;
    /// All views of the project, in order.
    virtual std::vector<View> allViews() const = 0;
    /// Makes one view the only current view.
    virtual void setCurrentView(const View& view) = 0;
    /// The first current view.
    virtual const View& currentView() const = 0;
    /// The views that are being edited.
    virtual std::vector<View> currentViews() const = 0;
};

/// The registry of the views of one project: their names, the current views (those being edited), and the hero view.
/// Views are numbered from 0 to count-1. A new registry has one view, named "Mono" and "M".
///
/// \snippet times_and_views.cpp views
/// \threads Every operation takes the registry's recursive lock unless it says otherwise, so that worker threads may
/// query while the owning thread changes the names. References that are returned are for the owning thread.
class PRM_EXPORT Views : public IViewsProvider {
public:
    /// Two empty names, returned for an unknown view.
    static const QStringList s_emptyName;

    /// The provider is not owned and may be null.
    explicit Views(const IAnimationStateProvider* stateProvider = nullptr);
    /// Copies everything, the hero view too, without locking the source.
    Views(const Views& other);
    /// Copies everything except the hero view. Does not deadlock with the opposite assignment on another thread.
    Views& operator=(const Views& other);
    ~Views() override;

    /// Whether names, current views and provider are equal; the hero view is not compared. Takes no lock.
    bool operator==(const Views& other) const;
    bool operator!=(const Views& other) const { return !(*this == other); }

    const IAnimationStateProvider* stateProvider() const override;

    /// Sets one entry per view: the long name, then the short name. View 0 becomes the current view (without names, the
    /// invalid view); the hero view does not change.
    void setViewNames(const QVector<QStringList>& names);
    /// Takes no lock.
    const QVector<QStringList>& viewNames() const;
    /// The names of a view; those of view 0 for an invalid view, `s_emptyName` for an unknown one.
    const QStringList& viewNames(const View& view) const;
    QString viewName(const View& view) const override;
    QString viewNameShort(const View& view) const override;
    /// The number of views.
    std::size_t viewCount() const;

    /// The position of a view, or the largest `std::size_t` if it is not registered.
    std::size_t viewIndex(const View& view) const;
    /// The view at a position; view 0 if there is none.
    View lookupView(unsigned long index) const;
    /// The first view with exactly that long name; view 0 if there is none.
    View lookupView(const QString& name) const;

    std::vector<View> allViews() const override;
    /// Fills `out` and returns the number of views.
    std::size_t allViews(std::vector<View>& out) const;
    std::vector<View> views(const AnimationFlags& flags) const override;
    std::vector<View> currentViews() const override;
    /// Makes one view the only current view; any view is accepted.
    void setCurrentView(const View& view) override;
    const View& currentView() const override;

    /// The hero view; the last view if the stored one is after it, the invalid view if there are no views.
    View heroView() const;
    /// Stores the hero view; any view is accepted.
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
