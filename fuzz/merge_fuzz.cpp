// Two sides edit one project. What they edit apart is merged to both; where both edit one thing, ours stands and there
// is a conflict. Any bytes merge to a project text.

#include "fuzz/Fuzz.h"
#include "fuzz/Pieces.h"
#include "prm/ProjectMerge.h"
#include "prm/document/ProjectDiff.h"
#include "tool/Checks.h"

#include <QRegularExpression>

#include <array>
#include <functional>
#include <map>
#include <set>

using namespace Tool;

namespace {

// --- a project as it is meant

struct Key {
    int time = 0;
    int value = 0;
    QByteArray curve = "Linear";
};

struct Data {
    std::map<int, Key> keys;
    int value = 0;
};

struct Parameter {
    QByteArray group;
    std::map<int, Data> views;
    QByteArray before = "Linear";
    QByteArray after = "Constant";
    QByteArray master;
    bool isHidden = false;
};

struct Model {
    /// By the names in the base: what the groups are called in paths, and to people.
    std::map<QByteArray, QByteArray> groups;
    std::map<QByteArray, QByteArray> names;
    bool isNamedTwice = false;
    int secondOfWriting = 10;
    std::map<QByteArray, Parameter> parameters;
    std::map<QByteArray, QByteArray> remarks;

    QByteArray pathOf(const QByteArray& parameter) const {
        const int dot = parameter.indexOf('.');
        return groups.at(parameter.left(dot)) + parameter.mid(dot);
    }
};

QByteArray lineOf(const Key& key) {
    return "keyframes.append( Key( " + QByteArray::number(key.time) + ", " + QByteArray::number(key.value) + ", " +
           key.curve + " ) )\n";
}

QByteArray linesOf(const Parameter& parameter, const QByteArray& path) {
    QByteArray views;
    for (const auto& [view, data] : parameter.views)
        views += (views.isEmpty() ? "" : ", ") + QByteArray::number(view);
    QByteArray lines = path + "views=[" + views + "]\n";
    for (const auto& [view, data] : parameter.views) {
        const QByteArray prefix = view == 0 ? QByteArray() : "view[" + QByteArray::number(view) + "].";
        std::map<int, Key> inOrder;
        for (const auto& [id, key] : data.keys)
            inOrder[key.time] = key;
        for (const auto& [time, key] : inOrder)
            lines += path + prefix + lineOf(key);
    }
    for (const auto& [view, data] : parameter.views)
        lines += path + "view[" + QByteArray::number(view) + "].value=" + QByteArray::number(data.value) + '\n';
    if (parameter.isHidden)
        lines += path + "hidden=1\n";
    lines += path + "before=" + parameter.before + '\n' + path + "after=" + parameter.after + '\n';
    return lines;
}

QByteArray textOf(const Model& model) {
    QByteArray text = model.isNamedTwice ? "# before the header\n" : "";
    text += "FileVersion.value=3002\nProductName.value=\"p\"\nProductVersion.value=\"1.2\"\n"
            "FileTimestamp.value=\"2021-03-01T14:05:" +
            QByteArray::number(model.secondOfWriting) + "Z\"\n";
    for (const auto& [group, name] : model.names) {
        const QByteArray line = model.groups.at(group) + ".name=\"";
        text += model.isNamedTwice ? line + "earlier\"\n" : "";
        text += line + name + "\"\n";
    }
    for (const auto& [id, parameter] : model.parameters) {
        const QByteArray path = model.pathOf(id) + '.';
        text += linesOf(parameter, path);
        if (!parameter.master.isEmpty())
            text += path + "MasterParameterId=" + model.pathOf(parameter.master) + '\n';
    }
    for (const auto& [name, remark] : model.remarks)
        text += name + (remark.isEmpty() ? "" : "=" + remark) + '\n';
    return text;
}

Model baseOf(Worlds::Choices& choices) {
    Model model;
    int number = 0;
    model.isNamedTwice = choices.yes();
    for (const char* const group : {"g1", "g2", "g3"}) {
        model.groups[group] = group;
        model.names[group] = group;
        for (const char* const name : {".a", ".b", ".c"}) {
            Parameter& parameter = model.parameters[QByteArray(group) + name];
            for (int view = 0; view <= choices.below(3); ++view) {
                Data& data = parameter.views[view];
                data.value = ++number;
                for (int i = 0, count = choices.below(6); i < count; ++i) {
                    ++number;
                    data.keys[number] = {2 * i, number, choices.yes() ? "Constant" : "Linear"};
                }
            }
        }
    }
    model.parameters["g3.c"].master = "g1.a";
    model.remarks = {{"g1.colour", "red"}, {"# a remark", ""}, {"weight", "1"}};
    return model;
}

// --- edits

struct Edit {
    /// What it is about; an edit of a thing is also one of all that it holds, which is named after it and a "/".
    QByteArray target;
    QByteArray result;
    std::function<void(Model&)> apply;
};

bool areRelated(const QByteArray& a, const QByteArray& b) {
    return (a + '/').startsWith(b + '/') || (b + '/').startsWith(a + '/');
}

/// The edits of one side, none of which touches what another one does.
class Edits {
public:
    Edits(const Model& base, const char* side, int number) : m_base(base), m_side(side), m_number(number) {}

    void add(Worlds::Choices& choices) {
        const int what = choices.below(13);
        const QByteArray group = "g" + QByteArray::number(1 + choices.below(3));
        const QByteArray id = group + '.' + static_cast<char>('a' + choices.below(3));
        const auto setting = [&](const QByteArray& name, const QByteArray& to, auto member) {
            if (m_base.parameters.at(id).*member != to)
                note({id + '/' + name, to, [=](Model& model) { model.parameters.at(id).*member = to; }});
        };
        if (what < 5)
            return addToData(what, id, choices);
        if (what == 5)
            setting("before", choices.yes() ? "Constant" : "Custom2", &Parameter::before);
        else if (what == 6)
            setting("master", std::array{"g2.b", "g1.b", "g1.a"}[choices.below(3)], &Parameter::master);
        else if (what == 7)
            note({id + "/hidden", "1", [=](Model& model) { model.parameters.at(id).isHidden = true; }});
        else if (what == 8)
            note({id, "", [=](Model& model) { model.parameters.erase(id); }});
        else if (what == 9)
            addParameter(group + ".n" + QByteArray::number(choices.below(3)));
        else if (what == 10)
            renameGroup(group, choices.yes() ? group + "_new" : group + m_side);
        else if (what == 11 && choices.yes())
            note({"name/" + group, "", [=](Model& model) { model.names.erase(group); }});
        else if (what == 11)
            change(&Model::names, "name/" + group, group, "N" + next());
        else
            change(&Model::remarks, "remark/weight", "weight", choices.yes() ? "2" : "3");
    }

    const std::vector<Edit>& all() const { return m_edits; }

private:
    QByteArray next() { return QByteArray::number(++m_number); }

    void note(Edit edit) {
        for (const Edit& other : m_edits) {
            if (areRelated(edit.target, other.target))
                return;
        }
        // A renamed group is recognised by what is left alone in it.
        if (m_renamed.count(edit.target.left(edit.target.indexOf('.'))) > 0)
            return;
        m_edits.push_back(std::move(edit));
    }

    void change(std::map<QByteArray, QByteArray> Model::*texts, const QByteArray& target, const QByteArray& name,
                const QByteArray& to) {
        note({target, to, [=](Model& model) { (model.*texts)[name] = to; }});
    }

    void addToData(int what, const QByteArray& id, Worlds::Choices& choices) {
        const auto& views = m_base.parameters.at(id).views;
        const int view = choices.below(static_cast<int>(views.size()));
        const QByteArray target = id + '/' + QByteArray::number(view);
        const auto dataIn = [=](Model& model) -> Data& { return model.parameters.at(id).views.at(view); };
        const auto& keys = views.at(view).keys;
        const int to = ++m_number;
        if (what == 0)
            return note({target + "/value", next(), [=](Model& model) { dataIn(model).value = to; }});
        if (what == 1 && view > 0)
            return note({target, "", [=](Model& model) { model.parameters.at(id).views.erase(view); }});
        const int time = 2 * choices.below(20) + 1;
        const bool isFree = m_arrived.insert(target + '@' + QByteArray::number(time)).second;
        if (what == 2 && isFree && mayBe(Added, target))
            return note({target + "/new" + next(), "", [=](Model& model) { dataIn(model).keys[to] = {time, to}; }});
        if (keys.empty())
            return;
        const auto chosen = std::next(keys.begin(), choices.below(static_cast<int>(keys.size())));
        const int id2 = chosen->first;
        const QByteArray key = target + "/key" + QByteArray::number(id2);
        const auto keyIn = [=](Model& model) -> Key& { return dataIn(model).keys.at(id2); };
        const int field = choices.below(5);
        if (field == 0 && mayBe(Deleted, target))
            return note({key, "", [=](Model& model) { dataIn(model).keys.erase(id2); }});
        if (field == 4)
            return moveAndChange(target, key, chosen->second.time + (choices.yes() ? 1 : -1), to, keyIn);
        // What moves and looks another way is only recognised between its neighbours.
        if (!m_fields.emplace(key, field == 1).second && m_fields.at(key) != (field == 1))
            return;
        if (field == 1 && isFree && mayBe(Moved, target))
            note({key + "/time", QByteArray::number(time), [=](Model& model) { keyIn(model).time = time; }});
        else if (field == 2)
            note({key + "/value", next(), [=](Model& model) { keyIn(model).value = to; }});
        else if (field == 3)
            note({key + "/curve", "Custom1", [=](Model& model) { keyIn(model).curve = "Custom1"; }});
    }

    template <class KeyIn>
    void moveAndChange(const QByteArray& target, const QByteArray& key, int time, int to, const KeyIn& keyIn) {
        const bool isFree = m_arrived.insert(target + '@' + QByteArray::number(time)).second;
        if (!isFree || !m_fields.emplace(key, true).second || !mayBe(MovedAndChanged, target))
            return;
        note({key + "/time", QByteArray::number(time), [=](Model& model) { keyIn(model).time = time; }});
        note({key + "/value", next(), [=](Model& model) { keyIn(model).value = to; }});
    }

    enum Shape { Added = 1, Deleted = 2, Moved = 4, MovedAndChanged = 8 };

    /// A keyframe that is deleted, and another one that is added, look like one that has moved and changed.
    bool mayBe(Shape shape, const QByteArray& view) {
        const int all = m_shapes[view] | shape;
        const bool isClear =
            (all & (Added | Deleted)) != (Added | Deleted) && (m_shapes[view] == 0 || (all & MovedAndChanged) == 0);
        if (isClear)
            m_shapes[view] = all;
        return isClear;
    }

    void addParameter(const QByteArray& id) {
        const int to = ++m_number;
        note({id + "/new", next(), [=](Model& model) { model.parameters[id].views[0].value = to; }});
    }

    void renameGroup(const QByteArray& group, const QByteArray& to) {
        for (const Edit& edit : m_edits) {
            if (edit.target.startsWith(group))
                return;
        }
        change(&Model::groups, "group/" + group, group, to);
        m_renamed.insert(group);
    }

    const Model& m_base;
    const QByteArray m_side;
    int m_number;
    std::vector<Edit> m_edits;
    std::set<QByteArray> m_arrived;
    std::set<QByteArray> m_renamed;
    std::map<QByteArray, bool> m_fields;
    std::map<QByteArray, int> m_shapes;
};

Model applied(Model model, const std::vector<Edit>& edits) {
    for (const Edit& edit : edits)
        edit.apply(model);
    return model;
}

bool hasMeeting(const Model& model) {
    for (const auto& [id, parameter] : model.parameters) {
        for (const auto& [view, data] : parameter.views) {
            std::set<int> times;
            for (const auto& [key, each] : data.keys) {
                if (!times.insert(each.time).second)
                    return true;
            }
        }
    }
    return false;
}

/// What shows in a view, where the other side has made it static, or not static.
bool isChangedWhereHidden(const Data& base, const Data& side, const Data& other) {
    const auto look = [](const Data& data) {
        QByteArray text = data.keys.empty() ? QByteArray::number(data.value) : QByteArray();
        for (const auto& [id, key] : data.keys)
            text += lineOf(key);
        return text;
    };
    return base.keys.empty() != side.keys.empty() && base.keys.empty() == other.keys.empty() &&
           look(base) != look(other);
}

/// Gives views ours, which one side has made static or not, and the other has edited; whether there are any.
bool keepOurAnimation(const Model& base, const Model& ours, const Model& theirs, Model& merged) {
    bool isAny = false;
    for (auto& [id, parameter] : merged.parameters) {
        for (auto& [view, data] : parameter.views) {
            const auto in = [&id = id, &view = view](const Model& model) -> const Data* {
                const auto found = model.parameters.find(id);
                if (found == model.parameters.end() || found->second.views.count(view) == 0)
                    return nullptr;
                return &found->second.views.at(view);
            };
            const Data* const b = in(base);
            const Data* const o = in(ours);
            const Data* const t = in(theirs);
            if (!b || !o || !t || (!isChangedWhereHidden(*b, *o, *t) && !isChangedWhereHidden(*b, *t, *o)))
                continue;
            data = *o;
            isAny = true;
        }
    }
    return isAny;
}

/// The parameters whose masters are missing, or lead back to them, and these masters.
std::set<QByteArray> brokenMasters(const Model& model) {
    const auto masterOf = [&](const QByteArray& id) {
        const auto found = model.parameters.find(id);
        return found == model.parameters.end() ? QByteArray() : found->second.master;
    };
    std::set<QByteArray> broken;
    for (const auto& [id, parameter] : model.parameters) {
        QByteArray master = parameter.master;
        bool isBroken = !master.isEmpty() && model.parameters.count(master) == 0;
        for (std::size_t i = 0; i < model.parameters.size(); ++i, master = masterOf(master))
            isBroken |= master == id;
        if (isBroken)
            broken.insert(id + ' ' + parameter.master);
    }
    return broken;
}

bool breaksMasters(const Model& ours, const Model& theirs, const Model& merged) {
    std::set<QByteArray> broken = brokenMasters(merged);
    for (const Model* const side : {&ours, &theirs}) {
        for (const QByteArray& each : brokenMasters(*side))
            broken.erase(each);
    }
    return !broken.empty();
}

// --- what is promised

bool saySame(const QByteArray& a, const QByteArray& b) {
    return differences(ProjectText(a), ProjectText(b)).empty();
}

void sameMeaning(const char* what, const QByteArray& expected, const QByteArray& found) {
    for (const Difference& difference : differences(ProjectText(expected), ProjectText(found)))
        Fuzz::fail(what, difference.message + "\n--- expected\n" + expected + "--- found\n" + found);
}

/// How many findings of each kind there are.
std::map<QString, int> findings(const QByteArray& text) {
    static const QRegularExpression details("^[^ :]+: |'[^']*'|[0-9.]+|unknown line.*");
    std::map<QString, int> counts;
    for (const Finding& finding : findingsIn(ProjectText(text)))
        ++counts[QString(finding.message).remove(details)];
    return counts;
}

/// A merged text has no faults but those that a side has.
void intact(const QByteArray& text, const QByteArray& ours, const QByteArray& theirs) {
    std::map<QString, int> known = findings(ours);
    for (const auto& [kind, count] : findings(theirs))
        known[kind] += count;
    for (const auto& [kind, count] : findings(text)) {
        if (count > known[kind] && !kind.isEmpty())
            Fuzz::fail("a merged text is sound", kind + '\n' + text);
    }
}

QString shown(const Prm::MergedProject& merged, const QByteArray& base, const QByteArray& ours,
              const QByteArray& theirs) {
    QString text = "--- base\n" + base;
    for (const QByteArray& side : {ours, theirs}) {
        text += "--- a side\n";
        for (const Difference& difference : differences(ProjectText(base), ProjectText(side)))
            text += difference.message + '\n';
    }
    for (const Prm::ProjectConflict& conflict : merged.conflicts)
        text += "--- conflict: " + conflict.message + '\n';
    return text;
}

std::vector<Edit> editsOf(Worlds::Choices& choices, const Model& base, const char* side, int number) {
    Edits edits(base, side, number);
    for (int i = 0, count = 1 + choices.below(8); i < count; ++i)
        edits.add(choices);
    return edits.all();
}

void checkEdits(Worlds::Choices& choices) {
    const Model base = baseOf(choices);
    const std::vector<Edit> ours = editsOf(choices, base, "_here", 1000);
    std::vector<Edit> theirs = editsOf(choices, base, "_there", 2000);
    Model oursModel = applied(base, ours);
    Model theirsModel = applied(base, theirs);
    oursModel.secondOfWriting += choices.below(3);
    theirsModel.secondOfWriting += choices.below(3);
    const QByteArray baseText = textOf(base);
    const QByteArray oursText = textOf(oursModel);
    const QByteArray theirsText = textOf(theirsModel);
    bool isContested = false;
    std::vector<Edit> both;
    for (const Edit& edit : theirs) {
        const auto clash = std::find_if(ours.begin(), ours.end(),
                                        [&](const Edit& other) { return areRelated(edit.target, other.target); });
        if (clash == ours.end())
            both.push_back(edit);
        else if (clash->target != edit.target || clash->result != edit.result)
            isContested = true;
    }
    Model expected = applied(applied(base, both), ours);
    expected.secondOfWriting = std::max(oursModel.secondOfWriting, theirsModel.secondOfWriting);
    isContested |= keepOurAnimation(base, oursModel, theirsModel, expected);
    // What is kept then is one side's, but which it is may depend on the rest.
    const bool isMeeting = hasMeeting(expected) || breaksMasters(oursModel, theirsModel, expected);
    const Prm::MergedProject merged = Prm::mergeProjects(baseText, oursText, theirsText);
    const Prm::MergedProject swapped = Prm::mergeProjects(baseText, theirsText, oursText);
    if (merged.conflicts.empty() == (isContested || isMeeting))
        Fuzz::fail("a conflict where both edit one thing, and only there",
                   shown(merged, baseText, oursText, theirsText));
    HOLD(merged.conflicts.empty() == swapped.conflicts.empty());
    if (!isMeeting)
        sameMeaning("both edits, ours where both edit one thing", textOf(expected), merged.text);
    intact(merged.text, oursText, theirsText);
    const Prm::MergedProject taken =
        Prm::mergeProjects(baseText, oursText, theirsText, [](const QString&) { return Prm::MergeSide::Theirs; });
    HOLD(taken.conflicts.empty());
    intact(taken.text, oursText, theirsText);
    if (!isMeeting)
        sameMeaning("the sides swapped, where the other one stands", taken.text, swapped.text);
    if (oursText != baseText)
        Fuzz::same("both alike", oursText, Prm::mergeProjects(baseText, oursText, oursText + '\n').text);
    // A line that says nothing is no edit.
    if (oursText != baseText)
        Fuzz::same("ours alone", oursText, Prm::mergeProjects(baseText, oursText, baseText + '\n').text);
    sameMeaning("theirs alone", theirsText, Prm::mergeProjects(baseText, baseText + '\n', theirsText).text);
}

void checkBytes(const QByteArray& base, const QByteArray& ours, const QByteArray& theirs) {
    try {
        const Prm::MergedProject merged = Prm::mergeProjects(base, ours, theirs);
        const ProjectText read(merged.text);
        if (merged.conflicts.empty() && saySame(base, theirs))
            sameMeaning("ours alone", ours, merged.text);
    } catch (const Problem&) {
        return; // The format holds only so many digits, and older readers only some views.
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Worlds::Choices choices(data, size);
    checkEdits(choices);
    constexpr int pieces = 40;
    const QByteArray base = Fuzz::pieced(choices, pieces);
    const QByteArray ours = Fuzz::pieced(choices, pieces);
    const QByteArray theirs = Fuzz::pieced(choices, pieces);
    checkBytes(base, ours, theirs);
    checkBytes(base + ours, base + ours + theirs, base + theirs);
    checkBytes(Fuzz::bytesOf(data, size), base, ours);
    return 0;
}
