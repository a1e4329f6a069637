// Keyframes as text, copied and pasted.

#include "prm/ParameterEdits.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/edits/KeyframeMoves.h"
#include "prm/untyped/StateAt.h"

#include <QStringList>

#include <algorithm>
#include <stdexcept>

namespace Prm {

namespace {

QString ofView(const QString& line, const View& view) {
    QString rest = line;
    View named;
    View::extractStringPrefix(rest, named);
    return view.toString() + rest;
}

/// Throws for a line that is no keyframe.
detail::SerialisedKeyframes parsed(const ParameterWithoutType& parameter, const QString& text, const View& view) {
    detail::SerialisedKeyframes keyframes;
    for (const QString& part : text.split(QLatin1Char('\n'))) {
        const QString line = part.trimmed();
        if (line.isEmpty())
            continue;
        auto keyframe = parameter.getSerialisedKeyframe(Context(Context::INVALID_TIME));
        if (!keyframe)
            return {};
        keyframe->setFromString(view.isValid() ? ofView(line, view) : line);
        if (!keyframe->context().time.isValid())
            throw std::runtime_error("A keyframe without a valid time: '" + line.toStdString() + "'");
        keyframes.push_back(std::move(keyframe));
    }
    return keyframes;
}

Time timeOf(const boost::shared_ptr<SerialisedKeyframe>& keyframe) {
    return keyframe->context().time;
}

/// Moves all so that the first comes to the time.
void moveTo(const detail::SerialisedKeyframes& keyframes, Time at) {
    const auto first = std::min_element(keyframes.begin(), keyframes.end(),
                                        [](const auto& a, const auto& b) { return timeOf(a) < timeOf(b); });
    if (first == keyframes.end())
        return;
    const double shift = at.toDouble() - timeOf(*first).toDouble();
    for (const auto& keyframe : keyframes) {
        const Time target = timeOf(keyframe) + shift;
        if (!target.isValid())
            throw std::runtime_error("A keyframe would come behind the last time");
        detail::shiftTo(*keyframe, target);
    }
}

} // namespace

ParameterPasteKeyframesEdit::ParameterPasteKeyframesEdit(ParameterWithoutType& parameter, const QString& text, Time at,
                                                         const View& view)
    : ParameterSnapshotEdit(&parameter), m_text(text), m_at(at), m_view(view) {}

QString ParameterPasteKeyframesEdit::textOf(const ParameterWithoutType& parameter, const View& view, Time first,
                                            Time last) {
    std::vector<Time> times = detail::keyframeTimes(parameter, view);
    times.erase(std::remove_if(times.begin(), times.end(), [=](Time time) { return time < first || time > last; }),
                times.end());
    QString text;
    for (const auto& keyframe : detail::serialised(parameter, view, times))
        text += keyframe->toString() + QLatin1Char('\n');
    return text;
}

bool ParameterPasteKeyframesEdit::applies() const {
    return parameter()->isKeyframed() && !m_text.isEmpty();
}

bool ParameterPasteKeyframesEdit::apply() {
    const detail::SerialisedKeyframes keyframes = parsed(*parameter(), m_text, m_view);
    if (m_at.isValid())
        moveTo(keyframes, m_at);
    std::vector<detail::StateAt> watches;
    watches.reserve(keyframes.size());
    for (const auto& keyframe : keyframes)
        watches.emplace_back(*parameter(), keyframe->context());
    detail::importAll(*parameter(), keyframes);
    return parameter() && std::any_of(watches.begin(), watches.end(),
                                      [this](const detail::StateAt& watch) { return watch.hasChanged(*parameter()); });
}

} // namespace Prm
