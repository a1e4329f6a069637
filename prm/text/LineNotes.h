#pragma once

#include "prm/Export.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QVector>

namespace Prm::detail {

/// Collects what the readers of a line note on this thread while it lives, so that a whole project can be reported on
/// although each reader returns only whether the line was its own. Without a collector nothing is noted, and a line
/// that is read whole notes nothing.
class PRM_EXPORT LineNotes {
public:
    /// A parameter and the name of the master that the line gave it.
    struct Master {
        QPointer<QObject> parameter;
        QString id;
    };
    LineNotes();
    ~LineNotes();
    Q_DISABLE_COPY(LineNotes)

    /// "<what> '<text>' <problem>", the text shortened: "value 'hello' is not a number".
    static void addLoss(const char* what, QStringView text, const char* problem);
    static void addLoss(const char* loss);
    static void addMaster(QObject& parameter, const QString& id);
    /// The line waits in a moved parameter for its target, in place of the one that waited there before.
    static void addWaiting(QObject& parameter);
    /// A keyframe before the end of a long list.
    static void addInsertion();

    /// From this length on, inserting before the end of a list one by one costs noticeably more than sorting first.
    static constexpr int longList = 1000;

    void clear();

    QStringList losses;
    QVector<Master> masters;
    QPointer<QObject> waitingIn;
    bool hasInserted = false;

private:
    LineNotes* m_former;
};

} // namespace Prm::detail
