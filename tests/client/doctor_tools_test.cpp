// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "client/doctor_checks.h"
#include "tests/support/root.h"

namespace {

using namespace client;

class DoctorTools : public root::UntracedTest {
  protected:
    static Diagnosis say(const char* name, Diagnosis (*examine)(const Surroundings&, const Check&))
    {
        Surroundings surroundings;
        surroundings.settings.path = "/stubs:/usr/bin";
        return examine(surroundings, {name, false, nullptr, examine});
    }

    static void expectGood(const char* name, const char* script,
                           Diagnosis (*examine)(const Surroundings&, const Check&),
                           const char* reason)
    {
        root::stub(name, script);
        EXPECT_EQ(say(name, examine), good(reason)) << name;
    }
};

TEST_F(DoctorTools, eachIsAskedAsTheModuleDoes)
{
    expectGood("php", "[ \"$*\" = -v ] && echo PHP 8.2.1 x", examinePhp, "PHP 8.2.1 answers.");
    expectGood("pelparam", "[ \"$*\" = -d ] && echo 2", examinePelparam,
               "It counts 2 internal drives.");
    expectGood("mdadm", "[ \"$*\" = '--detail /dev/md0' ] && echo '(1.00 GiB 1.07 GB)'",
               examineMdadm, "The mirror has 1.07 GB.");
    expectGood("fdisk", "[ \"$*\" = '-lu /dev/sda' ] && echo Disk /dev/sda: 500 GB", examineFdisk,
               "The first disk has 500 GB.");
    expectGood("du", "[ \"$*\" = '-sk /dev/null' ] && echo 0", examineDu, "It measures a folder.");
    expectGood("ps", "[ \"$*\" = '' ] && echo 1 init", examinePs, "It lists every process.");
    expectGood("ifconfig", "[ \"$*\" = '' ] && echo 'lo inet addr:10.0.0.1 Mask:255.0.0.0'",
               examineIfconfig, "It has addresses, but there is no network card.");
    expectGood("route", "[ \"$*\" = -n ] && echo Destination", examineRoute, "No gateway is set.");
    expectGood("date", "[ \"$*\" = +%m%d%Y ] && echo 11222026", examineDate, "It prints the date.");
    expectGood("runwebhooks", "[ \"$(cat)\" = share_info ] && echo 'return []'", examineWebHook,
               "It answers share_info.");
    expectGood("sudo", "[ \"$*\" = true ]", examineSudo, "It runs programs.");
}

TEST_F(DoctorTools, mirrorIsOfTwoDrives)
{
    root::stub("pelparam", "echo 1");
    EXPECT_EQ(say("mdadm", examineMdadm),
              unneeded("Not needed: the appliance does not have two internal drives."));
}

TEST_F(DoctorTools, programIsThereOrNot)
{
    root::stub("startapp", "true");
    EXPECT_EQ(say("startapp", examineProgram), good("Its path is /stubs/startapp."));
    EXPECT_EQ(say("pelstatus", examineProgram),
              wrong("There is no program pelstatus in /stubs:/usr/bin.",
                    "install it, or set path in /etc/vokcontrol.conf"));
    EXPECT_EQ(say("/usr/bin/ractl", examineProgram),
              wrong("There is no such program.", "install it there"));
    EXPECT_EQ(say("tools", examineSmallTools), good("There are cat, grep, killall, mv and rm."));
    Surroundings nowhere;
    nowhere.settings.path = "/stubs";
    EXPECT_EQ(examineSmallTools(nowhere, {"tools", false, nullptr, nullptr}).reason,
              "These are missing in /stubs: cat, grep, killall, mv, rm.");
}

TEST_F(DoctorTools, remoteSwitchKnowsNoSuchUser)
{
    root::stub("ra", "[ \"$1 $2\" = \"get no\nuser\" ] && exit 2");
    EXPECT_EQ(say("/stubs/ra", examineRemoteSwitch), good("It answers."));
    root::stub("ra", "exit 0");
    EXPECT_EQ(say("/stubs/ra", examineRemoteSwitch),
              wrong("For a user that does not exist it ended with 0.",
                    "have it end with 0 for on, 1 for off, 2 for an unknown user"));
    EXPECT_EQ(say("/stubs/none", examineRemoteSwitch),
              wrong("There is no such program.", "install it there"));
}

} // namespace
