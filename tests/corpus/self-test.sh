#!/usr/bin/env bash
# Shows that the corpus script finds what it looks for, and that damage is always
# the same.
#
#   self-test.sh PROGRAM SOURCES CASE
set -euo pipefail

program=$1 sources=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/documents"

fail() {
    echo "$1" >&2
    exit 1
}

corpus() {
    "$sources/tests/corpus/run" --jobs 2 "$@" "$scratch/documents"
}

# expect STATUS TEXT ARGUMENT...: the script ends so, and prints this.
expect() {
    local expected=$1 text=$2 status=0 report
    shift 2
    report=$(corpus "$@") || status=$?
    if ((status != expected)) || ! grep -qF -- "$text" <<<"$report"; then
        fail "Not status $expected and \"$text\", but $status and: $report"
    fi
}

# expectFound TEXT SCRIPT: of a program that is this script, TEXT is said.
expectFound() {
    cp "$sources/samples/chart.png" "$scratch/documents/"
    printf '#!/bin/bash\n%s\n' "$2" >"$scratch/program"
    chmod +x "$scratch/program"
    expect 1 "$1" --program "$scratch/program" --timeout "${3-60}"
}

# The name of the output is in front of the last two arguments.
readonly writeOutput='output=${*: -3:1}; echo page >"$output"'

case $3 in
Good)
    cp "$sources"/samples/{report.pdf,chart.png} "$scratch/documents/"
    echo "no picture" >"$scratch/documents/text.png"
    expect 0 "3 documents, 21 runs: 15 converted, 6 refused" --program "$program"
    expect 0 "30 runs: 21 converted, 9 refused" --program "$program" --compare "env A=b $program"
    ;;
Crash) expectFound "crash: $scratch/documents/chart.png" 'ulimit -c 0; kill -SEGV $$' ;;
Sanitizer) expectFound "crash:" "$writeOutput; echo 'a.cpp:1: runtime error: overflow' >&2" ;;
Status) expectFound "status:" 'exit 3' ;;
Leftover) expectFound "leftover:" "$writeOutput; echo \"can't go on\" >&2; exit 1" ;;
StrangeFile) expectFound "leftover:" "$writeOutput; touch strange" ;;
NoFile) expectFound "no file:" 'exit 0' ;;
Silence) expectFound "silence:" 'exit 1' ;;
Words) expectFound "words:" "$writeOutput; echo words" ;;
Timeout) expectFound "time-out:" 'exec sleep 600' 0.5 ;;
Memory) expectFound "difference:" "$writeOutput"'; echo $MALLOC_PERTURB_ >"$output"' ;;
Ghostscript)
    cp "$sources/samples/report.pdf" "$scratch/documents/"
    # shellcheck disable=SC2016 # for the program
    expectFound "redirected gs: files" "$writeOutput"'; command -v gs >"$output"'
    ;;
OtherProgram)
    cp "$sources/samples/chart.png" "$scratch/documents/"
    expect 1 "difference:" --program "$program" --compare "$program -c g4 -r superfine"
    ;;
OtherMessage)
    cp "$sources/samples/chart.png" "$scratch/documents/"
    # shellcheck disable=SC2016 # for the program
    for word in this that; do
        printf '#!/bin/bash\n%s; echo "%s of $output" >&2\n' "$writeOutput" "$word" >"$scratch/$word"
        chmod +x "$scratch/$word"
    done
    expect 0 "0 findings" --program "$scratch/this" --compare "$scratch/this"
    expect 1 "difference:" --program "$scratch/this" --compare "$scratch/that"
    ;;
NoDocuments) expect 2 "" --program "$program" ;;
Damage)
    for target in first second; do
        "$sources/tests/corpus/damage" 1 12 "$sources/samples" "$scratch/$target"
    done
    "$sources/tests/corpus/damage" 2 12 "$sources/samples" "$scratch/other"
    diff -r "$scratch/first" "$scratch/second" || fail "The same seed gives other files"
    ! diff -rq "$scratch/first" "$scratch/other" >/dev/null || fail "Another seed does not"
    files=("$scratch"/first/*)
    ((${#files[@]} == 12)) || fail "${#files[@]} files instead of 12"
    for file in "${files[@]}"; do
        original=$sources/samples/${file##*-}
        ! cmp -s "$file" "$original" || fail "$file is not damaged"
    done
    ;;
*) fail "There is no case $3" ;;
esac
