// A compound's keyframes and views: the union of those of its subparameters.

#include "prm/AnimationState.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/compound/CompoundWalk.hpp"
#include "prm/edits/KeyframeMoves.h"
#include "prm/text/LineParts.h"
#include "prm/track/KeyframeRevision.h"
#include "prm/track/KeyframeSearch.h"

#include <QStringList>
#include <boost/make_shared.hpp>

#include <stdexcept>
#include <typeinfo>

namespace Prm {

namespace {

bool earlier(const Context& a, const Context& b) {
    return a.time < b.time;
}

} // namespace

QVector<Context> CompoundParameter::gathered(const View& view) const {
    QVector<Context> keyframes;
    for (const auto& parameter : parameters())
        parameter->forEachKeyframeTime([&](const Context& at) { keyframes.append(at); }, view);
    std::stable_sort(keyframes.begin(), keyframes.end(), earlier);
    const auto sameTime = [](const Context& a, const Context& b) { return a.time == b.time; };
    keyframes.erase(std::unique(keyframes.begin(), keyframes.end(), sameTime), keyframes.end());
    return keyframes;
}

std::vector<unsigned int> CompoundParameter::countsIn(const View& view) const {
    std::vector<unsigned int> counts;
    counts.reserve(parameters().size());
    for (const auto& parameter : parameters())
        counts.push_back(parameter->keyframeCount(view));
    return counts;
}

/// Made anew only when a subparameter has counted on, or does not count.
const QVector<Context>& CompoundParameter::keyframesOf(const View& view) const {
    const quint64 revision = keyframeRevision();
    if (revision == 0 || m_union.revision != revision || m_union.view != view)
        m_union = {view, revision, gathered(view), countsIn(view)};
    return m_union.keyframes;
}

/// Mostly the one behind that which was looked for before.
std::size_t CompoundParameter::placeOf(const ParameterWithoutType& parameter) const {
    const auto isIt = [&](const auto& listed) { return listed.get() == &parameter; };
    const auto begin = parameters().begin();
    const auto last = begin + static_cast<std::ptrdiff_t>(std::min(m_lastPlace, parameters().size()));
    auto found = std::find_if(last, parameters().end(), isIt);
    if (found == parameters().end()) {
        found = std::find_if(begin, last, isIt);
        found = found == last ? parameters().end() : found;
    }
    const auto place = static_cast<std::size_t>(found - begin);
    m_lastPlace = place;
    return place;
}

/// Whether all steps of the thread since the revisions were looked at are those of one subparameter.
bool CompoundParameter::hasOnlyItChanged(std::size_t place) const {
    return m_walks > 0 && m_seenSteps != InWalk::unknown && place < m_revisions.size() &&
           m_revisions.size() == parameters().size() &&
           detail::t_keyframeSteps - m_seenSteps == parameters()[place]->keyframeRevision() - m_revisions[place];
}

/// Whether none but one subparameter has counted on since this one's revision was counted up last.
bool CompoundParameter::onlyOneHasChanged(std::size_t place) const {
    if (hasOnlyItChanged(place))
        return true;
    for (std::size_t i = 0; i < m_revisions.size(); ++i) {
        if (i != place && parameters()[i]->keyframeRevision() != m_revisions[i])
            return false;
    }
    return true;
}

/// Whether a subparameter, which has just told of it, has gained or lost one keyframe of the union's view, and nothing
/// else: in one step, or in as many as it takes to come from none to one or back.
bool CompoundParameter::hasChangedByOne(std::size_t place) const {
    const unsigned int former = m_union.counts[place];
    const unsigned int now = parameters()[place]->keyframeCount(m_union.view);
    return parameters()[place]->keyframeRevision() == m_revisions[place] + 1 || former + now == 1;
}

/// Takes one keyframe that a subparameter has gained or lost into the union, which so need not be made anew for each of
/// many. Only when that is all that has happened, as the counts tell.
void CompoundParameter::follow(const ParameterChange& change, const Context& keyframe) const {
    if (m_union.revision == 0 || m_union.revision != m_revision || m_union.view != keyframe.view ||
        m_revisions.size() != parameters().size())
        return;
    const std::size_t place = placeOf(*change.parameter);
    if (place == parameters().size() || !hasChangedByOne(place) || !onlyOneHasChanged(place))
        return;
    QVector<Context>& keyframes = m_union.keyframes;
    const int position = detail::lowerBound(keyframes, keyframe.time);
    const bool isIn = position < keyframes.size() && keyframes.at(position).time == keyframe.time;
    const bool belongs = hasKeyframe(Context::Explicit(keyframe), place);
    if (belongs && !isIn)
        keyframes.insert(position, Context(keyframe.time, keyframe.view));
    else if (isIn && !belongs)
        keyframes.remove(position);
    m_union.counts[place] = change.parameter->keyframeCount(keyframe.view);
    m_revisions[place] = change.parameter->keyframeRevision();
    m_union.revision = ++m_revision;
    m_seenSteps = detail::t_keyframeSteps;
}

int CompoundParameter::positionOf(const Context& keyframe) const {
    const QVector<Context>& keyframes = keyframesOf(keyframe.view);
    const int position = detail::positionAt(keyframes, keyframe.time);
    return position >= 0 && keyframes.at(position) == keyframe ? position : -1;
}

bool CompoundParameter::isUnchangedSoFar() const {
    return m_walks > 0 && m_seenSteps == detail::t_keyframeSteps && m_revisions.size() == parameters().size();
}

quint64 CompoundParameter::keyframeRevision() const {
    if (!isUnchangedSoFar())
        lookAtRevisions();
    return m_allCount ? m_revision : 0;
}

/// One step for a single step of a single part, which `follow` relies on; two for whatever else.
void CompoundParameter::lookAtRevisions() const {
    quint64 steps = m_revisions.size() == parameters().size() ? 0 : 2;
    m_revisions.resize(parameters().size());
    m_allCount = true;
    for (std::size_t i = 0; i < m_revisions.size(); ++i) {
        const quint64 revision = parameters()[i]->keyframeRevision();
        m_allCount = m_allCount && revision != 0;
        if (revision != m_revisions[i])
            steps += revision == m_revisions[i] + 1 ? 1 : 2;
        m_revisions[i] = revision;
    }
    m_revision += std::min<quint64>(steps, 2);
    m_seenSteps = detail::t_keyframeSteps;
}

QList<Context> CompoundParameter::allKeyframesTime(const View& view) const {
    return keyframesOf(view).toList();
}

QVector<Context> CompoundParameter::allKeyframes() const {
    QVector<Context> all;
    const std::vector<View> views = viewList();
    for (const View view : views)
        all += keyframesOf(view);
    return all;
}

bool CompoundParameter::isKeyframed() const {
    return anySubparameter([](const ParameterWithoutType& parameter) { return parameter.isKeyframed(); });
}

unsigned int CompoundParameter::keyframeCount(const View& view) const {
    return static_cast<unsigned int>(keyframesOf(view).size());
}

Context CompoundParameter::keyframeTime(unsigned int index, const View& view) const {
    const QVector<Context>& keyframes = keyframesOf(view);
    return index < static_cast<unsigned int>(keyframes.size()) ? keyframes.at(static_cast<int>(index))
                                                               : Context(Time(), view);
}

/// Whether any subparameter has it, asked from one of them on, once around.
bool CompoundParameter::hasKeyframe(const Context::Explicit& keyframe, std::size_t from) const {
    const std::size_t count = parameters().size();
    for (std::size_t i = 0; i < count; ++i) {
        if (parameters()[(from + i) % count]->bKeyframeAt(keyframe))
            return true;
    }
    return false;
}

bool CompoundParameter::bKeyframeAt(const Context::Explicit& context) const {
    return firstWith(context) != nullptr;
}

bool CompoundParameter::bNearestKeyframeIndex(const Context& context, unsigned int& index) const {
    const QVector<Context>& keyframes = keyframesOf(context.view);
    if (keyframes.isEmpty())
        return false;
    index = static_cast<unsigned int>(detail::nearestPosition(keyframes, context.time));
    return true;
}

bool CompoundParameter::bNearestKeyframeTime(const Context& context, Time& time) const {
    unsigned int index = 0;
    if (!bNearestKeyframeIndex(context, index))
        return false;
    time = keyframeTime(index, context.view).time;
    return true;
}

bool CompoundParameter::found(int position, const Context& from, Context& out) const {
    if (position < 0)
        return false;
    out = Context(keyframesOf(from.view).at(position).time, from.view);
    return true;
}

bool CompoundParameter::bPreviousKeyframe(const Context& context, Context& previous) const {
    return found(detail::lowerBound(keyframesOf(context.view), context.time) - 1, context, previous);
}

bool CompoundParameter::bNextKeyframe(const Context& context, Context& next) const {
    return found(detail::nextPosition(keyframesOf(context.view), context.time), context, next);
}

const ParameterWithoutType* CompoundParameter::firstWith(const Context::Explicit& keyframe) const {
    const auto with = std::find_if(parameters().begin(), parameters().end(),
                                   [&](const auto& parameter) { return parameter->bKeyframeAt(keyframe); });
    return with == parameters().end() ? nullptr : with->get();
}

const ParameterWithoutType* CompoundParameter::firstKeyframed() const {
    const auto keyframed = std::find_if(parameters().begin(), parameters().end(),
                                        [](const auto& parameter) { return parameter->isKeyframed(); });
    return keyframed == parameters().end() ? nullptr : keyframed->get();
}

Extrapolation CompoundParameter::extrapolationBefore() const {
    const ParameterWithoutType* const first = firstKeyframed();
    return first ? first->extrapolationBefore() : Extrapolation::Constant;
}

Extrapolation CompoundParameter::extrapolationAfter() const {
    const ParameterWithoutType* const first = firstKeyframed();
    return first ? first->extrapolationAfter() : Extrapolation::Constant;
}

Interpolation CompoundParameter::interpolation(const Context& context) const {
    const ParameterWithoutType* const first = firstKeyframed();
    return first ? first->interpolation(context) : Interpolation::Constant;
}

Interpolation CompoundParameter::interpolation(const KeyframeIndex& keyframe) const {
    return interpolationData(keyframe).interpolation;
}

IType CompoundParameter::interpolationData(const KeyframeIndex& keyframe) const {
    const Context at = keyframeTime(keyframe.index, keyframe.view);
    const ParameterWithoutType* const first = firstWith(Context::Explicit(at));
    unsigned int index = 0;
    if (!first || !first->bNearestKeyframeIndex(at, index))
        return {};
    return first->interpolationData({first, keyframe.view, index});
}

/// The keyframes of the subparameters at one time; in text one line for each, behind its name.
class CompoundParameter::CompoundKeyframe : public SerialisedKeyframe {
public:
    struct Part {
        QPointer<ParameterWithoutType> parameter;
        QString name;
        boost::shared_ptr<SerialisedKeyframe> keyframe;
    };

    Context context() const override { return {time, view}; }

    void adjustTime(float delta) override {
        time = time + static_cast<double>(delta);
        for (const Part& part : parts) {
            if (part.keyframe)
                part.keyframe->adjustTime(delta);
        }
    }

    QString toString() const override { return written(&SerialisedKeyframe::toString); }
    QString toExactString() const override { return written(&SerialisedKeyframe::toExactString); }

    void setFromString(const QString& text) override {
        std::vector<Part> read = parts;
        for (Part& part : read)
            part.keyframe.reset();
        for (const QString& line : text.split(QLatin1Char('\n'))) {
            if (!line.trimmed().isEmpty())
                readLine(line.trimmed(), read);
        }
        parts = std::move(read);
        for (const Part& part : parts) {
            if (part.keyframe) {
                time = part.keyframe->context().time;
                view = part.keyframe->context().view;
            }
        }
    }

    bool equals(const SerialisedKeyframe& other) const override {
        const auto* const same = dynamic_cast<const CompoundKeyframe*>(&other);
        return same && same->time == time && same->view == view &&
               std::equal(parts.begin(), parts.end(), same->parts.begin(), same->parts.end(),
                          [](const Part& a, const Part& b) {
                              return detail::sameKeyframes(a.keyframe.get(), b.keyframe.get());
                          });
    }

    Time time;
    View view;
    std::vector<Part> parts;

private:
    QString written(QString (SerialisedKeyframe::*text)() const) const {
        QStringList lines;
        for (const Part& part : parts) {
            if (part.keyframe)
                lines += detail::lineStart(QString(), part.name, true) + (part.keyframe.get()->*text)();
        }
        return lines.join(QLatin1Char('\n'));
    }

    /// A view before the name is that of the whole, as other keyframes have it.
    static void readLine(const QString& line, std::vector<Part>& read) {
        QString whole = line;
        View ofWhole;
        const bool hasView = View::extractStringPrefix(whole, ofWhole);
        for (Part& part : read) {
            QString rest = whole;
            const bool isIts = part.name.isEmpty() || detail::behindName(whole, part.name, rest);
            if (!isIts || !part.parameter)
                continue;
            part.keyframe = part.parameter->getSerialisedKeyframe(Context(Context::INVALID_TIME));
            if (!part.keyframe)
                continue;
            part.keyframe->setFromString(hasView ? ofWhole.toString() + rest : rest);
            return;
        }
        throw std::runtime_error("Cannot parse keyframe string '" + line.toStdString() + "'");
    }
};

boost::shared_ptr<SerialisedKeyframe> CompoundParameter::getSerialisedKeyframe(Context context) const {
    const auto keyframe = boost::make_shared<CompoundKeyframe>();
    keyframe->time = context.time;
    keyframe->view = context.view;
    const bool toBeRead = context == Context(Context::INVALID_TIME);
    bool isThere = toBeRead;
    for (const auto& parameter : parameters()) {
        const auto part = toBeRead ? nullptr : parameter->getSerialisedKeyframe(context);
        isThere = isThere || part;
        keyframe->parts.push_back({parameter.get(), parameter->scriptName(), part});
    }
    if (!isThere)
        return {};
    return keyframe;
}

void CompoundParameter::importKeyframe(const SerialisedKeyframe& keyframe) {
    // A copy: observers of the first change may let go of the original.
    const std::vector<CompoundKeyframe::Part> parts = dynamic_cast<const CompoundKeyframe&>(keyframe).parts;
    forEachSubparameter([&](ParameterWithoutType& parameter, std::size_t i) {
        if (i < parts.size() && parts[i].keyframe)
            parameter.importKeyframe(*parts[i].keyframe);
    });
}

const std::vector<View>& CompoundParameter::viewList() const {
    std::vector<View> views;
    for (const auto& parameter : parameters()) {
        const std::vector<View>& own = parameter->viewList();
        views.insert(views.end(), own.begin(), own.end());
    }
    std::sort(views.begin(), views.end());
    views.erase(std::unique(views.begin(), views.end()), views.end());
    if (views.empty())
        views.emplace_back(View::defaultViewId());
    if (views != m_presentViews)
        m_presentViews.swap(views);
    return m_presentViews;
}

int CompoundParameter::numViews() const {
    return static_cast<int>(viewList().size());
}

bool CompoundParameter::isSplit() const {
    return anySubparameter([](const ParameterWithoutType& parameter) { return parameter.isSplit(); });
}

bool CompoundParameter::splittable() const {
    return anySubparameter([](const ParameterWithoutType& parameter) { return parameter.splittable(); });
}

} // namespace Prm
