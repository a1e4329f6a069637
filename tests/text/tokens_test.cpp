#include "prm/detail/TextTokens.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

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
        QStringView time, value;
        QString parts;
        IType type(Interpolation::Linear);
        if (parseKeyframeDeclaration(declaration, time, value, type))
            parts = time.toString() + "|" + value.toString() + "|" + qstrInterpolationTypeString(type.interpolation);
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

} // namespace
