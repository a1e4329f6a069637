#include "tool/edit/CurveEdit.h"

#include "prm/ReshapingEdits.h"
#include "tool/Problem.h"
#include "tool/Streams.h"

#include <QHash>

#include <map>

namespace Tool {

namespace {

/// Takes the data of one view back into the file's parameter.
class WriteBack {
public:
    WriteBack(const FileParameter& parameter, const Prm::ParameterWithoutType& typed, Prm::View view)
        : m_parameter(parameter), m_data(parameter.data()), m_typed(typed), m_view(view),
          m_static(m_data.staticValue(view)) {
        for (unsigned int i = 0; i < m_data.keyframeCount(view); ++i)
            remember(m_data.keyframe(i, view));
    }

    void write() const {
        std::vector<FileKeyframe> keys;
        for (unsigned int i = 0; i < m_typed.keyframeCount(m_view); ++i) {
            const Prm::Context at = m_typed.keyframeTime(i, m_view);
            keys.push_back({at.time, valueAt(at), m_typed.interpolationData({&m_typed, m_view, i})});
        }
        m_data.uniquifyView(m_view);
        m_data.vDeleteAllKeyframes(m_view);
        m_data.vSetValue(m_static, {Prm::Time::INVALID, m_view});
        for (const FileKeyframe& key : keys)
            m_data.vSetValue(key.value, {key.time, m_view});
        // Appending a keyframe shapes the segment before it.
        for (std::size_t i = 0; i < keys.size(); ++i)
            m_data.vSetInterpolationData(keys[i].interpolationData, static_cast<unsigned int>(i), m_view);
    }

private:
    void remember(const FileKeyframe& key) {
        m_byTime.emplace(key.time, key.value);
        m_texts.insert(meaningOf(key.value), key.value.text);
    }
    QString meaningOf(const FileValue& value) const {
        return m_parameter.kind()->normalised(m_parameter.shown(value.text));
    }
    FileValue valueAt(const Prm::Context& at) const {
        FileValue value = m_parameter.valueOf(m_typed.variantValue(at, std::nothrow));
        const QString meaning = meaningOf(value);
        value.text = m_texts.value(meaning, value.text);
        const auto former = m_byTime.find(at.time);
        if (former == m_byTime.end())
            return value;
        return meaningOf(former->second) == meaning ? former->second : FileValue{value.text, former->second.line};
    }

    const FileParameter& m_parameter;
    FileParameter::Data& m_data;
    const Prm::ParameterWithoutType& m_typed;
    const Prm::View m_view;
    const FileValue m_static;
    std::map<Prm::Time, FileValue> m_byTime;
    /// As the file has written what a value means.
    QHash<QString, QString> m_texts;
};

} // namespace

void editMeaning(const FileParameter& parameter, const std::function<void(Prm::ParameterWithoutType& typed)>& edit) {
    if (parameter.data().viewList().empty())
        return;
    const auto typed = parameter.kind()->typed(parameter).parameter;
    if (!typed)
        return tell("%1: left alone, its values are of no known type", parameter.path());
    edit(*typed);
    for (const Prm::View view : std::vector<Prm::View>(typed->viewList()))
        WriteBack(parameter, *typed, view).write();
}

void doOrExplain(const FileParameter& parameter, Prm::ParameterReshapeEdit& edit) {
    const QString refusal = edit.refusal();
    if (!refusal.isEmpty())
        throw Problem("%1: %2", parameter.path(), refusal);
    edit.doIt();
}

} // namespace Tool
