#!/bin/sh
# SPDX-License-Identifier: MIT
#
# usage: exports_test.sh BUILD
#
# What other programs find in the module's dynamic symbol tables: the operations that cmake/exports.map
# names, and nothing besides; what the module needs of others; and whose system() its lines arrive at.
set -eu

build=$1
source=$(dirname "$0")/..
failures=0

# expect WHAT EXPECTED ACTUAL
expect() {
    if [ "$2" != "$3" ]; then
        printf 'FAILED: %s\n--- expected\n%s\n--- found\n%s\n' "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

defined() {
    nm -D --defined-only "$1" | sed 's/.* //' | LC_ALL=C sort
}

# What headers declare visible, by its name in C.
declared() {
    sed -n '/visibility push(default)/,/visibility pop/ {
        s/^\[\[.*\]\] //
        s/^[A-Za-z][^(]*[ *]\([A-Za-z_0-9]*\)(.*/\1/p
        s/^extern [^"]*[ *]\([A-Za-z_0-9]*\)[[;].*/\1/p
    }' "$source"/*/*.h | LC_ALL=C sort -u
}

operations=$(sed -n 's/^        \([A-Za-z_0-9]*\);$/\1/p' "$source/cmake/exports.map" | LC_ALL=C sort)
linkers=$(sed -n 's|^        \([A-Za-z_0-9]*\); *\/\* linker \*/$|\1|p' "$source/cmake/exports.map")

expect 'the list of exports has what the headers declare' "$(declared)" \
    "$(printf '%s\n' "$operations" | grep -v '^_Z')"
expect 'the library defines the operations and nothing else' \
    "$operations" "$(defined "$build/libvokcontrol.so")"
expect 'the executable defines them too, besides what the linker adds' \
    "$operations" "$(defined "$build/vokcontrol" | grep -vxF "$linkers")"

for product in libvokcontrol.so vokcontrol; do
    expect "$product needs libcrypto and the run-time alone" '' \
        "$(readelf -d "$build/$product" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
            grep -vE '^(ld-linux-[a-z0-9]+|libc|libstdc\+\+|libgcc_s|libm|libcrypto|libasan|libubsan)\.so\.[0-9]+$')"
done

# Programs are linked to the number, and load the library by its short name, too.
expect 'the library has a name with a number' libvokcontrol.so.0 \
    "$(readelf -d "$build/libvokcontrol.so" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')"

# system_of PROGRAM: what its dynamic symbol table has of that name, for all of its libraries.
system_of() {
    nm -D "$build/$1" | sed -n 's/.* \([A-Z] system\)\(@.*\)\?$/\1/p'
}

for program in vokserve vokpage vokcollect; do
    expect "$program stands before the shell" 'T system' "$(system_of "$program")"
done
for product in vokcontrol libvokcontrol.so; do
    expect "$product leaves that to others" 'U system' "$(system_of "$product")"
done

exit $((failures > 0))
