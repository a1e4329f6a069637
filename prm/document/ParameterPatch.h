#pragma once

#include "prm/Export.h"
#include "prm/document/FileParameter.h"

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

namespace Prm::document {

using Lines = std::vector<QByteArray>;

/// What becomes of a line of the file.
struct LineChange {
    Lines before;
    /// In its place; none where it keeps its bytes.
    std::optional<Lines> own;
    Lines after;

    /// Calls the function with each of them, of a line with these bytes.
    template <class Visit> void forEach(const QByteArray& bytes, const Visit& visit) const {
        std::for_each(before.begin(), before.end(), visit);
        if (own)
            std::for_each(own->begin(), own->end(), visit);
        else
            visit(bytes);
        std::for_each(after.begin(), after.end(), visit);
    }
};

/// The lines that are not named here keep their bytes.
using LineChanges = std::map<int, LineChange>;

/// Makes a parameter say a setting, such as "before=Linear": in the last line that says it, else in a line after all
/// others.
PRM_EXPORT void changeSetting(const ProjectText& text, int node, Key key, const QByteArray& setting,
                              LineChanges& changes);

/// The whole text with such changes. Lines that are new end as the line does whose place they take; a text without a
/// last line end keeps having none.
PRM_EXPORT QByteArray bytesWith(const ProjectText& text, const LineChanges& changes);

/// A keyframe whose line is in another text, and what that line says without its path and view.
struct KeyframeLine {
    FileKeyframe key;
    QByteArray entry;
};

/// By the lines that their values name, which are below `FileValue::noLine`.
using OtherLines = std::map<int, KeyframeLine>;

/// What a line says, without its path and view.
PRM_EXPORT QByteArray entryWithoutView(const ProjectText& text, int line);

/// The fewest changes to a parameter's lines that make it say to a reader of that version what an edit has made of it.
/// Where these are not enough, as with lines in an order that undoes some of them, all its keyframes and values anew,
/// at the place of the first, as a project would be saved. Throws `Problem` when the format cannot hold it, such as two
/// keyframes whose times are written alike.
///
/// Keyframes from `others` are written as these lines are.
PRM_EXPORT LineChanges changedLines(const ProjectText& text, const FileViews& before, const FileParameter& edited,
                                    const ProjectFileVersion& version, const OtherLines& others = {});

} // namespace Prm::document
