// Keyframe lines, declarations, tokens, lists of views and single values: what was read and written reads back alike.

#include "fuzz/Fuzz.h"
#include "prm/Parameter.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/text/LineNotes.h"
#include "prm/text/NumberText.h"
#include "prm/text/TextTokens.h"

#include <cmath>
#include <cstring>

using namespace Prm;

namespace {

template <class T> QString written(const T& value) {
    QString text;
    ValueType<T>::write(text, value);
    return text;
}

template <class T> void readAs(const QString& text) {
    const QString once = written(ValueType<T>::read(text));
    Fuzz::same("a value reads back", once.toUtf8(), written(ValueType<T>::read(once)).toUtf8());
    const auto keyframe = Parameter<T>().getSerialisedKeyframe(Context(Context::INVALID_TIME));
    try {
        keyframe->setFromString(text);
    } catch (const std::runtime_error&) {
        return;
    }
    // Times are written with six digits, of what was read in single precision.
    keyframe->setFromString(keyframe->toString());
    const QString second = keyframe->toString();
    keyframe->setFromString(second);
    Fuzz::same("a keyframe reads back", second.toUtf8(), keyframe->toString().toUtf8());
}

/// Numbers are written and read as by Qt, to the bit.
void readNumber(const QString& text) {
    bool ours = false;
    bool theirs = false;
    const double number = detail::toDouble(text, &ours);
    const double qts = text.toDouble(&theirs);
    HOLD(ours == theirs && (std::memcmp(&number, &qts, sizeof number) == 0 || std::isnan(qts)));
    HOLD(detail::toFloat(text) == text.toFloat() || std::isnan(text.toFloat()));
}

void writeNumber(double number) {
    QString six;
    QString shortest;
    detail::addSixDigits(six, number);
    detail::addShortest(shortest, number);
    HOLD(six == QString::number(number, 'g', 6));
    HOLD(shortest == QString::number(number, 'g', QLocale::FloatingPointShortest));
    for (const QString& text : {six, shortest, QString::number(number, 'f', 3)})
        readNumber(text);
}

void readTokens(const QString& text) {
    for (int pos = 0; pos < text.size();) {
        const int before = pos;
        HOLD(detail::getToken(text, pos).size() <= text.size() + 1);
        HOLD(pos > before);
    }
    HOLD(detail::parseViewList(text).size() <= static_cast<std::size_t>(text.size()));
    QStringView time;
    QStringView value;
    IType shape;
    detail::parseKeyframeDeclaration(text, time, value, shape);
    QString escaped = text;
    detail::escapeString(escaped);
    HOLD(!escaped.contains('\n') && !escaped.contains('\r'));
    HOLD(detail::unescapeString(escaped) == text);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString text = Fuzz::textOf(Fuzz::bytesOf(data, size));
    readTokens(text);
    detail::LineNotes notes;
    bool isNumber = false;
    static_cast<void>(text.toDouble(&isNumber));
    static_cast<void>(ValueType<double>::read(text));
    HOLD(notes.losses.isEmpty() == isNumber);
    readAs<bool>(text);
    readAs<int>(text);
    readAs<unsigned int>(text);
    readAs<double>(text);
    readAs<QString>(text);
    readAs<QPointF>(text);
    readAs<QPoint>(text);
    for (const QString& piece : text.split('|'))
        readNumber(piece);
    for (std::size_t i = 0; i < size; i += sizeof(quint64)) {
        quint64 bits = 0;
        std::memcpy(&bits, data + i, std::min(size - i, sizeof bits));
        double any = 0;
        std::memcpy(&any, &bits, sizeof any);
        const double whole = static_cast<double>(static_cast<qint64>(bits) >> (bits % 60));
        for (const double number : {any, whole, whole / 1000, whole / 64, whole * 0.37, std::ldexp(whole, -70)})
            writeNumber(number);
        const auto back = ValueType<double>::read(written(any));
        HOLD(back == any || any != any);
    }
    for (const double number : {0., -0., HUGE_VAL, 5e-324, 999999.5, 99999.95, 0.00099999995})
        writeNumber(number);
    return 0;
}
