#pragma once

#include "host/bsc/Command.h"
#include "prm/ParameterSet.h"

#include <QString>

namespace PrmPython {

/// Gives a group another name and display name.
class GroupNameEdit : public Bsc::Command {
public:
    GroupNameEdit(Prm::ParameterSet& set, const QString& name, const QString& displayName)
        : m_set(&set), m_life(set), m_name(name), m_displayName(displayName) {}
    void doIt() override { exchange(); }
    void undoIt() override { exchange(); }

private:
    void exchange() {
        if (!m_life.alive())
            return;
        const QString name = m_set->name();
        const QString displayName = m_set->displayName();
        m_set->setDisplayName(m_name, m_displayName);
        m_name = name;
        m_displayName = displayName;
    }

    Prm::ParameterSet* m_set;
    Prm::detail::LifeGuard m_life;
    QString m_name;
    QString m_displayName;
};

} // namespace PrmPython
