// The model of a dope sheet: a row for each parameter, with the times of its keyframes, kept up to date by asking once
// a frame what has changed.

#include "prm/ChangedSince.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"

#include <QVector>

#include <map>

using Prm::Time;

namespace {

class DopeSheet {
public:
    explicit DopeSheet(Prm::ParameterSet& project) : m_project(project), m_changes(project) { readAll(); }

    // [take]
    /// Called once a frame, whatever has happened since.
    void update() {
        const Prm::Extent changes = m_changes.take();
        if (!changes.came().isEmpty() || !changes.went().isEmpty() || !changes.renamed().isEmpty()) {
            readAll();
            return;
        }
        for (const Prm::BasicParameter* changed : changes.parameters())
            read(*changed);
    }
    // [take]

    /// The times of a parameter's keyframes.
    const QVector<Prm::Context>& row(const Prm::BasicParameter& parameter) { return m_rows[&parameter]; }
    std::size_t numRows() const { return m_rows.size(); }
    /// How often a row was read.
    int reads = 0;

private:
    void readAll() {
        m_rows.clear();
        m_project.forEachBasicParameter([this](const Prm::BasicParameter* parameter) { read(*parameter); });
    }
    void read(const Prm::BasicParameter& parameter) {
        m_rows[&parameter] = parameter.allKeyframes();
        ++reads;
    }

    Prm::ParameterSet& m_project;
    Prm::ChangedSince m_changes;
    std::map<const Prm::BasicParameter*, QVector<Prm::Context>> m_rows;
};

} // namespace

int main() {
    Prm::NumericParameter<double> x("x"), y("y");
    Prm::ParameterSet project("project");
    project.addParameter(x);
    project.addParameter(y);
    DopeSheet sheet(project);
    sheet.reads = 0;

    x.vSetValue(1.0, Time::fromInt(10));
    x.adjustKeyframesTime([](Time time) { return time + 5.0; }); // emits nothing
    sheet.update();
    bool asExpected = sheet.reads == 1 && sheet.row(x).size() == 1 && sheet.row(x).first().time == Time::fromInt(15);

    sheet.update();
    asExpected = asExpected && sheet.reads == 1;

    Prm::NumericParameter<double> z("z");
    project.addParameter(z);
    sheet.update();
    asExpected = asExpected && sheet.numRows() == 3;
    return asExpected ? 0 : 1;
}
