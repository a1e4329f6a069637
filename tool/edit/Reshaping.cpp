#include "tool/edit/Reshaping.h"

#include "tool/Frames.h"
#include "tool/Streams.h"

#include <algorithm>

namespace Tool {

namespace {

/// What an edit has made of one view, put back into the file's parameter.
class EditedView {
public:
    EditedView(const FileParameter& file, const Prm::ParameterWithoutType& edited, Prm::View view)
        : m_file(file), m_edited(edited), m_view(view), m_data(file.data()) {
        const unsigned int count = m_data.keyframeCount(view);
        m_former.reserve(count);
        for (unsigned int i = 0; i < count; ++i)
            m_former.push_back(m_data.keyframe(i, view));
        m_static = m_data.staticValue(view);
    }

    void putBack() {
        const unsigned int count = m_edited.keyframeCount(m_view);
        std::vector<FileKeyframe> now;
        now.reserve(count);
        for (unsigned int i = 0; i < count; ++i) {
            const Prm::Context at = m_edited.keyframeTime(i, m_view);
            const Prm::KeyframeIndex index(&m_edited, m_view, i);
            now.emplace_back(at.time, valueAt(at), m_edited.interpolationData(index));
        }
        if (now == m_former)
            return putBackStaticValue();
        m_data.vDeleteAllKeyframes(m_view);
        for (const FileKeyframe& keyframe : now)
            m_data.vSetValue(keyframe.value, {keyframe.time, m_view});
        for (unsigned int i = 0; i < count; ++i)
            m_data.vSetInterpolationData(now[i].interpolationData, i, m_view);
    }

private:
    /// The text that is there, if that means the same.
    FileValue valueAt(const Prm::Context& at) const {
        const QVariant value = m_edited.variantValue(at, std::nothrow);
        const auto found = std::lower_bound(m_former.begin(), m_former.end(), at.time,
                                            [](const FileKeyframe& one, Prm::Time time) { return one.time < time; });
        const bool isThere = found != m_former.end() && found->time == at.time;
        return isThere ? changed(found->value, value) : m_file.newValue(plainText(value));
    }
    FileValue changed(const FileValue& former, const QVariant& value) const {
        if (!former.text.isNull() && plainText(m_file.meaning(former)) == plainText(value))
            return former;
        FileValue now = m_file.newValue(plainText(value));
        now.line = former.line;
        return now;
    }
    void putBackStaticValue() {
        if (m_former.empty() && !m_static.text.isNull())
            m_data.vSetValue(changed(m_static, m_edited.variantValue({Prm::Time::INVALID, m_view}, std::nothrow)),
                             {Prm::Time::INVALID, m_view});
    }

    const FileParameter& m_file;
    const Prm::ParameterWithoutType& m_edited;
    const Prm::View m_view;
    FileParameter::Data& m_data;
    std::vector<FileKeyframe> m_former;
    FileValue m_static;
};

/// Why the edit is not done; empty if it was.
QString reshapeCurve(const FileParameter& file, const CurveEdit& edit, const Prm::KeyframeSpan& span) {
    if (!file.master().isEmpty())
        return message("shows %1, whose keyframes are to be edited", file.master());
    const TypedParameter typed = file.kind()->typed(file);
    if (!typed.parameter)
        return message("its values are of no known type");
    if (span.view.isValid() && !file.data().hasViewData(span.view))
        return message("view %1 has no data of its own; prm split gives it some", span.view.id());
    const auto made = edit(*typed.parameter, span);
    QString refusal = made ? made->refusal() : QString();
    if (!made || !refusal.isEmpty())
        return refusal;
    made->doIt();
    const int former = file.data().allKeyframes().size();
    for (const Prm::View view : std::vector<Prm::View>(file.data().viewList()))
        EditedView(file, *typed.parameter, view).putBack();
    const int now = file.data().allKeyframes().size();
    if (now != former)
        tell("%1: %2 keyframes to %3", file.path(), former, now);
    return {};
}

} // namespace

void declareSpan(Arguments& arguments) {
    arguments.option("view", "Only in this view; in all unless given.", "N")
        .option("from", "Only keyframes from here on.", "FRAME")
        .option("to", "Only keyframes up to here.", "FRAME");
    declareOutput(arguments);
}

Prm::KeyframeSpan spanOption(const Arguments& arguments) {
    Prm::KeyframeSpan span;
    span.view = viewOption(arguments, span.view);
    span.first = timeOption(arguments, "from", span.first);
    span.last = timeOption(arguments, "to", span.last);
    if (span.last < span.first)
        throw WrongUse("--from is later than --to");
    return span;
}

int reshapeCurves(const Arguments& arguments, const Prm::KeyframeSpan& span, const CurveEdit& edit) {
    bool isComplete = true;
    const int code = editProject(arguments, arguments.patterns(), [&](const FileParameter& parameter) {
        const QString refusal = reshapeCurve(parameter, edit, span);
        isComplete = isComplete && refusal.isEmpty();
        if (!refusal.isEmpty())
            tell("%1: %2", parameter.path(), refusal);
    });
    return isComplete ? code : Findings;
}

} // namespace Tool
