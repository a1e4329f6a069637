// Tokens, and values in streams. Lines are the matter of tests/data/project.session, numbers and escapes that of
// fuzz/keyframe_line_fuzz.cpp.

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

TEST(KeyDeclaration, IsSplit) {
    QString time;
    QString value;
    IType shape;
    EXPECT_FALSE(parseKeyframeDeclaration(QString("Key( 10 ) )"), time, value, shape));
    EXPECT_TRUE(parseKeyframeDeclaration(QString("Key( 1 , \"a\", Custom9 ) )"), time, value, shape));
    EXPECT_EQ(time + value, "1 \"a\"");
    EXPECT_EQ(shape, IType(static_cast<Interpolation>(13)));
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
    EXPECT_EQ(written(Byte(200)) + " " + written(Frame::fromUInt(255)), "200 255");
    EXPECT_EQ(written(QPoint(3, 4)) + " " + written(QPoint(-10, -2)), "34 -10-2");
    EXPECT_EQ(written(QPointF(1.5, -2)) + " " + written(QPointF(0.1, 1234567.25)), "1.5-2 0.11234567.25");
    EXPECT_TRUE(read<bool>("2") && read<bool>("-1"));
    EXPECT_FALSE(read<bool>("0") || read<bool>("x"));
    EXPECT_EQ(read<Byte>("300"), 44);
    EXPECT_EQ(read<Frame>("2147483647").toUInt(), 2147483647u);
    EXPECT_EQ(read<QPoint>(" 10 -4"), QPoint(10, -4));
    EXPECT_EQ(read<QPointF>("1.5 -2e3"), QPointF(1.5, -2000));
    // They reach values that have no text of their own.
    QString text;
    GeneralValueType<Byte>::write(text, 200);
    EXPECT_EQ(GeneralValueType<Byte>::read(text), 200);
}

} // namespace
