#include "prm/merge/ParameterMerge.h"

#include "prm/ParameterEdits.h"
#include "prm/document/ValueText.h"

#include <set>

namespace Prm::document {

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
    return view.keys.empty() ? "" + view.value.text : counted(static_cast<qint64>(view.keys.size()), "keyframe");
}

class ViewMerge {
public:
    ViewMerge(const MergedParameter& base, const MergedParameter& ours, const MergedParameter& theirs,
              Resolver& resolver, TimeLines& timeLines)
        : m_base(base), m_ours(ours), m_theirs(theirs), m_resolver(resolver), m_timeLines(timeLines),
          m_namesViews(base.normal.size() > 1 || ours.normal.size() > 1 || theirs.normal.size() > 1) {}

    FileViews merged() {
        std::set<quint32> views;
        for (const MergedParameter* const each : {&m_base, &m_ours, &m_theirs}) {
            for (const auto& [view, data] : each->normal)
                views.insert(view);
        }
        for (const quint32 view : views)
            mergeView(view);
        if (m_merged.empty() && !m_ours.normal.empty() && !m_theirs.normal.empty())
            keepOneSide();
        return std::move(m_merged);
    }

private:
    Resolver::Subject subject(quint32 view, const QString& what, const QString& words) const {
        Resolver::Subject subject{m_ours.parameter.path(), {}, what, {}, words};
        if (m_namesViews)
            subject.view = view;
        return subject;
    }

    /// Each side has deleted the views that the other one has left, which neither side has meant.
    void keepOneSide() {
        const Resolver::Subject subject{m_ours.parameter.path(), {}, "view", {}, {}};
        const Side side =
            m_resolver.settle(subject, {contentOf(m_base.normal), contentOf(m_ours.normal), contentOf(m_theirs.normal)},
                              "all views were deleted, some here and the others there");
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
        else if (ours && (!base || chooseDeletion(view, *base, ours, theirs) == Side::Ours))
            m_merged[view] = m_ours.written.at(view);
        else if (theirs && (!base || chooseDeletion(view, *base, ours, theirs) == Side::Theirs))
            m_merged[view] = ofTheirs(m_theirs.written.at(view));
    }

    static QVariant contentOrNull(const FileView* data) { return data ? QVariant(contentOf(*data)) : QVariant(); }

    /// One side has deleted it; the other may have left it alone.
    Side chooseDeletion(quint32 view, const FileView& base, const FileView* ours, const FileView* theirs) {
        return m_resolver.chooseDeletion({m_ours.parameter.path(), view, "view", {}, "its data"},
                                         {contentOf(base), contentOrNull(ours), contentOrNull(theirs)},
                                         !((ours ? *ours : *theirs) == base));
    }

    /// Whether one side has given a static view keyframes, or taken them, and the other one has changed what no longer
    /// shows.
    static bool hidesChange(const FileView& base, const FileView& side, const FileView& other) {
        const bool wasStatic = base.keys.empty();
        return side.keys.empty() != wasStatic && other.keys.empty() == wasStatic &&
               (wasStatic ? !(other.value == base.value) : other.keys != base.keys);
    }

    Side chooseAnimation(quint32 view, const FileView& base, const FileView& ours, const FileView& theirs) {
        const auto change = [&base](const FileView& side) {
            const bool isKept = side.keys.empty() == base.keys.empty();
            return Resolver::Change{isKept              ? "changed"
                                    : side.keys.empty() ? "made static"
                                                        : "animated",
                                    isKept && side.keys.empty() ? side.value.text : QString()};
        };
        return m_resolver.settle(subject(view, "value", base.keys.empty() ? "the static value" : "the animation"),
                                 {contentOf(base), contentOf(ours), contentOf(theirs)}, change(ours), change(theirs));
    }

    FileView withBoth(quint32 view, const FileView& base, const FileView& ours, const FileView& theirs) {
        const FileView& oursWritten = m_ours.written.at(view);
        const FileView theirsWritten = ofTheirs(m_theirs.written.at(view));
        if (hidesChange(base, ours, theirs) || hidesChange(base, theirs, ours))
            return chooseAnimation(view, base, ours, theirs) == Side::Ours ? oursWritten : theirsWritten;
        FileView merged;
        const Side side =
            m_resolver.choose(subject(view, "value", "the value"),
                              {orNull(base.value.text), orNull(ours.value.text), orNull(theirs.value.text)});
        merged.value = side == Side::Ours ? oursWritten.value : theirsWritten.value;
        merged.keys = mergeKeyframes(base.keys, {oursWritten.keys, ours.keys}, {theirsWritten.keys, theirs.keys},
                                     m_resolver, subject(view, {}, {}), m_timeLines);
        return merged;
    }

    const MergedParameter& m_base;
    const MergedParameter& m_ours;
    const MergedParameter& m_theirs;
    Resolver& m_resolver;
    TimeLines& m_timeLines;
    const bool m_namesViews;
    FileViews m_merged;
};

void setView(FileParameter::Data& data, View view, const FileView& wanted) {
    if (data.keyframeCount(view) > 0 && data.hasViewData(view))
        ParameterDeleteAllKeysEdit(data, view).doIt();
    data.vSetValue(wanted.value, {Time::INVALID, view});
    for (const FileKeyframe& key : wanted.keys) {
        const Context place(key.time, view);
        const unsigned int index = data.vSetValue(key.value, place);
        data.vSetInterpolation(key.interpolationData.interpolation, place);
        data.vSetInterpolationData(key.interpolationData, index, view);
    }
}

} // namespace

FileViews mergeViews(const MergedParameter& base, const MergedParameter& ours, const MergedParameter& theirs,
                     Resolver& resolver, TimeLines& timeLines) {
    return ViewMerge(base, ours, theirs, resolver, timeLines).merged();
}

QString contentOf(const FileViews& views) {
    if (views.size() == 1)
        return contentOf(views.begin()->second);
    std::size_t keys = 0;
    for (const auto& [view, data] : views)
        keys += data.keys.size();
    return message("%1 views, %2", views.size(), counted(static_cast<qint64>(keys), "keyframe"));
}

void setViews(FileParameter::Data& data, const FileViews& views) {
    const FileViews before = [&] {
        FileViews present;
        for (const View view : data.viewList())
            present[view.id()];
        return present;
    }();
    for (const auto& [view, wanted] : views)
        setView(data, View(view), wanted);
    for (const auto& [view, unwanted] : before) {
        if (views.count(view) == 0)
            data.deleteView(View(view));
    }
}

} // namespace Prm::document
