// A compound's keyframes and views: the union of those of its subparameters.

#include "prm/AnimationState.h"
#include "prm/CompoundParameter.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/edits/KeyframeMoves.h"
#include "prm/set/SetWalk.h"
#include "prm/text/LineParts.h"
#include "prm/track/KeyframeRevision.h"
#include "prm/track/KeyframeSearch.h"

#include <QStringList>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <stdexcept>
#include <typeinfo>

namespace Prm {

CompoundParameter::UnionKeyframes CompoundParameter::gathered(const View& view) const {
    UnionKeyframes all;
    for (const auto& parameter : parameters()) {
        if (const auto* const compound = qobject_cast<const CompoundParameter*>(parameter.get()))
            all += compound->keyframesOf(view);
        else
            parameter->forEachKeyframeTime([&](const Context& at) { all.append({at.time, 1}); }, view);
    }
    std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.time < b.time; });
    auto end = all.begin();
    for (const Union::Keyframe& keyframe : qAsConst(all)) {
        if (end != all.begin() && (end - 1)->time == keyframe.time)
            (end - 1)->holders += keyframe.holders;
        else
            *end++ = keyframe;
    }
    all.erase(end, all.end());
    return all;
}

/// Null for a view that was not asked about lately.
CompoundParameter::Union* CompoundParameter::rememberedUnion(const View& view) const {
    const auto known =
        std::find_if(m_unions.begin(), m_unions.end(), [&](const Union& one) { return one.view == view; });
    return known == m_unions.end() ? nullptr : &*known;
}

/// Gathered anew when a part has changed since, or does not count its changes.
const CompoundParameter::UnionKeyframes& CompoundParameter::keyframesOf(const View& view) const {
    constexpr std::size_t mostViews = 16;
    const quint64 revision = keyframeRevision();
    const Union* const known = rememberedUnion(view);
    if (known && revision != 0 && known->revision == revision)
        return known->keyframes;
    Union anew{view, revision, gathered(view)};
    Union* const former = rememberedUnion(anew.view);
    if (former) {
        std::swap(*former, anew);
        return former->keyframes;
    }
    if (m_unions.size() == mostViews)
        m_unions.erase(m_unions.begin());
    m_unions.push_back(std::move(anew));
    return m_unions.back().keyframes;
}

/// The sum of the subparameters' revisions, and a number for a compound that has none.
quint64 CompoundParameter::keyframeRevision() const {
    quint64 sum = 0xD1B54A32D192ED03u;
    for (const auto& parameter : parameters()) {
        const quint64 revision = parameter->keyframeRevision();
        if (revision == 0)
            return 0;
        sum += revision;
    }
    return sum;
}

quint64 CompoundParameter::holdersOf(const Context::Explicit& keyframe) const {
    quint64 holders = 0;
    for (const auto& parameter : parameters()) {
        if (const auto* const compound = qobject_cast<const CompoundParameter*>(parameter.get()))
            holders += compound->holdersOf(keyframe);
        else
            holders += parameter->bKeyframeAt(keyframe) ? 1 : 0;
    }
    return holders;
}

/// Takes the keyframes that parts have gained or lost at one time into the union, which then need not be gathered anew
/// for each of many. Only when these are all changes since: the revision has taken as many steps of one keyframe as
/// there are more or fewer parts that have it.
void CompoundParameter::follow(const Context& keyframe) const {
    const quint64 revision = keyframeRevision();
    const Union* const former = rememberedUnion(keyframe.view);
    if (!former || former->revision == revision)
        return;
    const Union::Keyframe now{keyframe.time, holdersOf(Context::Explicit(keyframe))};
    // Found again, since classes of a host's own may ask the compound meanwhile.
    Union* const known = rememberedUnion(keyframe.view);
    if (!known || known->revision == 0 || revision == 0)
        return;
    UnionKeyframes& keyframes = known->keyframes;
    const int position = detail::lowerBound(keyframes, now.time);
    const bool isIn = position < keyframes.size() && keyframes.at(position).time == now.time;
    const quint64 holders = isIn ? keyframes.at(position).holders : 0;
    const quint64 steps = now.holders > holders ? now.holders - holders : holders - now.holders;
    if (revision - known->revision != steps * detail::KeyframeRevision::oneKeyframe)
        return;
    if (now.holders == 0)
        keyframes.remove(position);
    else if (isIn)
        keyframes[position] = now;
    else
        keyframes.insert(position, now);
    known->revision = revision;
}

int CompoundParameter::positionOf(const Context& keyframe) const {
    const int position = detail::positionAt(keyframesOf(keyframe.view), keyframe.time);
    return position >= 0 && keyframe == Context(keyframe.time, keyframe.view) ? position : -1;
}

QList<Context> CompoundParameter::allKeyframesTime(const View& view) const {
    const View ofView = view;
    QList<Context> all;
    for (const Union::Keyframe& keyframe : keyframesOf(ofView))
        all.append(Context(keyframe.time, ofView));
    return all;
}

QVector<Context> CompoundParameter::allKeyframes() const {
    QVector<Context> all;
    const std::vector<View> views = viewList();
    for (const View view : views)
        all += allKeyframesTime(view).toVector();
    return all;
}

bool CompoundParameter::isKeyframed() const {
    return firstKeyframed() != nullptr;
}

unsigned int CompoundParameter::keyframeCount(const View& view) const {
    return static_cast<unsigned int>(keyframesOf(view).size());
}

Context CompoundParameter::keyframeTime(unsigned int index, const View& view) const {
    const UnionKeyframes& keyframes = keyframesOf(view);
    const bool isThere = index < static_cast<unsigned int>(keyframes.size());
    return {isThere ? keyframes.at(static_cast<int>(index)).time : Time(), view};
}

bool CompoundParameter::bKeyframeAt(const Context::Explicit& context) const {
    return firstWith(context) != nullptr;
}

bool CompoundParameter::bNearestKeyframeIndex(const Context& context, unsigned int& index) const {
    const UnionKeyframes& keyframes = keyframesOf(context.view);
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

/// The keyframes of the subparameters at one time; in text one line for each, after its name.
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
            if (!line.trimmed().isEmpty() && !readLine(line.trimmed(), read))
                throw std::runtime_error("Cannot parse keyframe string '" + line.trimmed().toStdString() + "'");
        }
        parts = std::move(read);
        takePlace();
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
            const QString own = part.keyframe ? (part.keyframe.get()->*text)() : QString();
            for (const QString& line : own.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
                lines += detail::lineStart(QString(), part.name, true) + line;
        }
        return lines.join(QLatin1Char('\n'));
    }

    /// Whether the line is a part's. A view before the name holds for the whole, and so replaces the part's own.
    static bool readLine(const QString& line, std::vector<Part>& read) {
        QString whole = line;
        View ofWhole;
        const bool hasView = View::extractStringPrefix(whole, ofWhole);
        for (Part& part : read) {
            QString rest = whole;
            if ((part.name.isEmpty() || detail::afterName(whole, part.name, rest)) && part.parameter &&
                readPart(hasView ? inView(ofWhole, rest) : rest, part))
                return true;
        }
        return false;
    }
    static bool readPart(const QString& line, Part& part) {
        auto keyframe = part.parameter->getSerialisedKeyframe(Context(Context::INVALID_TIME));
        if (auto* const compound = dynamic_cast<CompoundKeyframe*>(keyframe.get())) {
            // Other lines of the same part may have been read already.
            if (const auto* const former = dynamic_cast<const CompoundKeyframe*>(part.keyframe.get()))
                *compound = *former;
            if (!readLine(line, compound->parts))
                return false;
            compound->takePlace();
        } else if (keyframe) {
            keyframe->setFromString(line);
        }
        part.keyframe = std::move(keyframe);
        return part.keyframe != nullptr;
    }
    static QString inView(const View& view, const QString& line) {
        QString rest = line;
        View replaced;
        View::extractStringPrefix(rest, replaced);
        return view.toString() + rest;
    }
    /// That of the last part that has a keyframe.
    void takePlace() {
        for (const Part& part : parts) {
            if (part.keyframe) {
                time = part.keyframe->context().time;
                view = part.keyframe->context().view;
            }
        }
    }
};

boost::shared_ptr<SerialisedKeyframe> CompoundParameter::getSerialisedKeyframe(Context context) const {
    const auto keyframe = boost::make_shared<CompoundKeyframe>();
    keyframe->time = context.time;
    keyframe->view = context.view;
    const bool toBeRead = context == Context(Context::INVALID_TIME);
    bool isThere = toBeRead;
    for (const auto& parameter : parameters()) {
        // A part that borrows the view's data has no keyframe there to be deleted or moved.
        const Context own = detail::writtenAt(*parameter, context);
        const bool hasIt = !toBeRead && parameter->bKeyframeAt(Context::Explicit(own));
        const auto part = hasIt ? parameter->getSerialisedKeyframe(own) : nullptr;
        isThere = isThere || part;
        keyframe->parts.push_back({parameter.get(), parameter->scriptName(), part});
    }
    if (!isThere)
        return {};
    return keyframe;
}

void CompoundParameter::importKeyframe(const SerialisedKeyframe& keyframe) {
    // A copy: observers of the first change may release the original.
    const std::vector<CompoundKeyframe::Part> parts = dynamic_cast<const CompoundKeyframe&>(keyframe).parts;
    // Its own keyframe goes back by part, since observers may have reordered them; another compound's goes by position.
    const bool isOwn = std::any_of(parts.begin(), parts.end(),
                                   [&](const auto& part) { return part.parameter && lists(*part.parameter); });
    PartWalk(*this).forEach([&](ParameterWithoutType& parameter, std::size_t place) {
        const auto part = isOwn ? std::find_if(parts.begin(), parts.end(),
                                               [&](const auto& one) { return one.parameter == &parameter; })
                                : parts.begin() + static_cast<std::ptrdiff_t>(std::min(place, parts.size()));
        if (part != parts.end() && part->keyframe)
            parameter.importKeyframe(*part->keyframe);
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
    return std::any_of(parameters().begin(), parameters().end(),
                       [](const auto& parameter) { return parameter->isSplit(); });
}

bool CompoundParameter::splittable() const {
    return std::any_of(parameters().begin(), parameters().end(),
                       [](const auto& parameter) { return parameter->splittable(); });
}

} // namespace Prm
