#include "tests/support/Library.h"

#include <gtest/gtest.h>

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
TEST(SetSnapshot, BringsNamesAndTextsBackByImports) {
    Tree tree;
    const std::string before = tree.state();
    const auto snapshot = tree.root.exportState();
    tree.change();
    Bsc::importState(tree.root, snapshot);
    EXPECT_EQ(tree.state(), before);
    EXPECT_EQ(tree.deep.restored, 1);
}

TEST(SetSnapshot, MembersThatCameAndWent) {
    const std::tuple<const char*, void (*)(Tree&), bool> rows[] = {
        {"a new parameter", [](Tree& t) { t.root.addParameter(boost::make_shared<Number>("new")); }, false},
        {"a new subset", [](Tree& t) { t.below->addParameterSet(boost::make_shared<ParameterSet>("new")); }, false},
        {"one that has died", [](Tree& t) { t.dying.reset(); }, true},
        {"a removed subset", [](Tree& t) { t.below->removeParameterSet(t.bottom); }, true},
    };
    for (const auto& [name, act, works] : rows) {
        SCOPED_TRACE(name);
        Tree tree;
        const auto snapshot = tree.root.exportState();
        tree.change();
        act(tree);
        EXPECT_EQ(errorOf([&] { tree.root.doImportState(snapshot); }), works ? "" : "Failed to restore object state");
        EXPECT_TRUE(!works || tree.text.value() == "old");
        EXPECT_EQ(tree.top.value(at(9)), 3) << "handled before";
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
        EXPECT_NO_THROW(root.doImportState(snapshot));
        if (replacesSet) {
            subset->~ParameterSet();
            root.addParameterSet(*(subset = new (setPlace) ParameterSet("same")));
        } else {
            parameter->~Number();
            root.addParameter(*(parameter = new (place) Number("same")));
        }
        EXPECT_THROW(root.doImportState(snapshot), std::logic_error);
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
