#pragma once

#include "prm/ParameterChange.h"

#include <QObject>

namespace Bench {

class Receiver : public QObject {
    Q_OBJECT
public:
    int received = 0;
public Q_SLOTS:
    void onChanged(Prm::ParameterChange& change) { received += change.type; }
};

class BareSender : public QObject {
    Q_OBJECT
Q_SIGNALS:
    void changed(Prm::ParameterChange& change);
};

} // namespace Bench
