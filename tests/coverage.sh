#!/usr/bin/env bash
# Says what the tests reached of the sources, after they ran in the build that is named (preset "asan"), and fails
# where that is too little of the library. By file, with each line and branch that was not reached: <build>/coverage.txt.
# What docs/coverage.md says of those counts here like all others.
set -euo pipefail
cd -- "$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")"
build=$1
wanted_lines=95
wanted_branches=85

# Each condition in a source has two branches. A template's was taken when one of its instances took it. Inline functions
# that one binary does not use "mismatch" what others counted of them: that is no fault.
annotated_sources() {
    local objects object sources arguments=()
    llvm-profdata merge -sparse "$build"/profiles/*.profraw -o "$build/tests.profdata"
    readarray -t objects < <(find "$build"/bin "$build"/lib -type f -executable)
    for object in "${objects[@]:1}"; do
        arguments+=(-object "$object")
    done
    readarray -t sources < <(find "$PWD"/{host,prm,tool} -name '*.cpp' -o -name '*.h' -o -name '*.hpp')
    llvm-cov show "${objects[0]}" "${arguments[@]}" -instr-profile "$build/tests.profdata" -show-branches=count \
        -show-instantiations=false "${sources[@]}" 2> >(grep -v 'mismatched data' >&2)
}

missed() {
    awk -v root="$PWD/" -v wanted_lines="$wanted_lines" -v wanted_branches="$wanted_branches" '
        function percent(part, all) { return all ? 100 * part / all : 100 }
        function put(name, lines, missed_lines, branches, missed_branches) {
            return sprintf("%-45s %6d lines %6.2f %%   %6d branches %6.2f %%", name, lines,
                percent(lines - missed_lines, lines), branches, percent(branches - missed_branches, branches))
        }
        index($0, root) == 1 && /:$/ {
            file = substr($0, length(root) + 1, length($0) - length(root) - 1)
            files[++file_count] = file
        }
        /^ *[0-9]+\| *[0-9.]+[kMGTP]?\|/ {
            split($0, field, "|")
            ++lines[file]
            if (field[2] + 0 == 0) {
                ++missed_lines[file]
                missed_text[file] = missed_text[file] substr($0, 1, 5) "|" substr($0, index($0, field[3])) "\n"
            }
        }
        # Instances of a template are listed one behind the other.
        /^  \|  Branch \(.*True/ {
            match($0, /[0-9]+:[0-9]+/)
            position = substr($0, RSTART, RLENGTH)
            key = file SUBSEP position
            if (!(key in reached)) {
                reached[key] = ""
                places[file] = places[file] " " position
            }
            when_true = when_false = $0
            sub(/.*True: /, "", when_true)
            sub(/.*False: /, "", when_false)
            if (when_true + 0) reached[key] = reached[key] "T"
            if (when_false + 0) reached[key] = reached[key] "F"
        }
        END {
            for (i = 1; i <= file_count; ++i) {
                file = files[i]
                count = split(places[file], place, " ")
                branches = 2 * count
                missed_branches = 0
                text = ""
                for (j = 1; j <= count; ++j) {
                    how = reached[file SUBSEP place[j]]
                    if (how !~ /T/) { ++missed_branches; text = text "  " place[j] " never true\n" }
                    if (how !~ /F/) { ++missed_branches; text = text "  " place[j] " never false\n" }
                }
                print put(file, lines[file], missed_lines[file], branches, missed_branches)
                printf "%s%s", missed_text[file], text
                folder = substr(file, 1, index(file, "/"))
                all[folder] += lines[file]; all_missed[folder] += missed_lines[file]
                all_branches[folder] += branches; all_missed_branches[folder] += missed_branches
            }
            count = split("host/ tool/ prm/", part, " ")
            for (i = 1; i <= count; ++i) {
                folder = part[i]
                print put(folder, all[folder], all_missed[folder], all_branches[folder], all_missed_branches[folder])
            }
            library = "prm/"
            exit percent(all[library] - all_missed[library], all[library]) < wanted_lines ||
                percent(all_branches[library] - all_missed_branches[library], all_branches[library]) < wanted_branches
        }'
}

status=0
annotated_sources | missed >"$build/coverage.txt" || status=1
tail -n 3 "$build/coverage.txt"
exit "$status"
