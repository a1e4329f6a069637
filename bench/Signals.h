#pragma once

#include "prm/ParameterChange.h"

#include <QObject>

namespace Bench {

class Receiver : public QObject {
    Q_OBJECT
public:
    int heard = 0;
public Q_SLOTS:
    void hear(Prm::ParameterChange& change) { heard += change.type; }
};

class BareSender : public QObject {
    Q_OBJECT
Q_SIGNALS:
    void changed(Prm::ParameterChange& change);
};

} // namespace Bench
