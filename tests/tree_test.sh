#!/bin/sh
# SPDX-License-Identifier: MIT
#
# usage: tree_test.sh BUILD
#
# Tests that the tests match the sources: each source file of the module, guard, client, pages, view, history and configuration
# has its test, each test file is built into a test, and none is disabled. Also tests that no folder includes a
# header that the table in docs/architecture.md does not allow.
set -eu
build=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
failures=0
ctest --test-dir "$build" --show-only >"$build/tests.list"

complain() {
    echo "FAILED: $1"
    failures=$((failures + 1))
}

for source in guard/*.cpp core/*.cpp sharestatus/*.cpp cmdsvc/*.cpp handlers/*.cpp pagehelpers/*.cpp service/*.cpp \
    client/*.cpp config/*.cpp history/*.cpp page/*.cpp text/*.cpp view/*.cpp; do
    # These only connect other files: daemon_test, server_test and guard_test.sh run the programs.
    case $source in sharestatus/main.cpp | service/main.cpp | guard/system.cpp) continue ;; esac
    test=tests/${source%.cpp}_test.cpp
    [ -f "$test" ] || complain "$source has no $test"
done

for test in tests/*/*_test.cpp; do
    unit=${test#tests/}
    grep -q ": ${unit%_test.cpp}\$" "$build/tests.list" ||
        complain "$test is in no target"
done

if grep -nE 'DISABLED_|GTEST_SKIP' tests/*/*_test.cpp; then
    complain 'these tests are switched off'
fi

scripts/include-arrows || complain 'docs/architecture.md does not allow these'

exit $((failures > 0))
