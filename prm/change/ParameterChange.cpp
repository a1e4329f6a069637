#include "prm/ParameterChange.h"

#include <array>

namespace Prm {

ParameterChange::ParameterChange() {
    qMetaType();
}

ParameterChange::ParameterChange(ChangeType ofType, ParameterWithoutType& ofParameter, unsigned int index)
    : parameter(&ofParameter), type(ofType), affectedIndex(index) {
    qMetaType();
}

ParameterChange::ParameterChange(ChangeType ofType, ParameterWithoutType* ofParameter,
                                 const QList<unsigned int>* indices)
    : parameter(ofParameter), type(ofType), affectedIndices(indices) {
    qMetaType();
}

ParameterChange::ParameterChange(ChangeType ofType, ParameterWithoutType& ofParameter,
                                 Bsc::CompositeCommand& registered, const Context& at)
    : parameter(&ofParameter), type(ofType), command(&registered), context(at) {
    qMetaType();
}

QString ParameterChange::typeToString() const {
    static const std::array<const char*, NUM_CHANGE_TYPES + 1> names{{"KEYFRAME_ADDED",
                                                                      "KEYFRAME_REMOVED",
                                                                      "KEYFRAME_CHANGED_VALUE",
                                                                      "KEYFRAME_CHANGED_TIME_VALUE",
                                                                      "KEYFRAME_CHANGED_INTERPOLATION",
                                                                      "PARAMETER_CHANGED_EXTRAPOLATION_BEFORE",
                                                                      "PARAMETER_CHANGED_EXTRAPOLATION_AFTER",
                                                                      "PARAMETER_ASSIGNED",
                                                                      "VIEW_RESET",
                                                                      "VIEW_CLEARED",
                                                                      "PARAMETER_CHANGED_NAME",
                                                                      "VALUE_CHANGED",
                                                                      "KEYFRAME_MOVED",
                                                                      "COMMAND_REGISTERED",
                                                                      "PARAMETER_DELETED",
                                                                      "VIEW_ADDED",
                                                                      "VIEW_REMOVED",
                                                                      "PARAMETER_HIDDEN_CHANGED",
                                                                      "PARAMETER_LOCKED_CHANGED",
                                                                      "NUM_CHANGE_TYPES"}};
    const auto position = static_cast<std::size_t>(static_cast<quint32>(type));
    if (position >= names.size())
        return QStringLiteral("Unknown parameterchange type, forgot to add?");
    return QString::fromLatin1(names[position]);
}

int ParameterChange::qMetaType() {
    static const int id = qRegisterMetaType<ParameterChange>("Prm::ParameterChange&");
    return id;
}

} // namespace Prm
