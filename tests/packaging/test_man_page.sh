#!/usr/bin/env bash
# The man page is formatted without a warning and has all its sections.
source "$(dirname "$0")/check.sh"
need man man-db
page=$3

equal "what the formatter says" \
    "$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)" ""
equal "the list of sections" "$(sed -n 's/^\.SH //p' "$page" | paste -sd ,)" \
    "NAME,SYNOPSIS,DESCRIPTION,OPTIONS,MARGINS,DOCUMENTS,EXIT STATUS,MESSAGES,ENVIRONMENT,FILES,\
EXAMPLES,LIMITS,SEE ALSO"
version=$("$program" --version)
equal "the version" "$(sed -n 's/^\.TH .* "morvaltide \([0-9.]*\)" .*/\1/p' "$page")" \
    "${version##* }"
