/* SPDX-License-Identifier: MIT */
/*
 * vokcontrol.h: the public interface of the vokcontrol module, for C and C++.
 *
 * Page engines and callers of the command service use these operations; libvokcontrol.so has them
 * and the executable exports them in its dynamic symbol table. The module is single-threaded: no
 * two operations may run at once in one process. Most operations control the appliance through
 * shell lines and trace what they do to /tmp/dbg_vokcontrol.txt; the comment of each says what it
 * runs and traces.
 */
#pragma once

#include <stdint.h>

/* The answer to request number N is in the file of this name with N, in decimal, after it. */
#define VOK_ANSWER_FILE "/tmp/outbuf"

/* The largest request, in bytes. */
#define VOK_REQUEST_SIZE 4096

/* Where the command usage is kept, and its size in bytes. */
#define VOK_USAGE_FILE "/etc/pelconfig/vokcontrol/vokcontrol_cmd_used"
#define VOK_USAGE_SIZE 168

#ifdef __cplusplus
extern "C" {
#endif

#pragma GCC visibility push(default)

/*
 * Removes files that belong to root.
 *
 *   path    NUL-terminated, put on the shell line unchanged and unquoted: a blank in it names two
 *           files. The whole line is cut at 511 characters.
 *   result  what system() returned, unchanged: 0 if rm succeeded, a wait status otherwise, -1 if
 *           the shell could not be started.
 *   runs    sudo rm -f PATH
 *   traces  nothing
 */
int removeFile(const char* path);

/*
 * Reads the share status that the collector last published.
 *
 *   buffer  4096 bytes. On success the payload is at its start (a 10-byte header with the number of
 *           records, 16 bits little-endian, at offset 5; then the records). On failure its content
 *           is not meaningful.
 *   result  the payload's length in bytes, 0 to 4096. 0 also means that there is no data: no file,
 *           a length below 1 or above 4097, a file cut short, a wrong checksum.
 *   reads   /etc/pelconfig/vokcontrol/__shrStatus
 *   traces  the file and its length word, the length again, and both checksums; or why the file
 *           could not be opened
 */
int Read_Status_file(char* buffer);

/*
 * Starts the collector, under its name "pelstatus", unless it is found among the processes. Does
 * nothing if the processes cannot be listed.
 *
 *   runs    ps | grep pelstatus> /tmp/startPelStatusPID; startapp pelstatus if it does not run
 *   writes  /tmp/startPelStatusPID (PID: the caller's process id), and removes it unless the search
 *           failed
 *   traces  that it runs already, the result of the start, or what failed
 */
void startPelStatus(void);

/*
 * ---- The appliance's variables ------------------------------------------------------------------
 *
 * A read operation returns a NUL-terminated text of at most 511 characters in a buffer of its own,
 * which its next call overwrites; never a null pointer. The text is empty if there is no value, and
 * on every failure.
 */

/*
 * Reads a variable. These names are asked of the appliance at that moment, all others are read from
 * the file /etc/pelconfig/system_var:
 *
 *   lan_ipaddr, lan_hwaddr, lan_proto, lan_gateway, lan_netmask    getSystemVar, kinds 1 to 5
 *   machine_name     kytegetSysVar("<nmbdSysname>", "tovGetNmbdSysname")
 *   pel_language     a digit for kytegetSysVar("<language>", "tovGetLanguage"): english 1,
 *                    french 2, german 3, spanish 4, italian 5, chinese (traditional too) 6,
 *                    others 1
 *   build_version    getBuildInfo
 *
 *   name    taken literally; it matches at the start of a line, up to blanks or tabs and a "="
 *   result  the first matching line's text after the "=" and its blanks, without CR and LF
 *   locks   /etc/pelconfig/system_var_lck, shared, if it exists
 *   prints  to standard output, in a script comment, why the file could not be opened
 */
const char* getvar(const char* name);

/*
 * Writes a variable: replaces every line of that name, or appends one. All other lines keep their
 * bytes and their order. Writers wait for each other and for readers.
 *
 *   result  0, or -1 if the file or its copy could not be opened, or the copy not be written whole;
 *           the variables are then unchanged (the copy and a new backup may stay)
 *   locks   /etc/pelconfig/system_var_lck, exclusively; creates it
 *   writes  /etc/pelconfig/system_var, which must exist; system_var_tmp beside it stays as a second
 *           link to the new version, system_var_bak is the previous version. The new version has the
 *           owner and the mode of the previous one, as far as the process may set them
 */
int setvar(const char* name, const char* value);

/*
 * Reads a network setting from the output of the network tools.
 *
 *   ignored  has no effect
 *   kind     1 address, 2 hardware address, 3 "dhcp_client", 4 gateway, 5 network mask; others are
 *            empty
 *   runs     ifconfig or route, and grep, into /tmp/getsetvarPID; then sudo rm -f on that
 *   prints   to standard error: the result
 */
const char* getSystemVar(const char* ignored, int kind);

/*
 * Calls a function of the system script. Returns the text after a key in its output, up to the next
 * "<" or the end of the line with its newline. If several lines hold the key, the last one counts.
 *
 *   runs    sudo /usr/bin/php /etc/inc/api_system.php FUNCTION /tmp/getSysVarPID
 *   traces  only getSysVar: the line and its result, and the value; or what failed
 */
const char* getSysVar(const char* key, const char* apiFunction);
const char* kytegetSysVar(const char* key, const char* apiFunction);

/*
 * The same for any command line that takes the name of its output file as last argument. It prints
 * what getSysVar traces, in script comments on standard output.
 *
 *   runs    COMMAND /tmp/getSysVarPID
 */
const char* kyteGetVar(const char* command, const char* key);

/*
 * Calls a function of the system script with one argument, which is put on the shell line as it is.
 *
 *   result  0, or -1 if the line failed (its output then stays in /tmp/setSysVarPID)
 *   runs    sudo /usr/bin/php /etc/inc/api_system.php FUNCTION VALUE > /tmp/setSysVarPID
 *   traces  the line and its result
 */
int setSysVar(const char* value, const char* apiFunction);

/*
 * The first line of /etc/buildinfo.txt, without its newline.
 */
const char* getBuildInfo(void);

/*
 * ---- Commands ---------------------------------------------------------------------------------
 */

/*
 * The request. A caller puts the frame here and zeros after it: a command code of four characters,
 * a blank, the parameter count as 32 bits little-endian, and the parameters.
 */
extern char fin_buf[VOK_REQUEST_SIZE];

/*
 * Runs the request in fin_buf.
 *
 *   number  names the answer file; callers that run at the same time need different numbers
 *   result  0 if the command was run, even if it answered an error, or is one that is ignored; -1
 *           for an unknown command, an answer file that cannot be opened, and a wrong parameter
 *           count of getv, wags, wall, warp and wasu; for a wrong count of the others, what the
 *           shell returned for the last trace (usually 0)
 *   writes  /tmp/outbufNUMBER. It is empty if the command was ignored, is not known or failed
 *           before it answered. After a wrong count or an unknown command it is complete only when
 *           the process has ended through exit() or the next request has begun.
 *   traces  the code and the count, and what the command traces
 */
int process_command(int number);

/*
 * How often each command was received: 21 slots of a command code (four characters) and a counter
 * (32 bits little-endian). The usage file holds the same bytes. A new table is all zeros.
 */
typedef struct CommandUsage {
    unsigned char bytes[VOK_USAGE_SIZE];
} CommandUsage;

/*
 * Prepares a table: reads the usage file if there is one, else leaves all counters unchanged. A
 * table that is prepared already is not changed.
 *
 *   reads   /etc/pelconfig/vokcontrol/vokcontrol_cmd_used
 *   traces  whether the file was read
 */
void init_cmd_buffer(CommandUsage* table);

/*
 * Counts a command, and writes the table to the usage file if the last save was more than 300
 * seconds ago.
 *
 *   table     may be null: then nothing is counted
 *   lastSave  time of the last save, in seconds since the epoch; updated by each save. Start with
 *             0: then the file is written at once. After a time in the future the next save waits
 *             until the clock is 300 seconds past it. From 2038 to 2106 the seconds are negative
 *             numbers.
 *   code      the first four bytes of the request as a little-endian word
 *   writes    /etc/pelconfig/vokcontrol/vokcontrol_cmd_used, in place. If that fails, the next
 *             count tries again.
 *   traces    the code, whether it has no slot of its own, and the result of the save
 */
void save_cmd_cnt(CommandUsage* table, int32_t* lastSave, uint32_t code);

/*
 * ---- Pages ------------------------------------------------------------------------------------
 *
 * These write to standard output, which is the page that is being made. Their messages go there
 * too, as script comments: "//<!-- ", a message, "-->" and a newline, flushed at once. Values come
 * from devices: a value is cut to 40 characters, and a newline ends it.
 */

/*
 * A disk or a printer. Texts are zero-filled; a text of 40 characters has no terminator.
 */
typedef struct DriveInfo {
    char vendor[40];
    char model[40];
    char modelInfo[40]; /* of a printer, its serial number */
    char devName[40];   /* of a printer, its name */
    char capacity[40];  /* two digits after the point */
    int32_t index;
    int32_t isUsb; /* 0 for an internal disk, 1 for a USB disk or printer */
} DriveInfo;

/*
 * The device names of all internal disks without separators: "sdasdb".
 *
 *   result  a buffer of the function's own, which its next call overwrites; empty if there is no
 *           disk or the system status cannot be read. At most 511 characters.
 *   runs    sudo /usr/bin/php /etc/inc/api_system.php tovGetSystemStatus /tmp/getInternalHDDDevPID,
 *           then sudo rm -f on that
 *   prints  what failed, and the result
 */
const char* getInternalHDDDev(void);

/*
 * The indices of the first two internal disks.
 *
 *   indices  an index without a disk keeps its value
 *   result   0, or -1 if the system status cannot be read (the work file then stays)
 *   runs     the same lines as getInternalHDDDev
 *   prints   each disk's index and position, counted from 0; both indices; or what failed
 */
int getInternalHDDIndex(int32_t indices[2]);

/*
 * The disks and printers that are attached, at most four. A printer's name goes into the first
 * record with the printer's serial number; that may be the record of an earlier USB device.
 *
 *   records  zero-filled by the caller
 *   result   0, or -1 if the system status cannot be read (the work file then stays)
 *   runs     sudo /usr/bin/php /etc/inc/api_system.php tovGetSystemStatus /tmp/getDriveInfosPID,
 *            then sudo rm -f on that
 *   prints   each value as it is found, and at the end 0, or -1 if there were more than four
 */
int getDriveInfos(DriveInfo records[4]);

/*
 * Prints the script function tov_hdds(), which returns the number of internal drives: 1 if pelparam
 * cannot be run or leaves an empty file, 0 if its first line holds no number or is only a newline.
 * A number beyond 32 bits is cut to its low 32 bits, read as a signed number.
 *
 *   result  what system() returned for pelparam
 *   runs    sudo pelparam -d > /tmp/printTovHDDsPID, then sudo rm -f on that
 *   prints  the function, and what failed
 */
int printTovHDDs(void);

/*
 * Prints the script function this_page(), which returns the number in the form field "next_page":
 * the current step of a form of several steps. It is 0 if there is no field or no number in it. In
 * a field of more than 255 characters the first character counts as 0.
 *
 *   result  the number
 *   prints  the function, and the number again in a comment
 */
int printNextPage(void);

/*
 * Switches the remote-sync daemon.
 *
 *   on      not 0 to start it, unless it is the first process that the search finds; 0 to stop it
 *   result  0, or -1 if it could not be started
 *   runs    sudo ps | grep tidewave > /tmp/tideWaveFuncPID, sudo rm -f on that and
 *           sudo /usr/sbin/tidewaved -n 3; or sudo killall tidewaved
 *   prints  each line with its result
 */
int tideWaveFunc(uint32_t on);

/*
 * Provided by the page engine, for printNextPage: copies a form field, without newlines, into a
 * buffer of SIZE bytes.
 *
 *   result  0 if the field was copied
 */
__attribute__((weak)) int cgiFormStringNoNewlines(const char* name, char* buffer, int size);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif
