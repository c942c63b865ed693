# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# lib.sh: what tests of the sample appliance share. Source it with the build folder as argument.

build=$(cd -- "$1" && pwd)
clone=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
# shellcheck source=tests/support/expect.sh
. "$clone/tests/support/expect.sh"

# A folder for roots of this test's own, so that it sees what is left behind.
mkdir -p "$clone/build/roots"
roots=$(mktemp -d "$clone/build/roots/test.XXXXXX")
trap 'chmod -R u+rwX "$roots" && rm -rf "$roots"' EXIT
export VOKCONTROL_ROOTS=$roots

appliance() {
    local -a options=(--build "$build" --host-disk)
    "$clone/appliance/start" "${options[@]}" "$@"
}

# Functions for a shell inside the appliance.
# shellcheck disable=SC2016,SC2034  # that shell is to expand them; who sources this uses them
inside_helpers='
    # What a command says, and how it ends.
    try() {
        code=0
        said=$("$@" 2>&1) || code=$?
        echo "$said = $code"
    }

    sql() {
        php -r "foreach ((new PDO(\"sqlite:/usr/private/appliance.db\"))
                    ->query(\$argv[1])->fetchAll(PDO::FETCH_NUM) as \$row) {
                    echo implode(\"|\", \$row), \"\n\";
                }" "$1"
    }
'
