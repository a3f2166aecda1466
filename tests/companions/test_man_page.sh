#!/usr/bin/env bash
# The man page of a companion is formatted without a warning, and explains every
# option that its --help has:
#
#   test_man_page.sh PROGRAM SOURCES COMPANION PAGE
# shellcheck source=../packaging/check.sh
source "$(dirname "$0")/../packaging/check.sh"
need man man-db
companion=$3
page=$4

equal "what the formatter says" \
    "$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)" ""
version=$("$program" --version)
equal "the version of the page" "$(sed -n 's/^\.TH .* "morvaltide \([0-9.]*\)" .*/\1/p' "$page")" \
    "${version##* }"
equal "the version of $companion" "$("$sources/companions/$companion" --version)" \
    "$companion version ${version##* }"

text=$(LC_ALL=C.UTF-8 MANWIDTH=80 man -E ASCII -l "$page" | col -b)
options=$("$sources/companions/$companion" --help | grep -oE '(^|[ ,])--?[a-zA-Z][a-z-]*' | tr -d ' ,' | sort -u)
(($(wc -l <<<"$options") >= 4)) || fail "--help has no options: $options"
while read -r option; do
    grep -qE -- "(^|[ ,])$option([ ,.:)]|$)" <<<"$text" || fail "the page does not explain $option"
done <<<"$options"
