#!/usr/bin/env bash
# systemd has nothing to say against the units of the watched folder.
# shellcheck source=../packaging/check.sh
source "$(dirname "$0")/../packaging/check.sh"
need systemd-analyze systemd

mkdir units
cp "$sources"/packaging/systemd/morvaltide-watch.* units
# The program has to exist for the check.
sed -i "s|/usr/bin/morvaltide-watch|$sources/companions/morvaltide-watch|" units/*.service
verify() {
    systemd-analyze verify --man=no units/morvaltide-watch.path units/morvaltide-watch.service 2>&1 |
        grep morvaltide
}
equal "what systemd says of the units" "$(verify)" ""
# It does say something if there is something.
sed -i 's/^Type=oneshot/Type=onshot/' units/*.service
[[ $(verify) == *onshot* ]] || fail "a wrong unit is not found"
grep -qx 'ExecStart=/usr/bin/morvaltide-watch /var/spool/morvaltide' \
    "$sources/packaging/systemd/morvaltide-watch.service" || fail "another program is started"
# Without them the converter leaves its own fence out.
for call in landlock_create_ruleset landlock_add_rule landlock_restrict_self seccomp; do
    grep -qw "^SystemCallFilter=.*$call" "$sources/packaging/systemd/morvaltide-watch.service" ||
        fail "the service may not call $call"
done
