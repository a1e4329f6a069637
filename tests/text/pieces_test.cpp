// The pieces of text: tokens, and values in streams. Numbers are the matter of fuzz/keyframe_line_fuzz.cpp.

#include "prm/TextStreamOperators.h"
#include "prm/text/TextTokens.h"
#include "tests/support/Library.h"

#include <QLocale>
#include <gtest/gtest.h>

// As hosts do it: Qt's own operators must stay within reach.
using namespace Prm;
using namespace Prm::detail;

namespace {

TEST(Tokens, AreCutOff) {
    // Each token in brackets.
    const std::pair<QString, const char*> rows[] = {
        {"1, \"a, b\", c", "[1][a, b][c]"},
        {"   ", ""},
        {"\"\"", "[]"},
        {"\"a\",b", "[a\",b]"},
        {"a\\\"b", "[a\"\\b]"},
        {"ab\"c", "[ab\"c]"},
        {"\"a\" ", "[a\" ]"},
        {"a b , c", "[a b ][c]"},
        {"\"a \"b\" c\", d", "[a \"b\" c][d]"},
        {"a\\", "[a\\]"},
        {QString(QChar(0x2003)) + QChar(0x85) + "a", "[a]"},
        {QString(QChar(0x1F)) + "a", "[\x1F"
                                     "a]"},
    };
    for (const auto& [text, expected] : rows) {
        QString tokens;
        int pos = 0;
        for (QString token = getToken(text, pos); !token.isNull(); token = getToken(text, pos))
            tokens += "[" + token + "]";
        EXPECT_EQ(tokens.toStdString(), expected);
        EXPECT_EQ(pos, text.size());
    }
}

/// A NUL, a bell, half a surrogate pair.
const QString odd = QString("a\a") + QChar(0) + QChar(0xD800) + QChar(0x20AC);

TEST(Escape, BothWays) {
    const QString plain = odd + "\f\"\\\r\n\t\v\\n";
    QString text = plain;
    EXPECT_EQ(escapeString(text), odd + R"(\f\"\\\r\n\t\v\\n)");
    EXPECT_EQ(unescapeString(text), plain);
    for (const QString noEscape : {"\\x", "\\", "a\\", "\\x\\"})
        EXPECT_EQ(unescapeString(text = noEscape), noEscape);
}

TEST(KeyDeclaration, IsSplit) {
    // Time, value, kind and numbers; empty when refused.
    const std::pair<QString, const char*> rows[] = {
        {"keyframes.append( Key( 10, 1, Linear ) ) \t ", "10|1|Linear"},
        {"keyframes.append( Key( 10, 1, linear ) )", ""},
        {"keyframes.append( Key( 10, 1, Linear )", ""},
        {"keyframes.append( 10, 1, Linear ) )", ""},
        {"keyframes.append( BezierKey( 5, 0, 1, 2, 3, 4 ) )", "5|0|Bezier 1 2 3 4"},
        {"BezierKey( 5, 0, 1, 2, 3 ) )", ""},
        {"BezierKey( 5, 0, a, 2, \"x\", 4 ) )", "5|0|Bezier 0 2 0 4"},
        {"BezierKey( 5, 0, 1, 2, , 4 ) )", ""},
        {"BezierKey(, 1, 2, 3, 4 ) )", ""},
        {"Key( , 1, Linear ) )", "|1|Linear"},
        {"Key( 10, Linear ) )", "10||Linear"},
        {"Key( 10 ) )", ""},
        {"Key() )", ""},
        {"Key( 1 , \"a, Key( \"b\" ) )\", Custom0 ) )", "1 |\"a, Key( \"b\" ) )\"|Custom0"},
        {"Key( 1, BezierKey( 2, Linear ) )", "1|BezierKey( 2|Linear"},
        {"BezierKey BezierKey( 1, 2, 3, 4, 5, 6 ) )", ""},
    };
    for (const auto& [declaration, expected] : rows) {
        QString time, value;
        QString parts;
        IType type(Interpolation::Linear);
        if (parseKeyframeDeclaration(declaration, time, value, type))
            parts = time + "|" + value + "|" + qstrInterpolationTypeString(type.interpolation);
        if (type.interpolation == Interpolation::Bezier && !parts.isEmpty())
            parts += QString(" %1 %2 %3 %4").arg(type.x1).arg(type.y1).arg(type.x2).arg(type.y2);
        EXPECT_EQ(parts.toStdString(), expected) << declaration.toStdString();
    }
}

TEST(ViewList, HoldsWhatIsANumber) {
    const auto ids = [](const char* text) {
        std::string list;
        for (const View view : parseViewList(text))
            list += std::to_string(view.id()) + " ";
        return list;
    };
    EXPECT_EQ(ids("views=[0,2,,x,3]"), "0 2 3 ");
    EXPECT_EQ(ids("views=[ 1, 4294967295 ,-1, 4294967296]"), "1 4294967295 ");
    EXPECT_EQ(ids("views=]x[4, 5"), "4 5 ");
    EXPECT_EQ(ids("views=") + ids("views=[1") + ids("views=1]"), "");
}

/// A stream with everything set that could show in a number.
template <class Do> QString through(QString text, const Do& act) {
    QTextStream stream(&text);
    QLocale german(QLocale::German, QLocale::Germany);
    stream.setLocale(german);
    stream.setIntegerBase(16);
    stream.setRealNumberNotation(QTextStream::FixedNotation);
    stream.setRealNumberPrecision(1);
    stream.setNumberFlags(QTextStream::ForceSign | QTextStream::ShowBase);
    stream.setFieldWidth(9);
    act(stream);
    stream.flush();
    EXPECT_EQ(stream.locale(), german);
    EXPECT_EQ(stream.integerBase() + stream.realNumberPrecision() + stream.fieldWidth(), 26);
    EXPECT_EQ(stream.realNumberNotation(), QTextStream::FixedNotation);
    EXPECT_EQ(stream.numberFlags(), QTextStream::ForceSign | QTextStream::ShowBase);
    return text;
}

template <class T> std::string written(const T& value) {
    return through({}, [&](QTextStream& stream) { stream << value; }).toStdString();
}

template <class T> T read(const char* text) {
    T value{};
    through(QString::fromLatin1(text), [&](QTextStream& stream) { stream >> value; });
    return value;
}

TEST(TextStreamOperators, WriteAndReadWhateverTheStreamIsSetTo) {
    using Byte = unsigned char;
    EXPECT_EQ(written(true) + written(false), "10");
    EXPECT_EQ(written(Byte(200)), "200");
    EXPECT_EQ(written(QPoint(3, 4)) + " " + written(QPoint(-10, -2)), "34 -10-2");
    EXPECT_EQ(written(QPointF(1.5, -2)) + " " + written(QPointF(0.1, 1234567.25)), "1.5-2 0.11234567.25");
    EXPECT_TRUE(read<bool>("2") && read<bool>("-1"));
    EXPECT_FALSE(read<bool>("0") || read<bool>("x"));
    EXPECT_EQ(read<Byte>("300"), 44);
    EXPECT_EQ(read<QPoint>(" 10 -4"), QPoint(10, -4));
    EXPECT_EQ(read<QPointF>("1.5 -2e3"), QPointF(1.5, -2000));
    // They reach values that have no text of their own.
    QString text;
    GeneralValueType<Byte>::write(text, 200);
    EXPECT_EQ(GeneralValueType<Byte>::read(text), 200);
}

} // namespace
