#include "host/product/Settings.h"
#include "tests/support/Test.h"

class Prm::IAnimationStateProvider {};

using namespace Prm;

namespace {

Views stereoViews(const IAnimationStateProvider* provider = nullptr) {
    Views views(provider);
    views.setViewNames({{"Left", "L"}, {"Right"}});
    return views;
}

TEST(Views, AreLookedUpByExactNamesAndIds) {
    EXPECT_EQ(Views().viewName(View(0)), "Mono");
    const Views views = stereoViews();
    EXPECT_EQ(views.lookupView(QString("Right")), View(1));
    EXPECT_EQ(views.lookupView(QString("right")), View(0));
    EXPECT_EQ(views.viewNameShort(View(1)), "");
    EXPECT_EQ(views.viewName(View(7)), "");
    EXPECT_EQ(views.viewName(View::INVALID()), "Left");
    EXPECT_EQ(views.viewName(View(0x80000000u)), "Left");
    EXPECT_EQ(views.viewIndex(View(9)), std::numeric_limits<std::size_t>::max());
    Views fewer = views;
    fewer.setViewNames({{"Left"}});
    EXPECT_EQ(fewer.lookupView(fewer.viewCount()), View(0));
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

TEST(Views, AreComparedAndAssignedWithAllButTheHeroView) {
    Views views = stereoViews();
    views.setHeroView(View(5));
    EXPECT_EQ(views.heroView(), View(1)) << "held to the last view";
    EXPECT_EQ(Views(views).heroView(), View(1));
    const IAnimationStateProvider provider;
    Views renamed = views;
    renamed.setViewNames({{"Left", "L"}, {"right"}});
    Views elsewhere = views;
    elsewhere.setCurrentView(View(1));
    const Views provided = stereoViews(&provider);
    for (const Views* other : std::initializer_list<const Views*>{&views, &renamed, &elsewhere, &provided}) {
        EXPECT_EQ(*other == views, other == &views);
        Views assigned;
        assigned = *other;
        EXPECT_TRUE(assigned == *other);
        EXPECT_EQ(assigned.heroView(), View(0));
    }
    views.setHeroView(View::INVALID());
    EXPECT_EQ(views.heroView(), View::INVALID());
}

TEST(Views, FlagsChooseAllOrCurrent) {
    Views views = stereoViews();
    views.setCurrentView(View(1));
    EXPECT_EQ(AnimationState(AnimationFlags(), &views).views(), std::vector<View>{View(1)});
    EXPECT_EQ(AnimationState(AnimationFlags(4), &views).views(), (std::vector<View>{View(0), View(1)}));
    EXPECT_EQ(AnimationState().views(), std::vector<View>{View(0)});
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

} // namespace
