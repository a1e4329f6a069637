#pragma once

#include "tool/FileParameter.h"
#include "tool/merge/Judge.h"

namespace Tool {

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
                     Judge& judge);

/// Gives the parameter these data.
void setViews(FileParameter::Data& data, const FileViews& views);

} // namespace Tool
