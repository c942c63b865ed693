// SPDX-License-Identifier: MIT
#include "client/doctor_forms.h"

#include <gtest/gtest.h>

namespace {

using namespace client;

struct Case {
    Diagnosis (*judge)(std::string_view text);
    const char* text;
    const char* reason; ///< with "!" in front if it is wrong
};

const char* const kShare = "<sharename>A</sharename>\n  <shareproperty>public</shareproperty>\n"
                           "<sharelocation>internal</sharelocation>\n</shareinfo>\n";

const Case kCases[] = {
    {judgeShareList, "", "It lists 0 shares, 0 of them internal."},
    {judgeShareList, "<sharelist>\n</sharelist>\n", "It lists 0 shares, 0 of them internal."},
    {judgeShareList, kShare, "It lists 1 share, 1 of them internal."},
    {judgeShareList, "<sharename>A\n", "!Line 1 has no </sharename>."},
    {judgeShareList, "<x>\n<shareproperty>public\n",
     "!Line 2 has a property that does not follow the name."},
    {judgeShareList, "<sharename>A</sharename>\n<sharelocation>int\n  <shareproperty>public\n",
     "!Line 3 has a property that does not follow the name."},
    {judgeShareList, "<sharename>A</sharename>\n<shareproperty>public\n",
     "!Line 2 does not begin with two blanks."},
    {judgeShareList, "<sharelocation>int\n", "!Line 1 has a location before the name."},
    {judgeShareList, "<sharename>A</sharename>\n</shareinfo>\n",
     "!Line 2 ends a share without name, property or location."},
    {judgeShareList, "<sharename>A</sharename>\n", "!The list does not end with </shareinfo>."},
    {judgeShareList, "Fatal error\n", "!The list does not end with </shareinfo>."},
    {judgeUserList, "", "It lists 0 users."},
    {judgeUserList, "<userlist>\n<username>anna</username>\n</userlist>\n", "It lists 1 user."},
    {judgeUserList, "<username>anna\n", "!Line 1 has no name between \"name>\" and \"</\"."},
    {judgeUserList, "Fatal error\n", "!It is not a list of users: \"Fatal error\"."},
    {judgeDevices,
     "<HDDInfo>\n<hddIndex>0</hddIndex>\n<modelDevName>sda</modelDevName>\n</HDDInfo>\n",
     "It names 1 internal disk."},
    {judgeDevices, "<HDDInfo>\n<modelDevName>sda</modelDevName>\n</HDDInfo>\n",
     "!Line 3 ends a disk without index or name."},
    {judgeDevices, "<HDDInfo>\n<hddIndex>0</hddIndex>\n</HDDInfo>\n",
     "!Line 3 ends a disk without index or name."},
    {judgeDevices, "<HDDInfo>\n", "!The last disk does not end with </HDDInfo>."},
    {judgeDevices, "", "!It names no internal disk."},
    {judgeLanguage, "<languag>german</languag>\n<language>german</language>\n",
     "The language is german."},
    {judgeLanguage, "<language>german</language>\n",
     "!The value after <languag> is \"\", which is not a language that the module knows."},
    {judgeLanguage, "<languag>german</languag>\n<language>Deutsch</language>\n",
     "!The value after <language> is \"Deutsch\", which is not a language that the module knows."},
    {judgeMachineName, "<nmbdSysname>nas</nmbdSysname>\n", "The name is nas."},
    {judgeMachineName, "<nmbdSysname></nmbdSysname>\n", "!It has no name after <nmbdSysname>."},
    {judgeWebHook, "return [\"A\"];\n", "It answers share_info."},
    {judgeWebHook, "[\"A\"]\n", "!Its answer to share_info has no line with \"return\"."},
    {judgeDriveCount, "2\n", "It counts 2 internal drives."},
    {judgeDriveCount, "0\n", "!It printed \"0\" instead of the number of internal drives."},
    {judgeDriveCount, "none\n", "!It printed \"none\" instead of the number of internal drives."},
    {judgeDriveCount, "", "!It printed \"\" instead of the number of internal drives."},
    {judgeDu, "4\t/share/A\n", "It measures a folder."},
    {judgeDu, "/share/A\n", "!Its first line has no number in front: \"/share/A\"."},
    {judgeFdisk, "\nDisk /dev/sda: 500 GB, 1 bytes\n", "The first disk has 500 GB."},
    {judgeFdisk, "Disk /dev/sda: 465.76 GiB, 1 bytes\n",
     "!The size is \"465.76 GiB\", but it is read as GB."},
    {judgeFdisk, "Disk /dev/sdb: 500 GB\n", "!No line has a size after \"/dev/sda: \"."},
    {judgeMdadm, "Array Size : 1 (465.76 GiB 500.11 GB)\n", "The mirror has 500.11 GB."},
    {judgeMdadm, "Array Size : 1 (465.76 GiB)\n", "!No line has a size in GB after one in GiB."},
    {judgeMdadm, "Array Size : 1 GiB", "!No line has a size in GB after one in GiB."},
    {judgePs, "PID\n    1 root init\n", "It lists every process."},
    {judgePs, "PID\n   10 root sh\n", "!It does not list process 1, so it leaves out others, too."},
    {judgeIfconfig, "lo  Link\n  inet addr:127.0.0.1  Mask:255.0.0.0\n",
     "It has addresses, but there is no network card."},
    {judgeIfconfig, "eth0 HWaddr 00:1\n  inet addr:10.0.0.1  Mask:255.0.0.0\n",
     "It has addresses."},
    {judgeIfconfig, "eth0\n  inet addr:10.0.0.1  Mask:255.0.0.0\n",
     "!No line has a hardware address after \"HWaddr\"."},
    {judgeIfconfig, "eth0\n  inet addr:10.0.0.1\n", "!No line has a mask after \"Mask:\"."},
    {judgeIfconfig, "eth0\n  inet 10.0.0.1\n", "!No line has an address after \"inet addr:\"."},
    {judgeRoute, "Destination\n", "No gateway is set."},
    {judgeRoute, "Destination\n0.0.0.0  10.0.0.138  0.0.0.0  UG  0\n",
     "The gateway is 10.0.0.138."},
    {judgeRoute, "Destination\n0.0.0.0  -  UG\n", "!A line with UG has no gateway."},
    {judgeRoute, "", "!It does not print a table of routes."},
    {judgeDate, "11222026\n", "It prints the date."},
    {judgeDate, "2026-11-22\n", "!It printed \"2026-11-22\" for +%m%d%Y."},
    {judgeDate, "Nov 2026\n", "!It printed \"Nov 2026\" for +%m%d%Y."},
};

TEST(DoctorForms, firstThingThatWouldBeMisreadIsSaid)
{
    for (const Case& each : kCases) {
        const Diagnosis diagnosis = each.judge(each.text);
        EXPECT_EQ((diagnosis.sign == Sign::kWrong ? "!" : "") + diagnosis.reason, each.reason);
        EXPECT_EQ(diagnosis.remedy.empty(), diagnosis.sign == Sign::kGood) << each.reason;
    }
}

TEST(DoctorForms, remedyIsTheForm)
{
    EXPECT_EQ(judgeDate("").remedy,
              "have it print the eight digits MMDDYYYY; porting.md has an example");
}

TEST(DoctorForms, valuesAreTakenOut)
{
    EXPECT_EQ(driveCountIn("12 drives\n"), 12U);
    EXPECT_EQ(driveCountIn("no\n"), std::nullopt);
    EXPECT_EQ(usersIn("<username>a b</username>\n<sharename>x</sharename>\n<username>c</username>"),
              (std::vector<std::string>{"a b", "c"}));
}

} // namespace
