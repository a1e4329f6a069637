#pragma once

#include <QString>
#include <QtGlobal>

/// Keeps what Qt is told to print, one line each, while it lives. One at a time.
class Warnings {
public:
    Warnings() : m_former(qInstallMessageHandler(keep)) { text().clear(); }
    ~Warnings() { qInstallMessageHandler(m_former); }
    Q_DISABLE_COPY(Warnings)

    static QString& text() {
        static QString kept;
        return kept;
    }

private:
    static void keep(QtMsgType, const QMessageLogContext&, const QString& message) { text() += message + '\n'; }

    QtMessageHandler m_former;
};
