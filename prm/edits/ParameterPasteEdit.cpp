// Keyframes as text, copied and pasted.

#include "prm/ParameterEdits.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/edits/KeyframeMoves.h"
#include "prm/text/NumberText.h"

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

/// The time that the line has, which reading rounds to single precision; none where it has no plain number.
std::optional<double> exactTimeIn(const QString& line) {
    const int start = line.indexOf(QLatin1String("Key("), 0, Qt::CaseInsensitive) + 4;
    const int end = line.indexOf(QLatin1Char(','), start);
    bool isNumber = false;
    const double time = detail::toDouble(QStringView(line).mid(start, end - start).trimmed(), &isNumber);
    return start >= 4 && end > start && isNumber ? std::optional<double>(time) : std::nullopt;
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

QString nameIn(const QString& line) {
    QString rest = line;
    View view;
    View::extractStringPrefix(rest, view);
    return rest.left(rest.indexOf(QLatin1Char('.')));
}

/// Reading rounds to single precision; here the time is what the line has.
void takeExactTime(SerialisedKeyframe& keyframe, const QString& line) {
    const std::optional<double> exact = exactTimeIn(line);
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

/// Moves all so that the first comes to the time.
void moveTo(const std::vector<Line>& lines, Time at) {
    const auto first = std::min_element(lines.begin(), lines.end(), isEarlier);
    if (first == lines.end())
        return;
    const double shift = at.toDouble() - timeOf(*first).toDouble();
    for (const Line& line : lines) {
        const Time target = timeOf(line) + shift;
        if (!target.isValid())
            throw std::runtime_error("A keyframe would come after the last time");
        detail::shiftTo(*line.keyframe, target);
    }
}

/// The keyframes of a text as they shall be, in order of time.
std::vector<Line> pasted(const ParameterWithoutType& parameter, const QString& text, Time at, const View& view) {
    std::vector<Line> lines = parsed(parameter, text, view);
    if (at.isValid())
        moveTo(lines, at);
    std::stable_sort(lines.begin(), lines.end(), isEarlier);
    return lines;
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
        text += keyframe->toExactString() + QLatin1Char('\n');
    return text;
}

QStringList ParameterPasteKeyframesEdit::losses() const {
    QStringList losses;
    if (!parameter())
        return losses;
    const std::vector<Line> lines = pasted(*parameter(), m_text, m_at, m_view);
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
    for (Line& line : pasted(*parameter(), m_text, m_at, m_view))
        m_wanted.push_back(std::move(line.keyframe));
    return !m_wanted.empty();
}

void ParameterPasteKeyframesEdit::apply() {
    const detail::SerialisedKeyframes keyframes = std::exchange(m_wanted, {});
    detail::importAll(*parameter(), keyframes);
}

detail::Places ParameterPasteKeyframesEdit::places() const {
    detail::Places places;
    for (const auto& keyframe : m_wanted)
        places.push_back(detail::Place::at(keyframe->context()));
    return places;
}

} // namespace Prm
