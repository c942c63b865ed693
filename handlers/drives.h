// SPDX-License-Identifier: MIT
//
// drives.h: the internal disks, how many they are and what they hold.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// Counts the internal drives.
///
/// @return the number in pelparam's first line, 0 where that holds none or is only a newline, and 1
///         where there is no line; a negative number when pelparam could not be run, and its raw
///         wait status when it failed. Of a larger number than 32 bits hold, the low 32 count, as a
///         signed number.
///
/// Runs sudo pelparam -d; uses /tmp/GetTovHDDSPID, and removes that unless pelparam could not be
/// run. Traces what failed.
int GetTovHDDS(void);

/// The capacity of the internal disk, or of the mirror that two of them make, in GB.
///
/// @return 0 to 65535; 0 also where nothing tells it, and of a larger number the low 16 bits
///
/// Runs fdisk for /dev/sda and, where there are two drives, mdadm for /dev/md0; uses
/// /tmp/vokcontrol2.tmp, which stays where there is one drive or the number is not known. Calls
/// GetTovHDDS. Traces each line, what was read of fdisk's output, and both figures.
int GetInternalDiskCap(void);

} // extern "C"

/// Measures the space that a share uses.
///
/// @param name  put on the shell line between double quotes as it stands
/// @param size  the number, in units
/// @param unit  'K', 'M' or 'G', as in a share's record; both are left alone on failure
/// @return 0, or -1 when du could not be run or its output not be read
///
/// Runs du -sk "/share/NAME"; uses /tmp/vokcontrol2.tmp. Traces the line before and after, and the
/// result.
int GetUserCapUsage(const char* name, int* size, char* unit);

#pragma GCC visibility pop
