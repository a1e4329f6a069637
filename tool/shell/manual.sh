#!/usr/bin/env bash
# Writes the manual pages of prm and of its commands, out of what the program says of itself: manual.sh PROGRAM VERSION FOLDER
set -euo pipefail
readonly program=$1 version=$2 folder=$3
PATH=$(dirname -- "$(readlink -f -- "$program")"):$PATH # so that it calls itself prm, without a path
export LC_ALL=C.UTF-8

commands() {
    prm --help | awk '/^Commands:/ { inside = 1; next } inside && !/^  / { exit } inside { print $1 }'
}

# What every part of a page needs: text that roff does not take for its own, and the beginning.
readonly shared='
    function plain(text) {
        gsub(/\\/, "\\e", text)
        gsub(/-/, "\\-", text)
        return text ~ /^[.'\'']/ ? "\\&" text : text
    }
    function start(name, usage, purpose) {
        print ".TH " toupper(name) " 1 \"\" \"Prm " version "\" \"User Commands\"\n.SH NAME"
        print plain(name) " \\- " plain(tolower(substr(purpose, 1, 1)) substr(purpose, 2, length(purpose) - 2))
        print ".SH SYNOPSIS\n.B " plain(usage) "\n.SH DESCRIPTION\n" plain(purpose)
    }'

overview() {
    prm --help | awk -v version="$version" "$shared"'
        /^Usage: / { usage = substr($0, 8); next }
        usage != "" && purpose == "" && NF { start("prm", usage, purpose = $0); next }
        /^Commands:/ { inside = 1; next }
        inside && /^  / { next }
        /^Exit codes: / { exit }
        NF { print plain($0) }'
    echo '.SH COMMANDS'
    prm --help | awk "$shared"'
        /^Commands:/ { inside = 1; next }
        inside && !/^  / { exit }
        inside { name = $1; sub(/^ +[^ ]+ +/, ""); print ".TP\n.BR prm\\-" name " (1)\n" plain($0) }'
}

# Items are "  key   text"; what is indented further belongs to the text before.
about() {
    prm "$1" --help | awk -v name="prm-$1" -v version="$version" "$shared"'
        sub(/^Usage: /, "") { usage = $0; next }
        usage != "" && !isBegun { start(name, usage, $0); isBegun = 1; next }
        !NF { next }
        sub(/^Example: */, "") { print ".SH EXAMPLES\n.EX"; isVerbatim = 1; if (NF) print plain($0); next }
        isVerbatim { sub(/^ +/, ""); print plain($0); next }
        /^(Options|Arguments):$/ { sub(/:/, ""); print ".SH " toupper($0); next }
        /^  [^ ]/ {
            end = match(substr($0, 3), /   *[^ ]/)
            print ".TP\n.B " plain(substr($0, 3, end - 1)) "\n" plain(substr($0, end + RLENGTH + 1))
            next
        }
        { sub(/^ +/, ""); print plain($0) }
        END { if (isVerbatim) print ".EE" }'
}

exit_status() {
    echo '.SH "EXIT STATUS"'
    prm --help | awk "$shared"'sub(/^Exit codes: /, "") { inside = 1 } inside { print plain($0) }'
}

mkdir -p -- "$folder"
{ overview && exit_status; } >"$folder/prm.1"
for command in $(commands); do
    { about "$command" && exit_status && printf '.SH "SEE ALSO"\n.BR prm (1)\n'; } >"$folder/prm-$command.1"
done
