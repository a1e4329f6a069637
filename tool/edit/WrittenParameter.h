#pragma once

#include "prm/CurveParameter.h"
#include "tool/ProjectText.h"
#include "tool/edit/WrittenValue.h"

#include <map>
#include <vector>

namespace Tool {

/// A line of a parameter: its own bytes or those that are to stand there, and where that is.
struct ParameterLine {
    int line = 0;
    QByteArray bytes;
};

/// What a parameter says of its keyframes and values, view by view.
struct WrittenState {
    struct Keyframe {
        double time = 0;
        WrittenValue value;
        Prm::IType curve;

        bool operator==(const Keyframe& other) const {
            return time == other.time && value == other.value && curve == other.curve;
        }
    };
    struct ViewData {
        std::vector<Keyframe> keys;
        /// Without text where no line gives one.
        WrittenValue value;

        bool operator==(const ViewData& other) const { return keys == other.keys && value == other.value; }
    };

    std::map<quint32, ViewData> views;
};

/// A parameter to be edited, made of lines of a project text. Values are what the lines say, byte by byte.
class WrittenParameter {
public:
    using Edited = Prm::CurveParameter<WrittenValue>;

    WrittenParameter(const std::vector<ParameterLine>& lines, const Prm::ProjectFileVersion& version);

    Edited& parameter() { return m_parameter; }
    WrittenState state() const;
    /// The lines that the parameter could not read, ascending.
    const std::vector<int>& refused() const { return m_refused; }

    // --- between the texts of values and the bytes of the file -------------------------------------------------------
    QByteArray bytes(const QString& text) const { return m_isUtf8 ? text.toUtf8() : text.toLatin1(); }
    QString text(const QByteArray& bytes) const {
        return m_isUtf8 ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
    }
    /// The line of a keyframe, without the parameter's path.
    QByteArray keyframeLine(Prm::View view, double time) const;

private:
    void read(const ParameterLine& line, const Prm::ProjectFileVersion& version);

    Edited m_parameter;
    std::vector<int> m_refused;
    /// What is no UTF-8 is read byte by byte.
    bool m_isUtf8 = true;
};

/// The lines of a parameter as they stand in the file.
std::vector<ParameterLine> linesOf(const ProjectText& text, int node);

/// Whether a line is about keyframes and values, which edits change.
bool isData(Key key);

} // namespace Tool
