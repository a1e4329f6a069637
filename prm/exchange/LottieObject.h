#pragma once

#include "prm/document/Budget.h"
#include "prm/exchange/ImportReport.h"
#include "prm/exchange/ImportedSet.h"

class QJsonArray;
class QJsonObject;
class QJsonValue;

namespace Prm::document {

/// Walks through an object of the animation file and makes parameters and sets of its members. Every member ends in the
/// set or in the report, whether it is known here or not.
class LottieObject {
public:
    LottieObject(ImportReport& report, Budget& budget) : m_report(report), m_budget(budget) {}

    /// Where the members of an object come from and go to. `kind` chooses their names.
    struct Place {
        ImportedSet& set;
        QString jsonPath;
        QString kind;
    };
    void importMembers(const QJsonObject& object, const Place& place);

    /// Entries of the report.
    void hold(const QString& jsonPath, const QString& parameter);
    void change(const QString& jsonPath, const QString& parameter, const QString& reason);
    void leaveOut(const QString& jsonPath, const QString& reason);
    void leaveOutSetting(const QString& jsonPath);
    /// Reports a name that must be changed.
    void reportName(const QJsonObject& object, const QString& jsonPath, const ImportedSet& set);

private:
    void importMember(const QString& key, const QJsonValue& value, const Place& place);
    void importNamedObject(const QString& key, const QJsonObject& object, const Place& place);
    void importProperty(const QJsonObject& json, const Place& place, const QString& name, bool colour);
    QString addComponents(const LottieProperty& property, ImportedSet& set, const QString& name, bool colour);
    void importSeparated(const QJsonObject& object, const Place& place, const QString& name);
    void importGradient(const QJsonObject& object, const QString& jsonPath);
    void importList(const QString& key, const QJsonArray& list, const Place& place);
    void importElements(const QString& key, const QJsonArray& list, const Place& place);
    void importElement(const QString& key, const QJsonObject& element, const Place& place);
    void add(const ImportEntry& entry);

    ImportReport& m_report;
    Budget& m_budget;
};

} // namespace Prm::document
