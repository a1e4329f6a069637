#include "tests/support/Library.h"

#include <gtest/gtest.h>

using namespace Prm;

namespace {

/// Counts restorations.
struct Counting : Number {
    explicit Counting(int& restored)
        : ParameterWithoutType(false, false, nullptr), Number("counting"), m_restored(restored) {}
    void doImportState(boost::shared_ptr<Bsc::MementoBase> snapshot) override {
        EXPECT_TRUE(isImporting());
        Number::doImportState(snapshot);
    }
    void postImportState() override {
        EXPECT_FALSE(isImporting());
        ++m_restored;
    }
    int& m_restored;
};

struct Tree {
    Tree() {
        root.addParameter(top);
        root.addParameter(*position);
        position->addParameter(part);
        root.addBasicParameter(text);
        root.addParameterSet(below);
        below->addParameterSet(bottom);
        bottom->addParameter(deep);
        key(*top, {{3, 3.}});
    }
    std::string state() { return root.displayName().toStdString() + lines(root); }
    void change() {
        root.setScriptName("other");
        root.setDisplayName("Other", "Anders");
        for (Number* number : {top.get(), part.get(), static_cast<Number*>(deep.get())})
            key(*number, {{9, 8.}});
        text.setValue("new");
    }
    int restored = 0;
    ParameterSet root{"root"};
    boost::shared_ptr<ParameterSet> below{new ParameterSet("below")};
    boost::shared_ptr<ParameterSet> bottom{new ParameterSet("bottom")};
    boost::shared_ptr<Number> top{new Number("top")};
    boost::shared_ptr<Number> part{new Number("part")};
    boost::shared_ptr<Counting> deep{new Counting(restored)};
    std::unique_ptr<CompoundParameter> position{new CompoundParameter("position")};
    OwnedStaticParameter<QString> text{"text", "old"};
};

TEST(SetSnapshot, BringsEverythingBelowBack) {
    Tree tree;
    const std::string before = tree.state();
    const auto snapshot = tree.root.exportState();
    for (int i = 1; i <= 2; ++i) {
        tree.change();
        EXPECT_NE(tree.state(), before);
        Bsc::importState(tree.root, snapshot);
        EXPECT_EQ(tree.state(), before);
        EXPECT_EQ(tree.restored, i);
    }
}

TEST(SetSnapshot, MembersThatCameAndWent) {
    const std::tuple<const char*, void (*)(Tree&), bool> rows[] = {
        {"a new parameter", [](Tree& t) { t.root.addParameter(boost::make_shared<Number>("new")); }, false},
        {"a new subset", [](Tree& t) { t.below->addParameterSet(boost::make_shared<ParameterSet>("new")); }, false},
        {"one that has died", [](Tree& t) { t.position.reset(); }, true},
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
        EXPECT_EQ(tree.top->value(at(9)), 3) << "handled before";
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
    EXPECT_THROW(tree.root.doImportState(tree.top->exportState()), std::bad_cast);
    EXPECT_THROW(tree.top->doImportState(tree.root.exportState()), std::bad_cast);
    EXPECT_EQ(tree.state(), before);
}

} // namespace
