#!/bin/sh
# SPDX-License-Identifier: MIT
#
# The tests mirror the sources: each source file of the module and the client has its test, each test
# file is built into a test, and none is switched off.
set -eu
cd "$(dirname "$0")/.."
failures=0

complain() {
    echo "FAILED: $1"
    failures=$((failures + 1))
}

for source in core/*.cpp sharestatus/*.cpp client/*.cpp; do
    # The daemon's main file is one call; daemon_test runs it.
    [ "$source" != sharestatus/main.cpp ] || continue
    test=tests/${source%.cpp}_test.cpp
    [ -f "$test" ] || complain "$source has no $test"
done

for test in tests/*/*_test.cpp; do
    unit=$(basename "$test" _test.cpp)
    grep -qw -- "$unit" tests/CMakeLists.txt || complain "$test is in no target"
done

if grep -nE 'DISABLED_|GTEST_SKIP' tests/*/*_test.cpp; then
    complain 'these tests are switched off'
fi

exit $((failures > 0))
