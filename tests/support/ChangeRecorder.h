#pragma once

#include "prm/ParameterWithoutType.h"

#include <QObject>

#include <functional>
#include <string>
#include <utility>

/// Turns the changes that an observer receives into lines: "TYPE index view", index -1 for a static value.
class ChangeRecorder : public QObject {
    Q_OBJECT

public:
    explicit ChangeRecorder(Prm::ParameterWithoutType* parameter = nullptr) {
        if (parameter)
            parameter->attachObserver(this, SLOT(onChanged(Prm::ParameterChange&)));
    }

    /// The lines since the last call.
    std::string take() { return std::exchange(lines, {}); }

    std::string lines;
    /// Called inside each notification.
    std::function<void(Prm::ParameterChange&)> then;

public Q_SLOTS:
    void onChanged(Prm::ParameterChange& change) {
        lines += change.typeToString().toStdString() + " " + std::to_string(static_cast<int>(change.affectedIndex)) +
                 " " + std::to_string(change.context.view.id()) + "\n";
        if (then)
            then(change);
    }
};
