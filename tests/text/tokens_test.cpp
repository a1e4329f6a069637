#include "prm/detail/TextTokens.h"

#include <gtest/gtest.h>

#include <random>

using namespace Prm;
using namespace Prm::detail;

namespace {

struct TokensCase {
    const char* name;
    QString text;
    /// Each token in brackets.
    const char* tokens;
};

class Tokens : public testing::TestWithParam<TokensCase> {};

TEST_P(Tokens, AreCutOff) {
    QString tokens;
    int pos = 0;
    for (QString token = getToken(GetParam().text, pos); !token.isNull(); token = getToken(GetParam().text, pos))
        tokens += "[" + token + "]";
    EXPECT_EQ(tokens.toStdString(), GetParam().tokens);
    EXPECT_EQ(pos, GetParam().text.size());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Tokens,
    testing::Values(TokensCase{"Quoted", "1, \"a, b\", c", "[1][a, b][c]"}, TokensCase{"Blanks", "   ", ""},
                    TokensCase{"EmptyQuotes", "\"\"", "[]"}, TokensCase{"NoBlankBehind", "\"a\",b", "[a\",b]"},
                    TokensCase{"EscapedQuote", "a\\\"b", "[a\"\\b]"}, TokensCase{"QuoteInside", "ab\"c", "[ab\"c]"},
                    TokensCase{"LastButOne", "\"a\" ", "[a\" ]"}, TokensCase{"BlanksInside", "a b , c", "[a b ][c]"},
                    TokensCase{"Nested", "\"a \"b\" c\", d", "[a \"b\" c][d]"}, TokensCase{"Backslash", "a\\", "[a\\]"},
                    TokensCase{"OtherSpace", QString(QChar(0x2003)) + QChar(0x85) + "a", "[a]"},
                    TokensCase{"OtherControl", QString(QChar(0x1F)) + "a",
                               "[\x1F"
                               "a]"}),
    [](const auto& row) { return row.param.name; });

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

struct KeyCase {
    const char* name;
    const char* declaration;
    /// Time, value, kind and numbers; empty when refused.
    const char* parts;
};

class KeyDeclaration : public testing::TestWithParam<KeyCase> {};

TEST_P(KeyDeclaration, IsSplit) {
    const QString declaration = GetParam().declaration;
    QStringView time, value;
    QString parts;
    IType type(Interpolation::Linear);
    if (parseKeyframeDeclaration(declaration, time, value, type))
        parts = time.toString() + "|" + value.toString() + "|" + qstrInterpolationTypeString(type.interpolation);
    if (type.interpolation == Interpolation::Bezier && !parts.isEmpty())
        parts += QString(" %1 %2 %3 %4").arg(type.x1).arg(type.y1).arg(type.x2).arg(type.y2);
    EXPECT_EQ(parts.toStdString(), GetParam().parts);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, KeyDeclaration,
    testing::Values(KeyCase{"Plain", "keyframes.append( Key( 10, 1, Linear ) ) \t ", "10|1|Linear"},
                    KeyCase{"LowerCase", "keyframes.append( Key( 10, 1, linear ) )", ""},
                    KeyCase{"OneBracket", "keyframes.append( Key( 10, 1, Linear )", ""},
                    KeyCase{"NoKey", "keyframes.append( 10, 1, Linear ) )", ""},
                    KeyCase{"Bezier", "keyframes.append( BezierKey( 5, 0, 1, 2, 3, 4 ) )", "5|0|Bezier 1 2 3 4"},
                    KeyCase{"ThreeNumbers", "BezierKey( 5, 0, 1, 2, 3 ) )", ""},
                    KeyCase{"NoNumbers", "BezierKey( 5, 0, a, 2, \"x\", 4 ) )", "5|0|Bezier 0 2 0 4"},
                    KeyCase{"MissingNumber", "BezierKey( 5, 0, 1, 2, , 4 ) )", ""},
                    KeyCase{"CommaFirst", "BezierKey(, 1, 2, 3, 4 ) )", ""},
                    KeyCase{"NoTime", "Key( , 1, Linear ) )", "|1|Linear"},
                    KeyCase{"OneComma", "Key( 10, Linear ) )", "10||Linear"}, KeyCase{"NoComma", "Key( 10 ) )", ""},
                    KeyCase{"Nothing", "Key() )", ""},
                    KeyCase{"ValueTakesAll", "Key( 1 , \"a, Key( \"b\" ) )\", Custom0 ) )",
                            "1 |\"a, Key( \"b\" ) )\"|Custom0"},
                    KeyCase{"BezierInValue", "Key( 1, BezierKey( 2, Linear ) )", "1|BezierKey( 2|Linear"},
                    KeyCase{"SecondBezier", "BezierKey BezierKey( 1, 2, 3, 4, 5, 6 ) )", ""}),
    [](const auto& row) { return row.param.name; });

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
