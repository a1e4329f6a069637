// Keyframes as text, copied and pasted.

#include "prm/ParameterEdits.h"
#include "prm/ParameterStrings.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/edits/KeyframeMoves.h"
#include "prm/text/KeyframeText.h"

#include <QStringList>

#include <algorithm>
#include <optional>
#include <set>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace Prm {

namespace {

QString ofView(const QString& line, const View& view) {
    QString rest = line;
    View named;
    View::extractStringPrefix(rest, named);
    return view.toString() + rest;
}

struct Line {
    boost::shared_ptr<SerialisedKeyframe> keyframe;
    /// Of the part, in the text of a compound.
    QString name;
    QString text;
};

Time timeOf(const Line& line) {
    return line.keyframe->context().time;
}

bool isEarlier(const Line& a, const Line& b) {
    return timeOf(a) < timeOf(b);
}

/// With the names of the parts that it is in.
QString nameIn(const QString& line) {
    QString rest = line;
    View view;
    View::extractStringPrefix(rest, view);
    return rest.left(rest.indexOf(ParameterStrings::keyframes + QLatin1String(".append("), 0, Qt::CaseInsensitive));
}

/// Reading rounds to single precision; here the time is what the line has.
void takeExactTime(SerialisedKeyframe& keyframe, const QString& line) {
    const std::optional<double> exact = detail::exactTimeIn(line);
    const Time read = keyframe.context().time;
    if (exact && read.isValid() && static_cast<double>(static_cast<float>(*exact)) == read.toDouble())
        detail::shiftTo(keyframe, Time::fromDouble(*exact));
    if (!keyframe.context().time.isValid())
        throw std::runtime_error("A keyframe without a valid time: '" + line.toStdString() + "'");
}

/// Throws for a line that is no keyframe.
std::vector<Line> parsed(const ParameterWithoutType& parameter, const QString& text, const View& view) {
    std::vector<Line> lines;
    for (const QString& part : text.split(QLatin1Char('\n'))) {
        const QString line = part.trimmed();
        if (line.isEmpty())
            continue;
        auto keyframe = parameter.getSerialisedKeyframe(Context(Context::INVALID_TIME));
        if (!keyframe)
            return {};
        keyframe->setFromString(view.isValid() ? ofView(line, view) : line);
        takeExactTime(*keyframe, line);
        lines.push_back({std::move(keyframe), nameIn(line), line});
    }
    return lines;
}

/// Moves all so that what is at one time comes to another.
void move(const std::vector<Line>& lines, Time from, Time to) {
    const double shift = to.toDouble() - from.toDouble();
    for (const Line& line : lines) {
        const Time target = timeOf(line) == from ? to : timeOf(line) + shift;
        if (!target.isValid())
            throw std::runtime_error("A keyframe would come after the last time");
        detail::shiftTo(*line.keyframe, target);
    }
}

/// The keyframes of a text as they shall be, in order of time.
std::vector<Line> pasted(const ParameterWithoutType& parameter, const QString& text, Time at, const View& view,
                         Time origin) {
    std::vector<Line> lines = parsed(parameter, text, view);
    std::stable_sort(lines.begin(), lines.end(), isEarlier);
    if (at.isValid() && !lines.empty())
        move(lines, origin.isValid() ? origin : timeOf(lines.front()), at);
    return lines;
}

} // namespace

ParameterPasteKeyframesEdit::ParameterPasteKeyframesEdit(ParameterWithoutType& parameter, const QString& text, Time at,
                                                         const View& view, Time origin)
    : ParameterSnapshotEdit(&parameter, {"Paste %n keyframe into %p", "Paste %n keyframes into %p"}), m_text(text),
      m_at(at), m_origin(origin), m_view(view) {}

QString ParameterPasteKeyframesEdit::textOf(const ParameterWithoutType& parameter, const View& view, Time first,
                                            Time last) {
    std::vector<Time> times = detail::keyframeTimes(parameter, view);
    times.erase(std::remove_if(times.begin(), times.end(), [=](Time time) { return time < first || time > last; }),
                times.end());
    return detail::exactLines(parameter, view, times);
}

QStringList ParameterPasteKeyframesEdit::losses() const {
    QStringList losses;
    if (!parameter())
        return losses;
    const std::vector<Line> lines = pasted(*parameter(), m_text, m_at, m_view, m_origin);
    std::set<std::tuple<Time, View, QString>> later;
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        if (!later.emplace(timeOf(*line), line->keyframe->context().view, line->name).second)
            losses.prepend(QStringLiteral("A later keyframe at the same time replaces '%1'").arg(line->text));
    }
    return losses;
}

bool ParameterPasteKeyframesEdit::applies() {
    if (!parameter()->isKeyframed() || m_text.isEmpty())
        return false;
    m_wanted.clear();
    for (Line& line : pasted(*parameter(), m_text, m_at, m_view, m_origin))
        m_wanted.push_back(std::move(line.keyframe));
    return !m_wanted.empty();
}

void ParameterPasteKeyframesEdit::apply() {
    const detail::SerialisedKeyframes keyframes = std::exchange(m_wanted, {});
    detail::importAll(*parameter(), keyframes);
}

int ParameterPasteKeyframesEdit::countNow() const {
    int count = 0;
    for (const QStringView line : QStringView(m_text).split(u'\n'))
        count += line.trimmed().isEmpty() ? 0 : 1;
    return count;
}

detail::Places ParameterPasteKeyframesEdit::places() const {
    detail::Places places;
    for (const auto& keyframe : m_wanted)
        places.push_back(detail::Place::at(keyframe->context()));
    return places;
}

} // namespace Prm
