#!/usr/bin/env bash
# Writes the manual page of prm, out of what the program says of itself: manual.sh PROGRAM VERSION
set -euo pipefail
readonly program=$1 version=$2
PATH=$(dirname -- "$(readlink -f -- "$program")"):$PATH # so that it calls itself prm, without a path
export LC_ALL=C.UTF-8

commands() {
    prm --help | awk '/^Commands:/ { inside = 1; next } inside && !/^  / { exit } inside { print $1 }'
}

# What every part of the page needs: text that roff does not take for its own.
readonly plain='
    function plain(text) {
        gsub(/\\/, "\\e", text)
        gsub(/-/, "\\-", text)
        return text ~ /^[.'\'']/ ? "\\&" text : text
    }'

overview() {
    prm --help | awk -v version="$version" "$plain"'
        /^Usage: / { usage = substr($0, 8); next }
        usage != "" && purpose == "" && NF {
            purpose = $0
            print ".TH PRM 1 \"\" \"Prm " version "\" \"User Commands\"\n.SH NAME"
            print "prm \\- " plain(tolower(substr(purpose, 1, 1)) substr(purpose, 2, length(purpose) - 2))
            print ".SH SYNOPSIS\n.B " plain(usage) "\n.SH DESCRIPTION\n" plain(purpose)
            next
        }
        /^Commands:/ { inside = 1; next }
        inside && /^  / { next }
        /^Exit codes: / { exit }
        NF { print plain($0) }'
}

# Items are "  key   text"; what is indented further belongs to the text before.
about() {
    prm "$1" --help | awk "$plain"'
        sub(/^Usage: /, "") { print ".SS " plain($0); next }
        !NF { if (verbatim) print ".EE"; verbatim = 0; print ".PP"; next }
        sub(/^Example: */, "") { print ".PP\nExample:\n.PP\n.EX"; verbatim = 1; if (NF) print plain("  " $0); next }
        verbatim { print plain($0); next }
        /^(Options|Arguments):$/ { next }
        /^  [^ ]/ {
            end = match(substr($0, 3), /   *[^ ]/)
            print ".TP\n.B " plain(substr($0, 3, end - 1)) "\n" plain(substr($0, end + RLENGTH + 1))
            next
        }
        { sub(/^ +/, ""); print plain($0) }
        END { if (verbatim) print ".EE" }'
}

exit_status() {
    echo '.SH "EXIT STATUS"'
    prm --help | awk "$plain"'sub(/^Exit codes: /, "") { inside = 1 } inside { print plain($0) }'
}

overview
echo '.SH COMMANDS'
for command in $(commands); do about "$command"; done
exit_status
