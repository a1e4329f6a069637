#!/usr/bin/env bash
# Looks through the reference that ./dev docs has built. Every public class says what it is for, shows an example and
# has a thread rule; the last two may be those of a base class. Classes within classes need the first only. Every link
# leads somewhere.
set -euo pipefail
cd -- "$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")/build/docs"

check_classes() {
    awk '
        function has(what, class, i, count, list) {
            if ((class, what) in found) return 1
            count = split(bases[class], list, " ")
            for (i = 1; i <= count; i++)
                if (has(what, list[i])) return 1
            return 0
        }
        function fault(class, text) { printf "%s: %s\n", name[class], text; faults++ }

        /<compounddef / { match($0, / id="[^"]*"/); class = substr($0, RSTART + 5, RLENGTH - 6); brief = 0 }
        /<compounddef / && /prot="public"/ { classes[class] }
        /^    <compoundname>/ { name[class] = $0; gsub(/ *<[^>]*>/, "", name[class]) }
        /<basecompoundref refid=/ { match($0, /refid="[^"]*"/); bases[class] = bases[class] " " substr($0, RSTART + 7, RLENGTH - 8) }
        /<innerclass / { match($0, /refid="[^"]*"/); inner[substr($0, RSTART + 7, RLENGTH - 8)] }
        brief && /<para>/ { found[class, "purpose"] }
        { brief = /^    <briefdescription>/ }
        /<title>Threads<\/title>/ { found[class, "threads"] }
        /<programlisting/ { found[class, "example"] }
        END {
            for (class in classes) {
                if (!((class, "purpose") in found)) fault(class, "no purpose")
                if (class in inner) continue
                if (!has("example", class)) fault(class, "no example")
                if (!has("threads", class)) fault(class, "no thread rule")
            }
            printf "%d public classes, %d faults\n", length(classes), faults
            exit faults > 0
        }' xml/class*.xml xml/struct*.xml
}

check_links() {
    local link faults=0
    while read -r link; do
        [[ -e html/$link ]] || { echo "no such page: $link"; faults=1; }
    done < <(grep -ohE 'href="[^"#:]+["#]' html/*.html | sed -E 's/^href="(.*).$/\1/' | sort -u)
    return "$faults"
}

status=0
check_classes || status=1
check_links || status=1
exit "$status"
