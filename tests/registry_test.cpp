#include "host/product/Settings.h"
#include "prm/AnimationState.h"
#include "prm/Views.h"

#include <QVariant>
#include <gtest/gtest.h>

#include <limits>
#include <thread>

class Prm::IAnimationStateProvider {};

using namespace Prm;

namespace {

const QVector<QStringList> stereo{{"Left", "L"}, {"Right"}};

Views stereoViews() {
    Views views;
    views.setViewNames(stereo);
    return views;
}

} // namespace

TEST(Views, ANewRegistryIsMono) {
    const Views views;
    EXPECT_EQ(views.allViews(), std::vector<View>{View(0)});
    EXPECT_EQ(views.viewName(View(0)), "Mono");
    EXPECT_EQ(views.viewNameShort(View(0)), "M");
    EXPECT_EQ(views.currentView(), View(0));
    EXPECT_EQ(views.heroView(), View(0));
}

TEST(Views, NamesAreLookedUpExactly) {
    const Views views = stereoViews();
    EXPECT_EQ(views.lookupView(QString("Right")), View(1));
    EXPECT_EQ(views.lookupView(QString("right")), View(0));
    EXPECT_EQ(views.viewNameShort(View(1)), "");
    EXPECT_EQ(views.viewName(View(7)), "");
    EXPECT_EQ(views.viewName(View::INVALID()), "Left");
    EXPECT_EQ(views.viewName(View(0x80000000u)), "Left");
    EXPECT_EQ(views.viewIndex(View(9)), std::numeric_limits<std::size_t>::max());
    EXPECT_EQ(views.lookupView(9ul), View(0));
}

TEST(Views, AnEmptyRegistryIsLegal) {
    Views views;
    views.setViewNames({});
    EXPECT_EQ(views.viewNames(View::INVALID()), Views::s_emptyName);
    EXPECT_EQ(views.lookupView(0ul), View(0));
    EXPECT_EQ(views.lookupView(QString()), View(0));
    EXPECT_EQ(views.currentView(), View::INVALID());
    EXPECT_EQ(views.heroView(), View::INVALID());
}

TEST(Views, TheHeroViewIsHeldToTheLastView) {
    Views views = stereoViews();
    views.setHeroView(View(5));
    EXPECT_EQ(views.heroView(), View(1));
    views.setHeroView(View::INVALID());
    EXPECT_EQ(views.heroView(), View::INVALID());
    views.setHeroView(View(1));
    Views assigned;
    assigned = views;
    EXPECT_EQ(assigned.heroView(), View(0));
    EXPECT_EQ(Views(views).heroView(), View(1));
    EXPECT_TRUE(assigned == views);
}

TEST(Views, AreComparedAndAssignedWithAllButTheHeroView) {
    const IAnimationStateProvider provider;
    const Views plain = stereoViews();
    Views renamed = plain;
    renamed.setViewNames({{"Left", "L"}, {"right"}});
    Views elsewhere = plain;
    elsewhere.setCurrentView(View(1));
    Views provided(&provider);
    provided.setViewNames(stereo);
    for (const Views* other : {&renamed, &elsewhere, &provided}) {
        EXPECT_FALSE(*other == plain);
        Views assigned;
        assigned = *other;
        EXPECT_TRUE(assigned == *other);
    }
}

TEST(Views, FlagsChooseAllOrCurrent) {
    Views views = stereoViews();
    views.setCurrentView(View(1));
    views.setCurrentView(views.currentView());
    EXPECT_EQ(views.views(AnimationFlags()), std::vector<View>{View(1)});
    std::vector<View> all;
    EXPECT_EQ(views.allViews(all), 2u);
    EXPECT_EQ(all, views.allViews());
    EXPECT_EQ(AnimationState(AnimationFlags(4), &views).views(), (std::vector<View>{View(0), View(1)}));
}

TEST(Views, RegistriesMayBeAssignedToEachOther) {
    Views a;
    Views b = stereoViews();
    const auto assign = [](Views& to, const Views& from) {
        for (int i = 0; i < 2000; ++i) {
            to = from;
            EXPECT_EQ(to.viewCount(), to.allViews().size());
        }
    };
    std::thread other([&] { assign(a, b); });
    assign(b, a);
    other.join();
}

TEST(Views, TheLimitIsReadOnce) {
    Product::Settings::replaceSource([](const QString& key, const QVariant& defaultValue, bool systemWide) {
        EXPECT_TRUE(key == "MaxViews" && defaultValue == 3 && systemWide);
        return QVariant(0);
    });
    EXPECT_EQ(Views::maxViews(), 1u);
    Product::Settings::replaceSource(nullptr);
    EXPECT_EQ(Views::maxViews(), 1u);
}
