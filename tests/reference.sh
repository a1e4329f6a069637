#!/usr/bin/env bash
# Looks through the reference that ./dev docs has built: every link leads somewhere.
set -euo pipefail
cd -- "$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")/build/docs"

check_links() {
    local link faults=0
    while read -r link; do
        [[ -e html/$link ]] || { echo "no such page: $link"; faults=1; }
    done < <(grep -ohE 'href="[^"#:]+["#]' html/*.html | sed -E 's/^href="(.*).$/\1/' | sort -u)
    return "$faults"
}

check_links
