#pragma once

#include "prm/Export.h"
#include "prm/KeyframeSelection.h"
#include "prm/Time.h"
#include "prm/View.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace Bsc {
class CompositeCommand;
}

namespace Prm {

class ParameterSet;

/// Keyframes of several parameters as text, for a clipboard. Its first line is "Prm keyframes 1"; readers of project
/// text and of the keyframes of one parameter refuse it. Times, values and Bezier shapes are exact.
///
/// - Of each parameter it has the path below a set, the type of its values, its selected keyframes by view, and the
///   extrapolation. Of a selected view without keyframes it has the static value.
/// - Each parameter is pasted into the one of the same path below the other set, otherwise into the one that has the
///   same name and type of values; of several, into the one of which most names at the end of the path are the same.
///
/// Shape numbers of custom kinds are not copied: project text has none.
///
/// \snippet clipboard.cpp paste
/// \threads The owning thread of the parameters.
class PRM_EXPORT KeyframeClipboard {
public:
    /// The text of the selected keyframes, with paths below the root. A parameter that is not below it has its name
    /// only.
    static QString textOf(const KeyframeSelection& selection, const ParameterSet& root);

    /// Whether the text begins with the line that such texts begin with, of any version.
    static bool isClipboardText(const QString& text);

    /// Reads the text. Throws `std::runtime_error`, with the number of the line, for a text that is not what `textOf`
    /// returned: another first line, a newer version, a line that cannot be read, a time out of range.
    explicit KeyframeClipboard(const QString& text);

    /// Appends the edits that paste into the parameters of a set and its subsets; they replace keyframes at the same
    /// times. Returns a sentence for each thing that is not pasted: a parameter without a match, with several or of
    /// another type, that is not animated, or that has keyframes where a static value was copied; a value that is not
    /// of the type; views of a parameter that has one only; keyframes at one time.
    ///
    /// - With a valid `at`, all are shifted by the same distance, by which the first keyframe of the text comes to that
    ///   time. Throws `std::runtime_error`, and appends nothing, if a keyframe would come to a time out of range.
    /// - With `views`, the keyframes of all views of the text are pasted into each of these; otherwise each into its
    /// own.
    /// - A parameter without keyframes gets the extrapolation as well.
    QStringList appendToCommand(ParameterSet& into, Bsc::CompositeCommand& command, Time at = Time(Time::INVALID),
                                const std::vector<View>& views = {}) const;

private:
    class Reader;
    class Paste;
    struct Contents;

    std::shared_ptr<const Contents> m_contents;
};

} // namespace Prm
