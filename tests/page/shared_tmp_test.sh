#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: shared_tmp_test.sh BUILD
#
# The pages where everybody can write to /tmp: root's take the service's /tmp in its place, and do nothing
# if they cannot. What others have laid down in /tmp is neither read nor written.
#
# shellcheck disable=SC2016,SC2154  # the root's shell expands what stands in single quotes; lib.sh sets build
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/../appliance/lib.sh" "$@"
# shellcheck source=appliance/sandbox.sh
. "$clone/appliance/sandbox.sh"

root=$(sandbox_new_root "$clone")
sandbox_lay_out "$root"
mkdir -p "$root/build" "$root/etc/pelconfig"
echo firsttime=1 >"$root/etc/pelconfig/system_var"
# Whatever the module runs says where its /tmp is.
printf '#!/bin/sh\necho "the module has run" >/tmp/module\n' >"$root/usr/bin/sudo"
chmod +x "$root/usr/bin/sudo"

# visit [BWRAP-OPTION...]: asks for a page that shows the appliance's name, with something laid down in /tmp, and tells what came of it.
visit() {
    sandbox_run "$root" --ro-bind "$build" /build --perms 1777 --tmpfs /tmp --tmpfs /run "$@" -- sh -c '
        echo untouched >/tmp/target
        ln -s /tmp/target /tmp/module
        env -i REQUEST_METHOD=GET PATH_INFO=/setup/administrator HTTP_HOST=localhost \
            LD_LIBRARY_PATH=/build /build/vokpage >/tmp/page 2>/tmp/log </dev/null
        sed -n "s/\r$//; s/^Status: //p; s/^Location: //p" /tmp/page
        cat /tmp/log /tmp/target
        [ ! -e /run/vokcontrol/tmp/module ] || cat /run/vokcontrol/tmp/module
        [ ! -d /run/vokcontrol/tmp ] || stat -c "%a %n" /run/vokcontrol /run/vokcontrol/tmp
        ls /tmp'
}

expect 'root that may mount takes the /tmp of the service' '200 OK
untouched
the module has run
700 /run/vokcontrol
700 /run/vokcontrol/tmp
log
module
page
target' "$(visit --unshare-user --uid 0 --gid 0 --cap-add CAP_SYS_ADMIN)"

expect 'root that may not does nothing, and says why' "500 Internal Server Error
vokpage: others can write to /tmp, and a /tmp of the pages' own cannot be had: Operation not permitted
untouched
700 /run/vokcontrol
700 /run/vokcontrol/tmp
log
module
page
target" "$(visit)"

finish
