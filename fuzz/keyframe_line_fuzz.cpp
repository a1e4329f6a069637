// Keyframe lines, declarations, tokens, lists of views and single values: what was read and written reads back alike.

#include "fuzz/Fuzz.h"
#include "prm/Parameter.h"
#include "prm/SerialisedKeyframe.h"
#include "prm/text/LineNotes.h"
#include "prm/text/TextTokens.h"

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
    double number = 0;
    std::memcpy(&number, data, std::min(size, sizeof number));
    const auto back = ValueType<double>::read(written(number));
    HOLD(back == number || number != number);
    return 0;
}
