#!/usr/bin/env bash
# The man page of a companion program is formatted without a warning, has the
# version of the converter and names every option of --help.
source "$(dirname "$0")/check.sh"
need man man-db
page=$3
name=$(basename "$page" .1)

equal "what the formatter says" \
    "$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)" ""
version=$("$program" --version)
equal "the version" "$(sed -n 's/^\.TH .* "morvaltide \([0-9.]*\)" .*/\1/p' "$page")" \
    "${version##* }"

text=$(LC_ALL=C.UTF-8 MANWIDTH=200 man -E ASCII --no-hyphenation -l "$page" | col -b)
options=$("$sources/companions/$name" --help | grep -oE -- '--[a-z][a-z-]+' | sort -u)
[[ $options ]] || fail "$name --help names no option"
for option in $options; do
    [[ $text == *"$option"* ]] || fail "the man page does not tell of $option"
done
