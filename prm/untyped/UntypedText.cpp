// The two lines that a parameter without keyframes has in project text, which every animatable parameter has as well.

#include "prm/ParameterWithoutTypeBase.h"
#include "prm/text/LineNotes.h"
#include "prm/text/LineParts.h"
#include "prm/text/PlainNumbers.h"
#include "prm/untyped/ReadingScope.h"

namespace Prm {

void ParameterWithoutType::writeHidden(QString& text, const QString& start) const {
    if (m_hidden)
        detail::addLine(text, start, ParameterStrings::hidden, QStringLiteral("1"));
}

void ParameterWithoutType::writeMaster(QString& text, const QString& start) const {
    if (const ParameterWithoutType* master = masterParameter())
        detail::addLine(text, start, ParameterStrings::masterParameterId, master->extendedName());
}

bool ParameterWithoutType::readHidden(const QString& line) {
    if (!detail::hasKey(line, ParameterStrings::hidden))
        return false;
    const QString text = detail::textBetween(line);
    bool isNumber = false;
    const int flag = text.toInt(&isNumber);
    if (!isNumber)
        detail::LineNotes::addLoss("hidden", text, "is not a whole number");
    hide(flag != 0);
    return true;
}

bool ParameterWithoutType::readMaster(const QString& line) {
    if (!detail::hasKey(line, ParameterStrings::masterParameterId))
        return false;
    setPendingMasterParameterId(detail::textBetween(line));
    return true;
}

bool ParameterWithoutTypeBase::bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const {
    const QString start = detail::lineStart(prefix, scriptName(), withName);
    QString text;
    writeHidden(text, start);
    writeMaster(text, start);
    const detail::PlainNumbers plain(stream);
    stream << text << Qt::flush;
    return true;
}

bool ParameterWithoutTypeBase::streamInValue(const QString& line, const ProjectFileVersion&, TextConversion) {
    const ReadingScope reading(*this);
    return readHidden(line) || readMaster(line);
}

} // namespace Prm
