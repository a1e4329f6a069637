#pragma once

#include "prm/CurveParameter.h"
#include "tool/FileValue.h"
#include "tool/ProjectText.h"
#include "tool/ValueKind.h"

#include <memory>

namespace Tool {

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
class FileParameter {
public:
    using Data = Prm::CurveParameter<FileValue>;

    /// As the lines of the file say.
    FileParameter(const ProjectText& text, int node);
    /// As these lines would say to a reader of that version.
    FileParameter(int node, const std::vector<FileLine>& lines, const Prm::ProjectFileVersion& version);

    int node() const { return m_node; }
    Data& data() const { return *m_data; }
    FileViews views() const;
    /// The lines that cannot be read, ascending.
    const std::vector<int>& refused() const { return m_refused; }
    /// What all values have in common, those included that others replace; null without values.
    Kind writtenKind() const { return m_writtenKind; }

    // --- settings ----------------------------------------------------------------------------------------------------
    QString before() const;
    QString after() const;
    bool isHidden() const { return m_data->isHidden(); }
    /// The path of the master, empty without one.
    const QString& master() const { return m_data->pendingMasterParameterId(); }

    // --- between the texts of values and the bytes of the file -------------------------------------------------------
    /// A parameter with a line that is no UTF-8 is read byte by byte, so that nothing is lost.
    QByteArray bytes(const QString& text) const { return m_isUtf8 ? text.toUtf8() : text.toLatin1(); }
    QString text(const QString& shown) const { return m_isUtf8 ? shown : QString::fromLatin1(shown.toUtf8()); }
    /// For people, and for what a value means.
    QString shown(const QString& text) const { return m_isUtf8 ? text : QString::fromUtf8(text.toLatin1()); }

private:
    void read(const FileLine& line, const Prm::ProjectFileVersion& version);

    int m_node;
    std::unique_ptr<Data> m_data;
    std::vector<int> m_refused;
    Kind m_writtenKind = nullptr;
    bool m_isUtf8 = true;
};

/// The lines of a parameter as they are in the file.
std::vector<FileLine> linesOf(const ProjectText& text, int node);

/// Whether a line is about keyframes and values, which edits change.
bool isData(Key key);

/// "Bezier", with the numbers of its shape: equal for curves that mean the same.
QString curveText(const Prm::IType& shape);

} // namespace Tool
