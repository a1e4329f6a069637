#pragma once

#include "prm/CurveParameter.h"
#include "prm/Export.h"
#include "prm/document/FileValue.h"
#include "prm/document/ProjectText.h"
#include "prm/document/ValueKind.h"

#include <memory>

namespace Prm::document {

/// A line of a parameter: where it is in the file, and the bytes that are there or are to be there.
struct FileLine {
    int line = 0;
    std::string_view bytes;
};

/// One parameter of a project text, as all commands use it: its keyframes and values, each as the file writes it and
/// with its line, its settings, and the lines that cannot be read.
///
/// The library reads the lines, and edits what they say: `data()` is a parameter of the library's, whose values are
/// texts. `views()` is the same as plain data. `ParameterPatch.h` leads from there back to lines.
class PRM_EXPORT FileParameter {
public:
    using Data = CurveParameter<FileValue>;

    /// As the lines of the file say.
    FileParameter(const ProjectText& text, int node);
    /// The same, but byte by byte where that is asked for.
    FileParameter(const ProjectText& text, int node, bool isUtf8);
    /// As these lines would say to a reader of that version.
    FileParameter(const std::vector<FileLine>& lines, const ProjectFileVersion& version);
    /// The same, but byte by byte where that is asked for.
    FileParameter(const std::vector<FileLine>& lines, const ProjectFileVersion& version, bool isUtf8);

    /// -1 for lines that are in no file.
    int node() const { return m_node; }
    const QString& path() const { return m_path; }
    Data& data() const { return *m_data; }
    FileViews views() const;
    /// With values as texts of that kind that are equal when they mean the same.
    FileViews normalisedViews(Kind kind) const;
    /// The lines that cannot be read, ascending.
    const std::vector<int>& refused() const { return m_refused; }
    /// What all values have in common, those included that others replace; null without values.
    Kind writtenKind() const { return m_writtenKind; }
    /// How the values are read, once that is settled (see `Kinds`).
    Kind kind() const { return m_kind; }
    void setKind(Kind kind) { m_kind = kind; }

    // --- settings ----------------------------------------------------------------------------------------------------
    QString before() const;
    QString after() const;
    bool isHidden() const { return m_data->isHidden(); }
    /// The path of the master, empty without one.
    QString master() const {
        const QString& id = m_data->pendingMasterParameterId();
        return id.mid(id.startsWith(QLatin1Char('.')) ? 1 : 0);
    }

    // --- values ------------------------------------------------------------------------------------------------------
    QVariant meaning(const FileValue& value) const { return m_kind->value(shown(value.text)); }
    /// A value from a text that a person would write. Throws `Problem`.
    FileValue newValue(const QString& given) const;
    /// A number added to it. Values of other kinds throw `Problem`.
    FileValue sum(const FileValue& value, double offset) const;

    // --- between the texts of values and the bytes of the file -------------------------------------------------------
    /// A parameter with a line that is no UTF-8 is read byte by byte, so that nothing is lost.
    bool isUtf8() const { return m_isUtf8; }
    /// As the file has it.
    QByteArray bytes(const QString& text) const { return m_isUtf8 ? text.toUtf8() : text.toLatin1(); }
    /// For people, and for what a value means.
    QString shown(const QString& text) const {
        return m_isUtf8 ? text : QString::fromStdString(text.toLatin1().toStdString());
    }

private:
    void read(int line, const LineReading& reading, const ProjectFileVersion& version);

    int m_node = -1;
    QString m_path;
    std::unique_ptr<Data> m_data;
    std::vector<int> m_refused;
    Kind m_writtenKind = nullptr;
    Kind m_kind = &ValueKind::opaque;
    bool m_isUtf8 = true;
};

/// Whether a line is about keyframes and values, which edits change.
PRM_EXPORT bool isData(Key key);

/// The name of a kind, with a number for each custom one.
PRM_EXPORT QString kindText(Interpolation kind);
PRM_EXPORT QString kindText(Extrapolation kind);
/// "Bezier", with the numbers of its shape: equal for curves that mean the same.
PRM_EXPORT QString curveText(const IType& shape);
/// Value and curve: "0.5 (Linear)".
PRM_EXPORT QString keyframeText(const FileKeyframe& key);

} // namespace Prm::document

extern template class Prm::Parameter<Prm::document::FileValue>;
extern template class Prm::CurveParameter<Prm::document::FileValue>;
