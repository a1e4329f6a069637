#include "prm/ChangedSince.h"
#include "tests/support/Test.h"

using namespace Prm;

namespace {

/// Counts restorations.
struct Counting : Number {
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override {
        EXPECT_TRUE(isImporting());
        Number::doImportState(snapshot);
    }
    void postImportState() override {
        EXPECT_FALSE(isImporting());
        ++restored;
    }
    int restored = 0;
};

struct Tree {
    Tree() {
        root.addParameter(top);
        root.addParameter(*dying);
        root.addBasicParameter(text);
        root.addParameterSet(below);
        below->addParameterSet(bottom);
        bottom->addParameter(deep);
        key(top, {{3, 3.}});
    }
    std::string state() { return root.displayName().toStdString() + lines(root); }
    void change() {
        root.setScriptName("other");
        root.setDisplayName("Other", "Anders");
        key(top, {{9, 8.}});
        key(deep, {{9, 8.}});
        text.setValue("new");
    }
    Number top{"top"};
    Counting deep;
    OwnedStaticParameter<QString> text{"text", "old"};
    std::unique_ptr<Number> dying = std::make_unique<Number>("dying");
    ParameterSet root{"root"};
    boost::shared_ptr<ParameterSet> below{new ParameterSet("below")}, bottom{new ParameterSet("bottom")};
};

// Of what random acts have changed, in fuzz/undo_fuzz.cpp.
TEST(SetSnapshot, BringsNamesAndTextsBackByImportsThoughMembersHaveGone) {
    /// How often the deep parameter is restored; -1 where the set refuses the snapshot.
    const std::tuple<const char*, void (*)(Tree&), int> rows[] = {
        {"nothing", [](Tree&) {}, 1},
        {"a new parameter", [](Tree& t) { t.root.addParameter(boost::make_shared<Number>("new")); }, -1},
        {"a new subset", [](Tree& t) { t.below->addParameterSet(boost::make_shared<ParameterSet>("new")); }, -1},
        {"one that has died", [](Tree& t) { t.dying.reset(); }, 1},
        {"a removed subset", [](Tree& t) { t.below->removeParameterSet(t.bottom); }, 0},
    };
    for (const auto& [name, act, restored] : rows) {
        SCOPED_TRACE(name);
        Tree tree;
        const auto snapshot = tree.root.exportState();
        tree.change();
        act(tree);
        const std::string error = errorOf([&] { Bsc::importState(tree.root, snapshot); });
        EXPECT_EQ(error, restored < 0 ? "Failed to restore object state" : "");
        EXPECT_EQ(tree.top.value(at(9)), 3) << "handled before";
        if (restored >= 0) {
            EXPECT_EQ(tree.text.value() + tree.root.scriptName() + tree.root.displayName(), "oldrootroot");
            EXPECT_EQ(tree.deep.restored, restored);
        }
    }
}

TEST(SetSnapshot, ADeadMembersAddressIsNotItself) {
    ParameterSet root;
    alignas(Number) unsigned char place[sizeof(Number)];
    alignas(ParameterSet) unsigned char setPlace[sizeof(ParameterSet)];
    auto* parameter = new (place) Number("same");
    auto* subset = new (setPlace) ParameterSet("same");
    for (const bool replacesSet : {false, true}) {
        root.clearAllLists();
        root.addParameter(*parameter);
        root.addParameterSet(*subset);
        const auto snapshot = root.exportState();
        ChangedSince changes(root);
        EXPECT_NO_THROW(root.doImportState(snapshot));
        if (replacesSet) {
            subset->~ParameterSet();
            root.addParameterSet(*(subset = new (setPlace) ParameterSet("same")));
        } else {
            parameter->~Number();
            root.addParameter(*(parameter = new (place) Number("same")));
        }
        EXPECT_THROW(root.doImportState(snapshot), std::logic_error);
        const Extent extent = changes.take();
        EXPECT_TRUE(extent.came().size() == 1 && extent.went().size() == 1);
    }
    subset->~ParameterSet();
    parameter->~Number();
}

TEST(SetSnapshot, OtherKindsAndNullAreBadCasts) {
    Tree tree;
    const std::string before = tree.state();
    EXPECT_THROW(tree.root.doImportState(nullptr), std::bad_cast);
    EXPECT_THROW(tree.root.doImportState(tree.top.exportState()), std::bad_cast);
    EXPECT_THROW(tree.top.doImportState(tree.root.exportState()), std::bad_cast);
    EXPECT_EQ(tree.state(), before);
}

} // namespace
