#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: printed_script_test.sh BUILD
#
# What the module's functions print for pages, run as script: by Node.js, as a browser would.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/../appliance/lib.sh" "$@"

# check WHAT FORM FIELD THIS_PAGE TOV_HDDS: prints script in a root where /usr/bin/php and pelparam are
# what standard input says, and runs it.
check() {
    local script result
    script=$("$clone/tests/run-in-root" "$build" sh -c "$(cat)
        printf '#!/bin/sh\n' >/usr/sbin/tidewaved
        chmod +x /usr/bin/php /usr/sbin/tidewaved /stubs/*
        print_script $2 '$3' 2>/dev/null; echo .")
    result=$(printf '%s' "${script%.}" | node "$here/script_check.mjs" "$4" "$5" 2>&1 >/dev/null) || true
    expect "$1" '' "$result"
}

good="cat >/usr/bin/php <<'PHP'
#!/bin/sh
case \$2 in
tovGetLanguage) echo '<language>german</language>' >\"\$3\" ;;
*) cat >\"\$3\" <<'REPORT' ;;
<HDDInfo>
<hddIndex>0</hddIndex>
<manufacturerVid>Maker</manufacturerVid>
<manufacturerPid>Model</manufacturerPid>
<modelInfo>S1</modelInfo>
<modelCap>500.107</modelCap>
<modelDevName>sda</modelDevName>
</HDDInfo>
<printerInfo>
<printerManufacture>Maker</printerManufacture>
<modelInfo>S2</modelInfo>
<printerName>Laser</printerName>
</printerInfo>
REPORT
esac
PHP
printf '#!/bin/sh\necho 2\n' >/stubs/pelparam"

# A value that ends a line in script, then one that ends a comment and an element in HTML.
line_end=$(printf '\342\200\250')
hostile=${good/Maker/x${line_end}alert(1)//}
hostile=${hostile/Model/--></script><img src=x onerror=alert(1)>}
hostile=${hostile/sda/x--> y<!-- z}
hostile=${hostile/german/x${line_end}alert(1)//}

broken="printf '#!/bin/sh\nexit 1\n' >/usr/bin/php; printf '#!/bin/sh\nexit 1\n' >/stubs/pelparam"

for form in raw page; do
    check "$form: a good appliance" "$form" 3 3 2 <<<"$good"
    check "$form: no step" "$form" '' 0 2 <<<"$good"
    check "$form: a step that is no number" "$form" 'x</script>' 0 2 <<<"$good"
    check "$form: a negative step" "$form" -7 -7 2 <<<"$good"
    check "$form: an appliance whose commands fail" "$form" 1 1 1 <<<"$broken"
done
check 'page: values that try to get out' page 3 3 2 <<<"$hostile"

finish
