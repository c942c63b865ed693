// SPDX-License-Identifier: MIT
//
// drives.h: the number and the capacity of the internal disks.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// Counts the internal drives.
///
/// @return the number in pelparam's first line, 0 if the line holds no number or is only a newline,
///         1 if there is no line; a negative number if pelparam could not be run, and its wait
///         status if it failed. A number beyond 32 bits is cut to its low 32 bits, read as a signed
///         number.
///
/// Runs sudo pelparam -d; uses /tmp/GetTovHDDSPID, and removes it unless pelparam could not be run.
/// Traces what failed.
int GetTovHDDS(void);

/// The capacity in GB of the internal disk, or of the mirror if there are two disks.
///
/// @return 0 to 65535; 0 also if the capacity is not known; a larger number is cut to its low 16
///         bits
///
/// Runs fdisk for /dev/sda and, if there are two drives, mdadm for /dev/md0; uses
/// /tmp/vokcontrol2.tmp, which stays if there is one drive or the number is not known. Calls
/// GetTovHDDS. Traces each line, the line read from fdisk's output, and both capacities.
int GetInternalDiskCap(void);

} // extern "C"

/// Measures the space that a share uses.
///
/// @param name  put on the shell line between double quotes, unchanged
/// @param size  the number, in units
/// @param unit  'K', 'M' or 'G', as in a share's record; size and unit are not changed on failure
/// @return 0, or -1 if du could not be run or its output not be read
///
/// Runs du -sk "/share/NAME"; uses /tmp/vokcontrol2.tmp. Traces the line before and after, and the
/// result.
int GetUserCapUsage(const char* name, int* size, char* unit);

#pragma GCC visibility pop
