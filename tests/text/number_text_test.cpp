#include "prm/detail/NumberText.h"

#include <QLocale>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

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

} // namespace
