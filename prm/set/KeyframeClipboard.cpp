// Writes and reads the text of copied keyframes. What of it goes where is in KeyframePasting.cpp.

#include "prm/KeyframeClipboard.h"

#include "prm/ParameterSet.h"
#include "prm/ParameterStrings.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/edits/KeyframeMoves.h"
#include "prm/set/CopiedKeyframes.h"
#include "prm/text/KeyframeText.h"
#include "prm/text/LineParts.h"
#include "prm/text/TextTokens.h"
#include "prm/untyped/UntypedAnswers.h"

#include <QHash>

#include <cmath>
#include <stdexcept>
#include <utility>

namespace Prm {

namespace {

const QLatin1String title("Prm keyframes ");
const QLatin1String currentVersion("1");
const QLatin1String parameterKey("parameter \"");
const QLatin1String viewKey("view ");

/// Owners by the path that they have below a set.
QHash<const ParameterWithoutType*, QString> pathsBelow(const ParameterSet& root) {
    QHash<const ParameterWithoutType*, QString> paths;
    for (const detail::PasteTarget& target : detail::pasteTargets(root)) {
        if (!paths.contains(target.parameter))
            paths.insert(target.parameter, target.path);
    }
    return paths;
}

void addSettings(QString& text, const ParameterWithoutType& parameter, QString path) {
    text += parameterKey + detail::escapeString(path) + QLatin1String("\" ") + detail::valueKindOf(parameter) +
            QLatin1Char('\n');
    detail::addLine(text, {}, ParameterStrings::before, detail::exactName(parameter.extrapolationBefore()));
    detail::addLine(text, {}, ParameterStrings::after, detail::exactName(parameter.extrapolationAfter()));
}

/// The view's lines name no view, so that no line is one of project text.
void addView(QString& text, const KeyframeSelection::OfView& selected) {
    const ParameterWithoutType& parameter = *selected.parameter;
    const auto* const answers = detail::UntypedAnswers::of(parameter);
    const bool isStatic = parameter.keyframeCount(selected.view) == 0 && answers;
    text += viewKey + QString::number(selected.view.id()) + QLatin1Char('\n');
    if (isStatic)
        detail::addLine(text, {}, ParameterStrings::value, answers->staticText(parameter, selected.view));
    for (const auto& keyframe : detail::serialised(parameter, selected.view, selected.times)) {
        QString line = keyframe->toExactString();
        View named;
        View::extractStringPrefix(line, named);
        text += line + QLatin1Char('\n');
    }
}

} // namespace

/// One handler a key. Lines of a parameter follow its own.
class KeyframeClipboard::Reader {
public:
    explicit Reader(const QString& text) {
        const QStringView all(text);
        for (qsizetype start = 0; start < all.size();) {
            const auto feed = all.indexOf(QLatin1Char('\n'), start);
            const auto end = feed < 0 ? all.size() : feed;
            ++m_number;
            read(all.mid(start, end - start).trimmed());
            start = end + 1;
        }
        if (m_number == 0)
            read({});
    }

    Contents take() { return std::move(m_contents); }

private:
    void read(QStringView line) {
        if (m_number <= 1)
            readTitle(line);
        else if (line.startsWith(parameterKey))
            readParameter(line.mid(parameterKey.size()));
        else if (!line.isEmpty() && (m_contents.parameters.empty() || !readOfParameter(line)))
            refuse(line, "is no line of copied keyframes");
    }
    static void readTitle(QStringView line) {
        if (!line.startsWith(title))
            throw std::runtime_error("The text holds no copied keyframes: it does not begin with 'Prm keyframes 1'");
        if (line.mid(title.size()) != currentVersion)
            throw std::runtime_error("The text has keyframes of a version that is not known: '" +
                                     line.left(60).toString().toStdString() + "'");
    }
    void readParameter(QStringView rest) {
        const auto quote = rest.indexOf(QLatin1Char('"'));
        if (quote < 0)
            refuse(rest, "has no quote after the path");
        QString path = rest.left(quote).toString();
        m_contents.parameters.emplace_back();
        m_contents.parameters.back().path = detail::unescapeString(path);
        m_contents.parameters.back().kind = rest.mid(quote + 1).trimmed().toString();
    }
    bool readOfParameter(QStringView line) {
        auto& parameter = m_contents.parameters.back();
        if (line.startsWith(viewKey))
            return readView(line.mid(viewKey.size()), parameter);
        if (detail::hasKey(line, ParameterStrings::before))
            return bStringToExtrapolationType(detail::textBetween(line.toString()), parameter.before);
        if (detail::hasKey(line, ParameterStrings::after))
            return bStringToExtrapolationType(detail::textBetween(line.toString()), parameter.after);
        if (parameter.views.empty())
            return false;
        if (detail::hasKey(line, ParameterStrings::keyframes)) {
            parameter.views.back().keyframes.append(line.toString());
            readTime(line);
            return true;
        }
        if (detail::hasKey(line, ParameterStrings::value)) {
            parameter.views.back().staticText = detail::textAfter(line.toString());
            return true;
        }
        return false;
    }
    static bool readView(QStringView number, detail::CopiedParameter& parameter) {
        bool isNumber = false;
        const View view(number.toString().toUInt(&isNumber));
        if (isNumber && view.isValid())
            parameter.views.push_back({view, {}, {}});
        return isNumber && view.isValid();
    }
    /// Also takes the line apart, so that none is refused once editing has begun.
    void readTime(QStringView line) {
        IType itype;
        try {
            detail::readKeyframe(line, itype);
        } catch (const detail::MalformedKeyframe&) {
            refuse(line, "is no keyframe");
        }
        const Time time = Time::fromDouble(detail::exactTimeIn(line).value_or(Time::INVALID_TIME_VALUE));
        if (!detail::mayBePasted(time))
            refuse(line, "has no valid time");
        const bool isFirst = !m_contents.first.isValid();
        m_contents.first = isFirst ? time : std::min(m_contents.first, time);
        m_contents.last = isFirst ? time : std::max(m_contents.last, time);
    }
    [[noreturn]] void refuse(QStringView line, const char* problem) const {
        throw std::runtime_error(QStringLiteral("Line %1: '%2' %3")
                                     .arg(QString::number(m_number), line.left(60).toString(), QLatin1String(problem))
                                     .toStdString());
    }

    int m_number = 0;
    Contents m_contents;
};

QString KeyframeClipboard::textOf(const KeyframeSelection& selection, const ParameterSet& root) {
    const auto paths = pathsBelow(root);
    QHash<const ParameterWithoutType*, std::vector<const KeyframeSelection::OfView*>> views;
    std::vector<const ParameterWithoutType*> order;
    for (const KeyframeSelection::OfView& one : selection.views()) {
        if (!one.parameter || (one.times.empty() && one.parameter->keyframeCount(one.view) > 0))
            continue;
        auto& ofParameter = views[one.parameter];
        if (ofParameter.empty())
            order.push_back(one.parameter);
        ofParameter.push_back(&one);
    }
    QString text = title + currentVersion + QLatin1Char('\n');
    for (const ParameterWithoutType* const parameter : order) {
        addSettings(text, *parameter, paths.value(parameter, parameter->scriptName()));
        for (const KeyframeSelection::OfView* const view : views.value(parameter))
            addView(text, *view);
    }
    return text;
}

bool KeyframeClipboard::isClipboardText(const QString& text) {
    return text.startsWith(title);
}

KeyframeClipboard::KeyframeClipboard(const QString& text)
    : m_contents(std::make_shared<const Contents>(Reader(text).take())) {}

} // namespace Prm
