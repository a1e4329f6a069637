// The pieces of text: numbers, tokens, and values in streams.

#include "prm/TextStreamOperators.h"
#include "prm/ValueType.h"
#include "prm/text/NumberText.h"
#include "prm/text/TextTokens.h"

#include <QLocale>
#include <QTextStream>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <utility>

// As hosts do it: Qt's own operators must stay within reach.
using namespace Prm;
using namespace Prm::detail;

namespace {

void compare(double number) {
    QString six;
    QString shortest;
    addSixDigits(six, number);
    addShortest(shortest, number);
    ASSERT_EQ(six, QString::number(number, 'g', 6));
    ASSERT_EQ(shortest, QString::number(number, 'g', QLocale::FloatingPointShortest));
    for (const QString& text : {six, shortest, QString::number(number, 'f', 3)}) {
        const double ours = toDouble(text);
        const double theirs = text.toDouble();
        ASSERT_TRUE(std::memcmp(&ours, &theirs, sizeof ours) == 0) << text.toStdString();
        ASSERT_TRUE(toFloat(text) == text.toFloat() || std::isnan(number)) << text.toStdString();
    }
}

TEST(NumberText, IsQts) {
    std::mt19937_64 bits(5);
    for (int i = 0; i < 20000; ++i) {
        const quint64 random = bits();
        double any = 0;
        std::memcpy(&any, &random, sizeof any);
        const double whole = static_cast<double>(static_cast<qint64>(random) >> (i % 60));
        for (const double number : {any, whole, whole / 1000, whole / 64, whole * 0.37, std::ldexp(whole, -70)})
            compare(number);
    }
    for (const double number :
         {0., -0., double(NAN), -double(NAN), HUGE_VAL, -HUGE_VAL, 5e-324, 999999.5, 99999.95, 0.00099999995})
        compare(number);
}

TEST(NumberText, OtherTextsAreLeftToQt) {
    for (const char* const text :
         {"",      "-",   "5.",   ".5",  "+5",    " 5 ",     "1e",   "1e5",   "1E5", "1e-5", "--1",
          "1.5.2", "1,5", "0x10", "007", "1e400", "-1e-400", "1e39", "1e-46", "nan", "inf",  "5\u0661"}) {
        bool ours = false;
        bool theirs = false;
        const double number = toDouble(QString(text), &ours);
        const double qts = QString(text).toDouble(&theirs);
        EXPECT_TRUE(number == qts || std::isnan(qts)) << text;
        EXPECT_EQ(ours, theirs) << text;
        const float single = QString(text).toFloat();
        EXPECT_TRUE(toFloat(QString(text)) == single || std::isnan(single)) << text;
    }
}

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

TEST(Escape, AnythingComesBack) {
    std::mt19937 numbers(3);
    const QString alphabet = odd + "\\\\\\\"\"fnrtv\f\r\n\t\v x";
    for (int round = 0; round < 20000; ++round) {
        QString text;
        for (auto length = numbers() % 9; length > 0; --length)
            text += alphabet.at(static_cast<int>(numbers() % static_cast<unsigned>(alphabet.size())));
        QString copy = text;
        ASSERT_EQ(unescapeString(escapeString(copy)), text);
    }
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
