#include "tool/edit/WrittenValue.h"

#include "prm/CurveParameter.hpp"

Tool::WrittenValue Prm::ValueType<Tool::WrittenValue>::read(const QString& text) {
    const int blank = text.indexOf(QLatin1Char(' '));
    return {text.mid(blank + 1), text.leftRef(blank).toInt()};
}

Tool::WrittenValue Prm::ValueType<Tool::WrittenValue>::fromComponents(const double* components) {
    Tool::WrittenValue value;
    ValueType<double>::write(value.text, *components);
    return value;
}

template class Prm::Parameter<Tool::WrittenValue>;
template class Prm::CurveParameter<Tool::WrittenValue>;
