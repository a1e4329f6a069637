#include "tool/edit/Reshaping.h"

#include "prm/document/Progress.h"
#include "tool/Frames.h"
#include "tool/edit/CurveError.h"

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
        Progress progress("taking over keyframes", count);
        for (unsigned int i = 0; i < count; ++i) {
            progress.step();
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

/// One edit of one parameter of a file.
class Reshaping {
public:
    Reshaping(const FileParameter& file, const CurveEdit& edit, const Prm::KeyframeSpan& span)
        : m_file(file), m_edit(edit), m_span(span) {}

    /// Returns why the edit is not done; nothing if it is.
    QString run() {
        if (!m_file.master().isEmpty())
            return message("shows %1, whose keyframes are to be edited", m_file.master());
        const auto parameter = m_file.kind()->typed(m_file).parameter;
        if (!parameter)
            return message("its values are of no known type");
        if (m_span.view.isValid() && !m_file.data().hasViewData(m_span.view))
            return withoutData(m_span.view);
        Prm::KeyframeSpan span = m_span;
        if (m_edit.movesTimes) {
            span.first = decimalTime(span.first);
            span.last = decimalTime(span.last);
            parameter->adjustKeyframesTime(decimalTime);
        }
        const auto made = m_edit.make(*parameter, span);
        QString refusal = made ? made->refusal() : QString();
        if (!made || !refusal.isEmpty())
            return refusal;
        made->doIt();
        if (m_edit.movesTimes)
            parameter->adjustKeyframesTime(fileTime);
        findError(*parameter);
        for (const Prm::View view : std::vector<Prm::View>(m_file.data().viewList()))
            EditedView(m_file, *parameter, view).putBack();
        return {};
    }

    /// The error that was reached; less than 0 if it is not asked for.
    double error() const { return m_error; }

private:
    void findError(const Prm::ParameterWithoutType& edited) {
        constexpr double part = 0.002;
        if (!m_edit.exact)
            return;
        const auto exact = m_file.kind()->typed(m_file).parameter;
        if (const auto made = m_edit.exact(*exact, m_span))
            made->doIt();
        m_error = 0.0;
        for (const Prm::View& view : m_file.data().viewList())
            m_error = std::max(m_error, greatestDifference(*exact, edited, view, m_edit.error * part));
    }

    const FileParameter& m_file;
    const CurveEdit& m_edit;
    const Prm::KeyframeSpan& m_span;
    double m_error = -1.0;
};

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
    span.first = keyframeOption(arguments, "from", span.first);
    span.last = keyframeOption(arguments, "to", span.last);
    if (span.last < span.first)
        throw WrongUse("--from is later than --to");
    return span;
}

int reshapeCurves(const Arguments& arguments, const Prm::KeyframeSpan& span, const CurveEdit& edit) {
    double error = -1.0;
    const auto reshape = [&](const Project& project, const FileParameter& parameter) {
        Reshaping reshaping(parameter, edit, span);
        const QString refusal = reshaping.run();
        error = reshaping.error();
        if (!refusal.isEmpty())
            throw Refusal("%1", refusal);
        if (!edit.takesStatic)
            hasKeyframes(arguments, project, parameter, span);
    };
    const auto account = [&](const FileViews& before, const FileViews& after) {
        const QString done = accountBy(edit.verb)(before, after);
        constexpr int digits = 2;
        return error < 0.0 ? done : message("%1, error %2", done, QString::number(error, 'g', digits));
    };
    return editProject(arguments, arguments.patterns(), reshape, account);
}

} // namespace Tool
