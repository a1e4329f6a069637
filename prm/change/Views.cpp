#include "prm/Views.h"

#include "host/product/Settings.h"
#include "prm/AnimationState.h"

#include <QVariant>

#include <algorithm>
#include <limits>

namespace Prm {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

QString nameAt(const QStringList& names, int position) {
    return names.value(position);
}

} // namespace

IViewsProvider::~IViewsProvider() = default;

std::vector<View> AnimationState::views() const {
    if (!m_provider)
        return {View(View::defaultViewId())};
    return m_provider->views(*this);
}

const QStringList Views::s_emptyName{QString(QLatin1String("")), QString(QLatin1String(""))};

Views::Views(const IAnimationStateProvider* stateProvider) : m_stateProvider(stateProvider) {
    Views::setViewNames({QStringList{QStringLiteral("Mono"), QStringLiteral("M")}});
}

Views::Views(const Views& other)
    : IViewsProvider(other), m_allViews(other.m_allViews), m_heroView(other.m_heroView), m_viewNames(other.m_viewNames),
      m_currentViews(other.m_currentViews), m_stateProvider(other.m_stateProvider) {}

Views::~Views() = default;

Views& Views::operator=(const Views& other) {
    if (this == &other)
        return *this;
    // The two locks are never held together: assignments in opposite directions must not wait for each other.
    std::vector<View> all;
    QVector<QStringList> names;
    std::vector<View> current;
    const IAnimationStateProvider* provider = nullptr;
    {
        const Lock lock(other.m_mutex);
        all = other.m_allViews;
        names = other.m_viewNames;
        current = other.m_currentViews;
        provider = other.m_stateProvider;
    }
    const Lock lock(m_mutex);
    m_allViews = std::move(all);
    m_viewNames = std::move(names);
    m_currentViews = std::move(current);
    m_stateProvider = provider;
    return *this;
}

bool Views::operator==(const Views& other) const {
    return this == &other || (m_allViews == other.m_allViews && m_viewNames == other.m_viewNames &&
                              m_currentViews == other.m_currentViews && m_stateProvider == other.m_stateProvider);
}

const IAnimationStateProvider* Views::stateProvider() const {
    const Lock lock(m_mutex);
    return m_stateProvider;
}

void Views::setViewNames(const QVector<QStringList>& names) {
    const Lock lock(m_mutex);
    m_viewNames = names;
    m_allViews.clear();
    for (int i = 0; i < m_viewNames.size(); ++i)
        m_allViews.emplace_back(static_cast<quint32>(i));
    setCurrentView(m_allViews.empty() ? View::INVALID() : m_allViews.front());
}

const QVector<QStringList>& Views::viewNames() const {
    return m_viewNames;
}

const QStringList& Views::viewNames(const View& view) const {
    const Lock lock(m_mutex);
    const int position = view.isValid() ? static_cast<int>(view.id()) : 0;
    if (position >= m_viewNames.size())
        return s_emptyName;
    return m_viewNames.at(position);
}

QString Views::viewName(const View& view) const {
    const Lock lock(m_mutex);
    return nameAt(viewNames(view), 0);
}

QString Views::viewNameShort(const View& view) const {
    const Lock lock(m_mutex);
    return nameAt(viewNames(view), 1);
}

std::size_t Views::viewCount() const {
    const Lock lock(m_mutex);
    return static_cast<std::size_t>(m_viewNames.size());
}

std::size_t Views::viewIndex(const View& view) const {
    const Lock lock(m_mutex);
    const auto found = std::find(m_allViews.begin(), m_allViews.end(), view);
    if (found == m_allViews.end())
        return std::numeric_limits<std::size_t>::max();
    return static_cast<std::size_t>(found - m_allViews.begin());
}

View Views::lookupView(unsigned long index) const {
    const Lock lock(m_mutex);
    return index < m_allViews.size() ? m_allViews[index] : View(View::defaultViewId());
}

View Views::lookupView(const QString& name) const {
    const Lock lock(m_mutex);
    for (const View view : m_allViews) {
        if (nameAt(m_viewNames.at(static_cast<int>(view.id())), 0) == name)
            return view;
    }
    return View(View::defaultViewId());
}

std::vector<View> Views::allViews() const {
    const Lock lock(m_mutex);
    return m_allViews;
}

std::size_t Views::allViews(std::vector<View>& out) const {
    const Lock lock(m_mutex);
    if (&out != &m_allViews)
        out = m_allViews;
    return m_allViews.size();
}

std::vector<View> Views::views(const AnimationFlags& flags) const {
    const Lock lock(m_mutex);
    return flags.allViews() ? m_allViews : m_currentViews;
}

std::vector<View> Views::currentViews() const {
    const Lock lock(m_mutex);
    return m_currentViews;
}

void Views::setCurrentView(const View& view) {
    // The argument may be the reference that `currentView` returned.
    const View chosen = view;
    const Lock lock(m_mutex);
    m_currentViews.assign(1, chosen);
}

const View& Views::currentView() const {
    const Lock lock(m_mutex);
    return m_currentViews.front();
}

View Views::heroView() const {
    const Lock lock(m_mutex);
    if (m_allViews.empty())
        return View::INVALID();
    const View last = m_allViews.back();
    const bool beyond = static_cast<qint32>(m_heroView.id()) > static_cast<qint32>(last.id());
    return beyond ? last : m_heroView;
}

void Views::setHeroView(const View& view) {
    const View chosen = view;
    const Lock lock(m_mutex);
    m_heroView = chosen;
}

unsigned int Views::maxViews() {
    static const unsigned int limit =
        std::max(1u, Product::Settings::value(QStringLiteral("MaxViews"), 3, true).toUInt());
    return limit;
}

} // namespace Prm
