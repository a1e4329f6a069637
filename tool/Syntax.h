#pragma once

#include <QStringList>

#include <algorithm>
#include <vector>

namespace Tool {

/// What the command line of one command can have.
struct Syntax {
    struct Value {
        /// As the help calls it, such as FILE; empty for an option without a value.
        QString name;
        QStringList choices;
    };
    struct Option {
        /// With their dashes.
        QStringList names;
        Value value;
    };

    std::vector<Option> options;
    std::vector<Value> positionals;
    /// Whether the last one may be repeated.
    bool isOpen = false;
    bool hasFileList = false;

    /// The value that an option takes; null for other words.
    const Value* valueAfter(const QString& word) const {
        const auto option =
            std::find_if(options.begin(), options.end(), [&](const Option& each) { return each.names.contains(word); });
        return option == options.end() || option->value.name.isEmpty() ? nullptr : &option->value;
    }
};

/// After which files are listed.
inline const QString fileListOption = QStringLiteral("--files");

/// Whether a word belongs to a list of files: "-" is standard input.
inline bool isListed(const QString& word) {
    return word == QLatin1String("-") || !word.startsWith(QLatin1Char('-'));
}

} // namespace Tool
