#include "tool/merge/ParameterMerge.h"

#include "prm/ParameterEdits.h"
#include "tool/Table.h"
#include "tool/merge/KeyframeMerge.h"

#include <set>

namespace Tool {

namespace {

const FileView* find(const FileViews& views, quint32 view) {
    const auto found = views.find(view);
    return found == views.end() ? nullptr : &found->second;
}

FileValue ofTheirs(FileValue value) {
    if (value.line != FileValue::noLine)
        value.line = theirLine(value.line);
    return value;
}

FileView ofTheirs(FileView view) {
    view.value = ofTheirs(view.value);
    for (FileKeyframe& key : view.keys)
        key.value = ofTheirs(key.value);
    return view;
}

QString contentOf(const FileView& view) {
    return view.keys.empty() ? view.value.text : counted(static_cast<qint64>(view.keys.size()), "keyframe");
}

class ViewMerge {
public:
    ViewMerge(const MergedParameter& base, const MergedParameter& ours, const MergedParameter& theirs, Judge& judge)
        : m_base(base), m_ours(ours), m_theirs(theirs), m_judge(judge),
          m_namesViews(base.normal.size() > 1 || ours.normal.size() > 1 || theirs.normal.size() > 1) {}

    FileViews merged() {
        std::set<quint32> views;
        for (const MergedParameter* const each : {&m_base, &m_ours, &m_theirs}) {
            for (const auto& [view, data] : each->normal)
                views.insert(view);
        }
        for (const quint32 view : views)
            mergeView(view);
        if (m_merged.empty() && !m_ours.normal.empty())
            keepOneSide();
        return std::move(m_merged);
    }

private:
    Judge::Subject subject(quint32 view, const QString& what, const QString& words) const {
        Judge::Subject subject{m_ours.parameter.path(), {}, what, {}, words};
        if (m_namesViews)
            subject.view = view;
        return subject;
    }

    /// Each side has deleted the views that the other one has left, but a parameter needs one.
    void keepOneSide() {
        const Judge::Subject subject{m_ours.parameter.path(), {}, "view", {}, {}};
        const Side side = m_judge.settle(subject, {}, "all views were deleted, some here and the others there");
        if (side == Side::Ours) {
            m_merged = m_ours.written;
            return;
        }
        for (const auto& [view, data] : m_theirs.written)
            m_merged[view] = ofTheirs(data);
    }

    void mergeView(quint32 view) {
        const FileView* const base = find(m_base.normal, view);
        const FileView* const ours = find(m_ours.normal, view);
        const FileView* const theirs = find(m_theirs.normal, view);
        if (ours && theirs)
            m_merged[view] = withBoth(view, base ? *base : FileView(), *ours, *theirs);
        else if (ours && (!base || chooseGone(view, *base, ours, theirs) == Side::Ours))
            m_merged[view] = m_ours.written.at(view);
        else if (theirs && (!base || chooseGone(view, *base, ours, theirs) == Side::Theirs))
            m_merged[view] = ofTheirs(m_theirs.written.at(view));
    }

    /// One side has deleted it; the other may have left it alone.
    Side chooseGone(quint32 view, const FileView& base, const FileView* ours, const FileView* theirs) {
        const Side deleter = ours ? Side::Theirs : Side::Ours;
        if ((ours ? *ours : *theirs) == base)
            return deleter;
        Judge::Subject subject{m_ours.parameter.path(), view, "view", {}, "its data"};
        const Judge::Deed deleted{"deleted", {}};
        const Judge::Deed edited{"edited", {}};
        const auto content = [](const FileView* data) { return data ? QVariant(contentOf(*data)) : QVariant(); };
        return m_judge.settle(subject, {content(&base), content(ours), content(theirs)}, ours ? edited : deleted,
                              ours ? deleted : edited);
    }

    FileView withBoth(quint32 view, const FileView& base, const FileView& ours, const FileView& theirs) {
        const FileView& oursWritten = m_ours.written.at(view);
        const FileView theirsWritten = ofTheirs(m_theirs.written.at(view));
        FileView merged;
        const Side side = m_judge.choose(subject(view, "value", "the value"),
                                         {orNull(base.value.text), orNull(ours.value.text), orNull(theirs.value.text)});
        merged.value = side == Side::Ours ? oursWritten.value : theirsWritten.value;
        merged.keys = mergeKeyframes(base.keys, {oursWritten.keys, ours.keys}, {theirsWritten.keys, theirs.keys},
                                     m_judge, subject(view, {}, {}));
        return merged;
    }

    const MergedParameter& m_base;
    const MergedParameter& m_ours;
    const MergedParameter& m_theirs;
    Judge& m_judge;
    const bool m_namesViews;
    FileViews m_merged;
};

void setView(FileParameter::Data& data, Prm::View view, const FileView& wanted) {
    if (data.keyframeCount(view) > 0 && data.hasViewData(view))
        Prm::ParameterDeleteAllKeysEdit(data, view).doIt();
    data.vSetValue(wanted.value, {Prm::Time::INVALID, view});
    for (const FileKeyframe& key : wanted.keys) {
        const Prm::Context place(key.time, view);
        const unsigned int index = data.vSetValue(key.value, place);
        data.vSetInterpolation(key.interpolationData.interpolation, place);
        data.vSetInterpolationData(key.interpolationData, index, view);
    }
}

} // namespace

FileViews mergeViews(const MergedParameter& base, const MergedParameter& ours, const MergedParameter& theirs,
                     Judge& judge) {
    return ViewMerge(base, ours, theirs, judge).merged();
}

void setViews(FileParameter::Data& data, const FileViews& views) {
    const FileViews before = [&] {
        FileViews present;
        for (const Prm::View view : data.viewList())
            present[view.id()];
        return present;
    }();
    for (const auto& [view, wanted] : views)
        setView(data, Prm::View(view), wanted);
    for (const auto& [view, unwanted] : before) {
        if (views.count(view) == 0)
            data.deleteView(Prm::View(view));
    }
}

} // namespace Tool
