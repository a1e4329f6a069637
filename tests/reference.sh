#!/usr/bin/env bash
# Looks through the reference that ./dev docs has built. Every public class says what it is for, shows an example and
# has a thread rule; the last two may be those of a base class. Classes within classes need the first only. Every link
# leads to a page and a place that exist. No page shows the markup that it was made of.
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

# A link leads to a page, or to a place on a page, which has that id or name. Doxygen itself writes a link to nested
# classes also where all of these are hidden.
check_links() {
    awk '
        { file = FILENAME; sub(/^html\//, "", file) }
        FNR == 1 { pages[file] }
        {
            line = $0
            while (match(line, /(href|id|name)="[^"]*"/)) {
                attribute = substr(line, RSTART, RLENGTH)
                line = substr(line, RSTART + RLENGTH)
                split(attribute, part, "\"")
                if (attribute !~ /^href/) places[file "#" part[2]]
                else if (part[2] !~ /^[a-z]+:|#nested-classes$/) links[(part[2] ~ /^#/ ? file : "") part[2]] = file
            }
        }
        END {
            for (link in links) {
                page = link
                sub(/#.*/, "", page)
                isPage = page in pages || system("test -e \"html/" page "\"") == 0
                if (isPage && (link == page || link ~ /#$/ || link in places)) continue
                printf "%s: leads nowhere: %s\n", links[link], link
                faults++
            }
            exit faults > 0
        }' html/*.html
}

# Markup in the text of a page: a tag as text, a command of Doxygen, a link, a row of a table. Code may show anything.
check_markup() {
    awk '
        FNR == 1 { inCode = 0 }
        /<div class="fragment">|<pre/ { inCode = 1 }
        !inCode {
            text = $0
            gsub(/<code>[^<]*<\/code>/, "", text)
            gsub(/<[^>]*>/, "", text)
            if (text ~ /&lt;\/?(tt|code|em|strong|table|h[1-6])&gt;|[@\\](section|subsection|anchor|ref|snippet|par|threads)([ .,]|$)|\]\([^ )]|`[^`]+`|\*\*[^*]+\*\*|^ *\|.*\||\|[-:]+\|/) {
                printf "%s:%d: shows its markup: %.80s\n", FILENAME, FNR, text
                faults++
            }
        }
        /<\/div><!-- fragment -->|<\/pre>/ { inCode = 0 }
        END { exit faults > 0 }' $(ls html/*.html | grep -v '_source\.html$')
}

# Programs include a header from the root of what is installed.
check_includes() {
    local line faults=0
    while read -r line; do
        [[ $line == *'#include &quot;'*/* ]] || { echo "not as programs include it: $line"; faults=1; }
    done < <(grep -H '<code>#include ' html/*.html)
    return "$faults"
}

status=0
for check in check_classes check_links check_markup check_includes; do
    "$check" || status=1
done
exit "$status"
