# shellcheck shell=bash
# Keeps the temporary files and caches of whatever is run in a folder below
# build/, which goes away with the script. To be sourced from the top folder,
# after packages have been installed: apt's own user may not look in there.

mkdir -p build
TMPDIR=$(mktemp -d "$PWD/build/tmp.XXXXXX")
trap 'rm -rf "$TMPDIR"' EXIT
chmod 711 "$TMPDIR" # some tests do a part of their work as another user
export TMPDIR XDG_CACHE_HOME=$TMPDIR/cache
