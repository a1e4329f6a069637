// Edits that add and remove members: places, ownership, names, trees, connections.

#include "tests/support/Test.h"

using namespace Prm;

namespace {

/// Three parameters, three subsets and one that does not animate.
struct Stage {
    Stage() {
        for (const char* const name : {"a", "b", "c"}) {
            set->addParameter(boost::make_shared<Number>(name));
            set->addParameterSet(boost::make_shared<ParameterSet>(name));
        }
        set->adoptBasicParameter(std::make_unique<OwnedStaticParameter<unsigned int>>("still"));
        b = set->parameterWTWithName("b");
        sub = set->subsetWithName("b");
    }
    std::string members() const {
        QString all;
        for (const auto& member : set->members())
            all += (member.set ? '[' + member.set->scriptName() + ']' : member.parameter->scriptName()) + ' ';
        return (all + detail::verify(*set)).toStdString();
    }
    void remove() {
        edit = std::make_unique<ParameterSetRemoveEdit>(*set, *b);
        edit->doIt();
    }
    void removeSub() {
        edit = std::make_unique<ParameterSetRemoveEdit>(*set, *sub);
        edit->doIt();
    }
    void add(int position = -1) {
        const auto added = boost::make_shared<Number>("new");
        b = added.get();
        edit = std::make_unique<ParameterSetAddEdit>(*set, added, position);
        edit->doIt();
    }

    boost::shared_ptr<ParameterSet> set = boost::make_shared<ParameterSet>("set");
    QPointer<ParameterWithoutType> b;
    ParameterSet* sub;
    std::unique_ptr<ParameterSetEdit> edit;
};

const char* const allMembers = "a b c still [a] [b] [c] ";

TEST(SetEdits, PutMembersBackAndOwnThemMeanwhile) {
    struct Row {
        const char* name;
        void (*act)(Stage& s);
        /// Whether the parameter is alive then.
        bool isAlive;
        const char* members;
    };
    const Row rows[] = {
        {"removed", [](Stage& s) { s.remove(); }, true, "a c still [a] [b] [c] "},
        {"and put back", [](Stage& s) { s.remove(), s.edit->undoIt(); }, true, allMembers},
        {"removed again", [](Stage& s) { s.remove(), s.edit->undoIt(), s.edit->doIt(); }, true,
         "a c still [a] [b] [c] "},
        {"destroyed done", [](Stage& s) { s.remove(), s.edit.reset(); }, false, "a c still [a] [b] [c] "},
        {"destroyed undone", [](Stage& s) { s.remove(), s.edit->undoIt(), s.edit.reset(); }, true, allMembers},
        {"of a set that was assigned to", [](Stage& s) { s.remove(), *s.set = ParameterSet(), s.edit->undoIt(); }, true,
         "b "},
        {"added", [](Stage& s) { s.add(1); }, true, "a new b c still [a] [b] [c] "},
        {"added, undone", [](Stage& s) { s.add(1), s.edit->undoIt(); }, true, allMembers},
        {"added, undone, destroyed", [](Stage& s) { s.add(), s.edit->undoIt(), s.edit.reset(); }, false, allMembers},
        {"added, destroyed", [](Stage& s) { s.add(), s.edit.reset(); }, true, "a b c new still [a] [b] [c] "},
        {"added to a set that was cleared", [](Stage& s) { s.add(), s.set->clearAllLists(), s.edit->undoIt(); }, false,
         ""},
        {"put back meanwhile",
         [](Stage& s) {
             s.remove();
             s.set->addParameter(*s.b);
             s.edit->undoIt();
         },
         true, "a c b still [a] [b] [c] "},
        {"others removed meanwhile",
         [](Stage& s) {
             s.remove();
             s.set->clearAllLists();
             s.edit->undoIt();
         },
         true, "b "},
        {"not a member",
         [](Stage& s) {
             s.remove();
             ParameterSetRemoveEdit again(*s.set, *s.b);
             again.doIt();
             again.undoIt();
         },
         true, "a c still [a] [b] [c] "},
        {"a member already",
         [](Stage& s) {
             ParameterSetAddEdit again(*s.set, *s.b);
             again.doIt();
             again.undoIt();
         },
         true, allMembers},
        {"subset", [](Stage& s) { s.removeSub(); }, true, "a b c still [a] [c] "},
        {"subset put back", [](Stage& s) { s.removeSub(), s.edit->undoIt(); }, true, allMembers},
        {"subset whose name was taken",
         [](Stage& s) {
             s.removeSub();
             s.set->addParameterSet(boost::make_shared<ParameterSet>("b"));
             s.edit->undoIt();
         },
         true, "a b c still [a] [b_2] [c] [b] "},
        {"subset whose name is its own again",
         [](Stage& s) {
             s.removeSub();
             s.set->addParameterSet(boost::make_shared<ParameterSet>("b"));
             s.edit->undoIt();
             s.edit->doIt();
             s.set->addParameterSet(boost::make_shared<ParameterSet>(s.sub->scriptName() + "!"));
         },
         true, "a b c still [a] [c] [b] [b!] "},
        {"set that came below its subset",
         [](Stage& s) {
             s.removeSub();
             s.sub->addParameterSet(*s.set);
             s.edit->undoIt();
         },
         true, "a b c still [a] [c] "},
        {"one that does not animate",
         [](Stage& s) {
             s.edit = std::make_unique<ParameterSetRemoveEdit>(*s.set, *s.set->parameterWithName("still"));
             s.edit->doIt();
             s.edit->undoIt();
             s.edit.reset();
         },
         true, allMembers},
    };
    const Warnings quiet;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Stage stage;
        row.act(stage);
        EXPECT_EQ(stage.members(), row.members);
        EXPECT_EQ(!stage.b.isNull(), row.isAlive);
    }
}

TEST(SetEdits, DoNothingWhereTheSetOrTheMemberHasDied) {
    Stage stage;
    stage.remove();
    stage.set = boost::make_shared<ParameterSet>();
    stage.edit->undoIt();
    EXPECT_FALSE(stage.b.isNull());
    stage.edit.reset();
    EXPECT_TRUE(stage.b.isNull());
    auto number = std::make_unique<Number>("number");
    auto subset = std::make_unique<ParameterSet>("subset");
    ParameterSetAddEdit one(*stage.set, *number), two(*stage.set, *subset);
    one.doIt();
    two.doIt();
    number.reset();
    subset.reset();
    for (ParameterSetEdit* const edit : {&one, &two}) {
        edit->undoIt();
        edit->doIt();
    }
    EXPECT_EQ(stage.members(), "");
    EXPECT_EQ(one.usageLogInfo() + two.usageLogInfo(), "number (deleted)subset (deleted)");
    EXPECT_THROW(ParameterSetAddEdit(*stage.set, boost::shared_ptr<Number>()), std::invalid_argument);
}

TEST(SetEdits, KeepConnectionsOrCallTheHost) {
    for (const bool isObserved : {false, true}) {
        Stage stage;
        ChangeRecorder recorder(stage.b);
        ParameterSetRemoveEdit edit(*stage.set, *stage.b);
        if (isObserved)
            edit.observeWith(
                [&](const auto&) { stage.b->attachObserver(&recorder, SLOT(onChanged(Prm::ParameterChange&))); },
                [&](const auto&) { stage.b->detachAllObservers(); });
        const auto receives = [&] {
            stage.b->setVariantValue(stage.b->variantValue(at(1)).toDouble() + 1, at(1));
            return !recorder.take().empty();
        };
        edit.doIt();
        EXPECT_EQ(receives(), !isObserved);
        edit.undoIt();
        EXPECT_TRUE(receives());
    }
}

} // namespace
