#!/usr/bin/env bash
# The documents quote the examples. Behind a comment <!-- examples/first_parameter.cpp first --> stands, fenced as code,
# what that file has between two lines // [first], moved to the left margin. Code in C++ that is no quotation is a fault.
# With --write the documents are brought up to date, otherwise what differs is shown.
set -euo pipefail
cd -- "$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")"

# The document with every quotation as its source has it now.
requoted() {
    awk '
        function fault(text) {
            printf "%s:%d: %s\n", FILENAME, FNR, text >"/dev/stderr"
            faults++
        }
        function print_region(path, name, line, lines, count, depth, marks, i) {
            depth = 1000
            while ((getline line <path) > 0) {
                if (line ~ /^ *(\/\/|#) \[[a-z_]+\]$/) {
                    if (line ~ "\\[" name "\\]$") marks++
                } else if (marks == 1) {
                    lines[++count] = line
                    if (line != "" && match(line, /^ */) && RLENGTH < depth) depth = RLENGTH
                }
            }
            close(path)
            if (marks != 2 || count == 0) fault(path " has no region " name)
            for (i = 1; i <= count; i++) print substr(lines[i], depth + 1)
        }
        /^<!-- [^ ]+ [a-z_]+ -->$/ && fence == "" { source = $2; region = $3; print; next }
        /^```/ && fence == "" {
            fence = source == "" ? "other" : "quotation"
            if (fence == "other" && /^```(cpp|c\+\+)/) fault("C++ that is no quotation")
            print
            if (fence == "quotation") { quotations++; print_region(source, region) }
            next
        }
        /^```/ { fence = source = ""; print; next }
        fence == "quotation" { next }
        source != "" { fault("no fenced code behind the comment"); source = "" }
        { print }
        END {
            if (fence != "" || source != "") fault("a quotation without an end")
            if (quotations) printf "%s: %d quotations\n", FILENAME, quotations >"/dev/stderr"
            exit faults > 0
        }' "$1"
}

readarray -t documents < <(find . -maxdepth 1 -name '*.md'; find docs -name '*.md' | sort)
status=0
for document in "${documents[@]}"; do
    if ! text=$(requoted "$document"); then
        status=1
    elif [[ ${1-} == --write ]]; then
        if [[ $text != "$(<"$document")" ]]; then printf '%s\n' "$text" >"$document"; fi
    else
        diff -u --label "$document" --label "the examples" "$document" <(printf '%s\n' "$text") || status=1
    fi
done
exit $status
