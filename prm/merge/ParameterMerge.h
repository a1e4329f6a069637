#pragma once

#include "prm/document/FileParameter.h"
#include "prm/merge/KeyframeMerge.h"

namespace Prm::document {

/// A parameter of one of three texts.
struct MergedParameter {
    FileParameter parameter;
    FileViews written;
    /// In the same order, with values that are equal when they mean the same.
    FileViews normal;
};

/// The number of a line of theirs, where lines of ours have numbers of their own.
constexpr int theirLine(int line) {
    return FileValue::noLine - 1 - line;
}

/// What both sides have made of the data of a parameter. Lines of theirs have the numbers of `theirLine`.
FileViews mergeViews(const MergedParameter& base, const MergedParameter& ours, const MergedParameter& theirs,
                     Resolver& resolver, TimeLines& timeLines);

/// Its value or how many keyframes it has, for people; never null.
QString contentOf(const FileViews& views);

/// Gives the parameter these data.
void setViews(FileParameter::Data& data, const FileViews& views);

} // namespace Prm::document
