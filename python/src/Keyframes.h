#pragma once

#include "prm/ParameterEdit.h"
#include "python/src/Kind.h"

namespace PrmPython {

/// A keyframe without its value.
struct KeyframeShape {
    Prm::Time time;
    Prm::IType interpolation;
};

/// Columns of a structured array.
py::array structured(const std::vector<KeyframeShape>& shapes, const char* format, const py::array& values);
/// The rows of what Python gives: a structured array, or rows of up to seven items. The values are as they were given.
std::vector<std::pair<KeyframeShape, py::object>> rowsOf(py::handle keys);

template <class T> py::array arrayOfKeyframes(const QVector<Prm::KeyframeData<T>>& keyframes) {
    std::vector<KeyframeShape> shapes;
    QVector<T> values;
    for (const auto& keyframe : keyframes) {
        shapes.push_back({keyframe.time, keyframe.interpolationData});
        values.append(keyframe.value);
    }
    return structured(shapes, Kind<T>::format, arrayOf(values.constData(), {keyframes.size()}));
}

template <class T> QVector<Prm::KeyframeData<T>> keyframesOf(py::handle keys) {
    QVector<Prm::KeyframeData<T>> keyframes;
    for (const auto& [shape, value] : rowsOf(keys)) {
        if (!keyframes.isEmpty() && !(keyframes.last().time < shape.time))
            throw py::value_error("the times of keyframes must be in ascending order");
        keyframes.append({shape.time, valueFrom<T>(value), shape.interpolation});
    }
    return keyframes;
}

/// Replaces all keyframes of a view. A view without data gets some.
template <class T> class ReplaceKeyframesEdit : public Prm::ParameterSnapshotEdit {
public:
    ReplaceKeyframesEdit(Prm::Parameter<T>& parameter, const QVector<Prm::KeyframeData<T>>& keyframes,
                         const Prm::View& view)
        : ParameterSnapshotEdit(&parameter, {"Replace the keyframes of %p", "Replace %n keyframes of %p"}),
          m_keyframes(keyframes), m_view(view) {}

protected:
    bool applies() override { return typed() != nullptr; }
    int countNow() const override { return std::max(1, m_keyframes.size()); }
    void apply() override {
        if (auto* const parameter = typed())
            parameter->vDeleteAllKeyframes(m_view);
        unsigned int index = 0;
        for (const auto& keyframe : m_keyframes) {
            if (auto* const parameter = typed())
                parameter->vSetValue(keyframe.value, Prm::Context(keyframe.time, m_view));
            if (auto* const parameter = typed())
                parameter->vSetInterpolationData(keyframe.interpolationData, index++, m_view);
        }
    }

private:
    Prm::Parameter<T>* typed() const { return dynamic_cast<Prm::Parameter<T>*>(edited()); }

    QVector<Prm::KeyframeData<T>> m_keyframes;
    Prm::View m_view;
};

} // namespace PrmPython
