// Two sides edit one project. What they edit apart is merged to both; where both edit one thing, ours stands and there
// is a conflict. Any bytes merge to a project text.

#include "fuzz/Fuzz.h"
#include "fuzz/Pieces.h"
#include "tool/Checks.h"
#include "tool/ProjectDiff.h"
#include "tool/merge/ProjectMerge.h"

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
    QByteArray text = "FileVersion.value=3002\nProductName.value=\"p\"\nProductVersion.value=\"1.2\"\n";
    for (const auto& [group, name] : model.names)
        text += model.groups.at(group) + ".name=\"" + name + "\"\n";
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
            note({id + '/' + name, to, [=](Model& model) { model.parameters.at(id).*member = to; }});
        };
        if (what < 5)
            return addToData(what, id, choices);
        if (what == 5)
            setting("before", choices.yes() ? "Constant" : "Custom2", &Parameter::before);
        else if (what == 6)
            setting("master", choices.yes() ? "g2.b" : "g1.b", &Parameter::master);
        else if (what == 7)
            note({id + "/hidden", "1", [=](Model& model) { model.parameters.at(id).isHidden = true; }});
        else if (what == 8)
            note({id, "", [=](Model& model) { model.parameters.erase(id); }});
        else if (what == 9)
            addParameter(group + ".n" + QByteArray::number(choices.below(3)));
        else if (what == 10)
            renameGroup(group, choices.yes() ? group + "_new" : group + m_side);
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
        if (what == 2 && isFree)
            return note({target + "/new" + next(), "", [=](Model& model) { dataIn(model).keys[to] = {time, to}; }});
        if (keys.empty())
            return;
        const int id2 = std::next(keys.begin(), choices.below(static_cast<int>(keys.size())))->first;
        const QByteArray key = target + "/key" + QByteArray::number(id2);
        const auto keyIn = [=](Model& model) -> Key& { return dataIn(model).keys.at(id2); };
        const int field = choices.below(4);
        if (field == 0)
            return note({key, "", [=](Model& model) { dataIn(model).keys.erase(id2); }});
        // A keyframe that moves and looks another way is another one.
        if (!m_fields.emplace(key, field == 1).second && m_fields.at(key) != (field == 1))
            return;
        if (field == 1 && isFree)
            note({key + "/time", QByteArray::number(time), [=](Model& model) { keyIn(model).time = time; }});
        else if (field == 2)
            note({key + "/value", next(), [=](Model& model) { keyIn(model).value = to; }});
        else if (field == 3)
            note({key + "/curve", "Custom1", [=](Model& model) { keyIn(model).curve = "Custom1"; }});
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

// --- what is promised

bool saySame(const QByteArray& a, const QByteArray& b) {
    return differences(ProjectText(a), ProjectText(b)).empty();
}

void sameMeaning(const char* what, const QByteArray& expected, const QByteArray& found) {
    for (const Difference& difference : differences(ProjectText(expected), ProjectText(found)))
        Fuzz::fail(what, difference.message + "\n--- expected\n" + expected + "--- found\n" + found);
}

/// What edits cannot lead to.
void intact(const QByteArray& text) {
    for (const Finding& finding : findingsIn(ProjectText(text))) {
        if (finding.message.contains("again") || finding.message.contains("malformed"))
            Fuzz::fail("a merged text is sound", finding.message + '\n' + text);
    }
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
    const QByteArray baseText = textOf(base);
    const QByteArray oursText = textOf(applied(base, ours));
    const QByteArray theirsText = textOf(applied(base, theirs));
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
    const Model expected = applied(applied(base, both), ours);
    const bool isMeeting = hasMeeting(expected);
    const Merge merged = merge(baseText, oursText, theirsText);
    const Merge swapped = merge(baseText, theirsText, oursText);
    if (merged.conflicts.empty() == (isContested || isMeeting))
        Fuzz::same("a conflict where both edit one thing, and only there", textOf(expected), merged.text);
    HOLD(merged.conflicts.empty() == swapped.conflicts.empty());
    if (!isMeeting)
        sameMeaning("both edits, ours where both edit one thing", textOf(expected), merged.text);
    if (merged.conflicts.empty())
        sameMeaning("the sides swapped", merged.text, swapped.text);
    intact(merged.text);
    const Merge taken = merge(baseText, oursText, theirsText, [](const QString&) { return Side::Theirs; });
    HOLD(taken.conflicts.empty());
    intact(taken.text);
    // A line that says nothing is no edit.
    if (oursText != baseText)
        Fuzz::same("ours alone", oursText, merge(baseText, oursText, baseText + '\n').text);
    sameMeaning("theirs alone", theirsText, merge(baseText, baseText + '\n', theirsText).text);
}

void checkBytes(const QByteArray& base, const QByteArray& ours, const QByteArray& theirs) {
    try {
        const Merge merged = merge(base, ours, theirs);
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
