# shellcheck shell=bash
# What the shell tests of this folder share. To be sourced by a script that is
# given the path of the program and the top folder of the sources.

set -uo pipefail

program=$(realpath "$1")
# shellcheck disable=SC2034 # for those that source this
sources=$(realpath "$2")
PATH=$(dirname "$program"):$PATH

work=$(mktemp -d)
trap 'cleanUp' EXIT
cd "$work" || exit 1

# To be replaced by a test that starts something.
stopAll() { :; }

cleanUp() {
    stopAll
    rm -rf "$work"
}

fail() {
    echo "FAILED: $1" >&2
    exit 1
}

# equal <what> <actual> <expected>
equal() {
    [[ $2 == "$3" ]] || fail "$1 is $(printf %q "$2"), expected $(printf %q "$3")"
}

# need <program> <Debian package>: CTest takes exit status 77 for a skipped test.
need() {
    if ! PATH=$PATH:/usr/sbin command -v "$1" >/dev/null; then
        echo "skipped: $1 is not installed (Debian package $2)" >&2
        exit 77
    fi
}

# Every file of a folder with its content, to compare folders by.
tree() {
    (cd "$1" && find . -type f -exec sha256sum {} + | LC_ALL=C sort -k 2)
}

# The number of pages of a fax; each has one such line.
pages() {
    tiffinfo "$1" 2>/dev/null | grep -c 'Compression Scheme: CCITT'
}

# makeDocuments <count> <gs device> <output pattern>: numbered one-page documents.
makeDocuments() {
    gs -q -sDEVICE="$2" -r40 -o "$3" -c \
        "/Helvetica 60 selectfont 1 1 $1 { 72 500 moveto 20 string cvs show showpage } for"
}
