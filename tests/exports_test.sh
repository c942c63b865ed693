#!/bin/sh
# SPDX-License-Identifier: MIT
#
# usage: exports_test.sh BUILD
#
# What other programs find in the module's dynamic symbol tables: the operations by their names, and
# nothing besides; what the module needs of others; and whose system() its lines arrive at.
set -eu

build=$1
failures=0

# expect WHAT EXPECTED ACTUAL
expect() {
    if [ "$2" != "$3" ]; then
        printf 'FAILED: %s\n--- expected\n%s\n--- found\n%s\n' "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

# What AddressSanitizer adds of its own does not count.
defined() {
    nm -D --defined-only "$1" | sed 's/.* //' | grep -v '^__odr_asan' | LC_ALL=C sort
}

operations='GetInternalDiskCap
GetTovHDDS
GetUserBkStatus
GetUserCapUsage
ParseShareInfo
Read_Status_file
SendReturnStatus
_Z15GetUserCapUsagePKcPiPc
checkNtPassword
closeSmbPasswd
cmd_crat
cmd_frst
cmd_getv
cmd_gps1
cmd_gpsn
cmd_gpvt
cmd_grst
cmd_gsp1
cmd_gspc
cmd_gub1
cmd_host
cmd_lsts
cmd_lstu
cmd_pshr
cmd_qlps
cmd_shar
cmd_spvt
cmd_sub1
cmd_subs
cmd_vers
cmd_wags
cmd_wall
cmd_warp
cmd_wasu
create_shar
dbg_trace
fin_buf
fout_buf
getBuildInfo
getDriveInfos
getInternalHDDDev
getInternalHDDIndex
getSysVar
getSystemVar
getUsersList
getvar
init_cmd_buffer
isNameAllowed
isShareNameExisted
isUserExisted
kyteGetVar
kytegetSysVar
openSmbPasswd
printNextPage
printTovHDDs
process_command
readSmbPasswdEntry
removeFile
rewindSmbPasswd
save_cmd_cnt
setSysVar
setUserPrivilege
setvar
share_info
startPelStatus
tideWaveFunc'

linkers='^(_(start|init|fini|end|edata|bss_end__|IO_stdin_used)|__(data_start|bss_start(__)?|bss_end__|end__)|data_start)$'
expect 'the library defines the operations and nothing else' \
    "$operations" "$(defined "$build/libvokcontrol.so")"
expect 'the executable defines them too, besides what the linker adds' \
    "$operations" "$(defined "$build/vokcontrol" | grep -vE "$linkers")"

for product in libvokcontrol.so vokcontrol; do
    expect "$product needs libcrypto and the run-time alone" '' \
        "$(readelf -d "$build/$product" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' |
            grep -vE '^(ld-linux-[a-z0-9]+|libc|libstdc\+\+|libgcc_s|libm|libcrypto|libasan|libubsan)\.so\.[0-9]+$')"
done

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
