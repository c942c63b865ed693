// SPDX-License-Identifier: MIT
//
// The order in which handlers trace, answer, and close and remove their work files. Other tests
// compare all traces and the whole answer; this one reads the answer and the files at the moment of
// a trace.
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "core/core.h"
#include "handlers/users.h"
#include "tests/support/file_events.h"
#include "tests/support/request.h"

namespace {

namespace fs = std::filesystem;

using request::frame;
using request::kWorkFile;
using request::Lines;

const std::string kSwitch = "/usr/bin/ra-enabled";
const std::string kReport = "/etc/pelconfig/vokcontrol/__bksts/__bkanna";

/// An appliance on which every request succeeds.
class Order : public request::Test {
  protected:
    void SetUp() override
    {
        request::Test::SetUp();
        root::writeFile("/stubs/listing", root::shareBlock("Music"));
        root::stub("php", R"(case $2 in
tovGetShareList) cat /stubs/listing >"$3" ;;
tovGetUsers) printf '<username>%s</username>\n' anna bob >"$3" ;;
tovGetLanguage) echo '<languag>english</languag>' >"$3" ;;
esac)");
        root::stub("runwebhooks", R"(echo 'return ["Music"];')");
        root::stub("date", "echo 03072025");
        root::stub("fdisk", "echo 'Disk /dev/sda: 500.1 GB'");
        root::stub("mdadm", "echo '(931.51 GiB 1000.20 GB)'");
        root::stub("pelparam", "echo 2");
        root::stub("pelstatus", "exit 0");
        root::stub("ps", "echo pelstatus");
        root::writeFile(kSwitch, "#!/usr/bin/sh\nexit 0\n");
        fs::permissions(kSwitch, fs::perms(0755));
        root::writeFile(root::kVariables,
                        "pel_pubshare_name=Public\ndefault_public_share_name_en=Public\n");
    }

    void TearDown() override
    {
        fs::remove(kSwitch);
        request::Test::TearDown();
    }

    /// Processes a request, and calls LOOK at the first trace with this start.
    /// @return nothing if there is no such trace
    template <class Look>
    static auto lookAt(const std::string& traceStart, const std::string& request, Look look)
    {
        std::optional<decltype(look())> seen;
        request::load(request);
        watch::after("echo \"" + traceStart, [&] { seen = look(); });
        EXPECT_EQ(request::run().result, 0);
        return seen;
    }

    /// Compares the number of bytes answered before a trace.
    static void expectAnswered(long size, const std::string& traceStart, const std::string& request)
    {
        EXPECT_EQ(lookAt(traceStart, request, [] { return std::ftell(fout_buf); }), size)
            << traceStart;
    }

    /// Compares whether a file exists at a trace.
    static void expectThere(bool isThere, const std::string& path, const std::string& traceStart,
                            const std::string& request)
    {
        EXPECT_EQ(lookAt(traceStart, request, [&] { return root::exists(path); }), isThere)
            << traceStart;
    }

    /// Expects that a request writes a work file, reads it, closes it and then removes it. Each
    /// read closes it; some files are written more than once.
    static void expectPutAway(const std::string& name, const std::string& request,
                              const Lines& before = {"write", "close", "close"})
    {
        const root::FileEvents events("/tmp");
        request::load(request);
        EXPECT_EQ(request::run().result, 0);
        Lines kinds;
        for (const std::string& event : events.happened()) {
            if (event.ends_with(" " + name)) {
                kinds.push_back(event.substr(0, event.find(' ')));
            }
        }
        EXPECT_EQ(kinds, root::join({before, {"remove"}})) << name << ", " << request;
    }

    /// Compares whether a file is open at a trace.
    static void expectOpen(bool isOpen, const std::string& path, const std::string& traceStart,
                           const std::string& request)
    {
        EXPECT_EQ(lookAt(traceStart, request, [&] { return root::isOpen(path); }), isOpen)
            << traceStart;
    }
};

const std::string kPlace = "gspc \5Music\n";
const std::string kNoPlace = "gspc \5Books\n";
const std::string kVariableReport = "subs \6 \3anna\n";
const std::string kFileReport = frame("sub1", 2, "\3 anna\n");

TEST_F(Order, theseCommandsAnswerBeforeTheyTrace)
{
    expectAnswered(10 + 7, "cmd_gps1 fwrite", frame("gps1", 0));
    expectAnswered(5, "cmd_gpsn fwrite", frame("gpsn", 0));
    expectAnswered(12, "cmd_gsp1 fwrite", frame("gsp1", 1, "Music\n"));
    expectAnswered(10, "cmd_gspc fwrite", kNoPlace);
    expectAnswered(10, "SendReturnStatus", kPlace);
    expectAnswered(10 + 13, "cmd_lsts return", frame("lsts", 0));
    expectAnswered(10, "SendReturnStatus", kVariableReport);
    expectAnswered(10, "cmd_gub1 -- RetUsersBkStatus", frame("gub1", 0));
    expectAnswered(4, "exiting", frame("grst", 0));
    expectAnswered(4, "exiting", frame("crat", 2, "anna\nword\n"));
    expectAnswered(9, "exiting", frame("getv", 1, root::le32(9) + "\n"));
}

TEST_F(Order, theseCommandsTraceBeforeTheyAnswer)
{
    expectAnswered(0, "return good", frame("sgss", 0));
    expectAnswered(0, "return good", kVariableReport);
    expectAnswered(0, "return good", kFileReport);
    expectAnswered(0, "cmd_gub1() ", frame("gub1", 0));
    expectAnswered(0, "create_user", frame("crat", 2, "carl\nword\n"));
    expectAnswered(0, "create_shar() cmd", frame("pshr", 3, "guest\nFilms\n"));
    expectAnswered(0, "setUserPrivilege() cmd", frame("shar", 3, "anna\nFilms\n"));
    expectAnswered(0, "cmd_host()", frame("host", 4, "112115302026.45\nnas\nhome\nen\n"));
    expectAnswered(0, "cmd_frst() return", frame("frst", 0));
    expectAnswered(0, "pubsharename", frame("qlps", 0));
    expectAnswered(0, "getv returning", frame("getv", 1, root::le32(3) + "\n"));
    expectAnswered(0, "wags system on", frame("wags", 1, "system\n"));
    expectAnswered(0, "wasu exited", frame("wasu", 4, std::string("anna\na\nb\n\0\n", 11)));
}

TEST_F(Order, usersAreCountedThenTheCountIsAnsweredThenEachName)
{
    expectAnswered(0, "found 2 user", frame("lstu", 0));
    expectAnswered(10, "reporting user anna", frame("lstu", 0));
    expectAnswered(15, "reporting user bob", frame("lstu", 0));
    expectOpen(true, kWorkFile, "found 2 user", frame("lstu", 0));
    const auto printed = [] { return std::ftell(stdout); };
    EXPECT_EQ(lookAt("reporting user anna", frame("lstu", 0), printed), 0);
    EXPECT_EQ(lookAt("reporting user bob", frame("lstu", 0), printed), 5);
}

TEST_F(Order, workFilesAreClosedAndRemovedBeforeTheResultIsTraced)
{
    const std::string listing = kWorkFile + root::pid();
    expectThere(false, listing, "cmd_gsp1 fwrite", frame("gsp1", 1, "Music\n"));
    expectOpen(false, listing, "cmd_gsp1 fwrite", frame("gsp1", 1, "Music\n"));
    expectThere(false, kWorkFile, "cmd_gspc share name", kPlace);
    expectOpen(false, kWorkFile, "cmd_gspc share name", kPlace);
    expectThere(false, kWorkFile, "SendReturnStatus", kPlace);
    expectOpen(false, kWorkFile, "SendReturnStatus", kPlace);
    expectThere(false, root::workFile("cmd_lsts"), "cmd_lsts return", frame("lsts", 0));
    expectOpen(false, root::workFile("cmd_lsts"), "cmd_lsts return", frame("lsts", 0));
    expectThere(false, kWorkFile, "return good", kVariableReport);
    expectThere(false, kWorkFile, "return good", kFileReport);
    expectThere(false, "/tmp/vokcontrol2.tmp", "GetInternalDiskCap: ", frame("gub1", 0));
}

TEST_F(Order, userListIsClosedAfterItsLineIsTraced)
{
    // Its second piece of 254 characters is a line of its own.
    root::stub("php", "echo '<username>" + std::string(300, 'n') + "</username>' >\"$3\"");
    expectOpen(true, kWorkFile, "cmd_gspc n", kPlace);
    expectThere(true, kWorkFile, "cmd_gspc n", kPlace);
    expectOpen(false, kWorkFile, "cmd_gspc fwrite", kPlace);
    expectThere(false, kWorkFile, "cmd_gspc fwrite", kPlace);
}

TEST_F(Order, workFilesAreClosedBeforeTheyAreRemoved)
{
    expectPutAway("vokcontrol.tmp" + root::pid(), frame("gsp1", 1, "Music\n"));
    expectPutAway("vokcontrol.tmp", kNoPlace);
    expectPutAway("vokcontrol.tmp", kVariableReport);
    expectPutAway("vokcontrol.tmp", kFileReport);
    expectPutAway("vokcontrol.tmp", frame("lstu", 0), {"write", "close", "close", "close"});
    expectPutAway("cmd_lsts" + root::pid(), frame("lsts", 0),
                  {"write", "close", "write", "close", "close"});
    expectPutAway("vokcontrol2.tmp", frame("gub1", 0),
                  {"write", "close", "close", "write", "close", "close"});
}

TEST_F(Order, listOfUsersIsCompleteBeforeItsWorkFilesAreRemoved)
{
    watch::mayBeStrange("sudo /usr/bin/php /etc/inc/api_user.php tovGetUsers /tmp/list");
    watch::mayBeStrange("cat /tmp/list");
    const root::FileEvents events("/tmp");
    watch::after("cat ", [&] { EXPECT_NE(events.happened(), Lines{}); });
    EXPECT_EQ(getUsersList("/tmp/list"), 0);
    const std::string answer = "list" + root::pid();
    EXPECT_EQ(events.happened(), (Lines{"write list", "close list", "close " + answer + "2",
                                        "remove " + answer, "remove " + answer + "2"}));
}

TEST_F(Order, listingThatCannotBeOpenedIsTracedThenRemovedThenAnswered)
{
    root::stub("php", R"(: >"$3"; chmod 0 "$3")");
    const std::string listing = kWorkFile + root::pid();
    const std::string request = frame("gsp1", 1, "Music\n");
    expectThere(true, listing, "cannot open file", request);
    expectThere(false, listing, "exiting", request);
}

TEST_F(Order, reportIsKeptBeforeItIsTraced)
{
    const auto report = [] { return root::readFile(kReport); };
    EXPECT_EQ(lookAt("return good", kFileReport, report), "303072025");
    const auto variables = [] { return root::readFile(root::kVariables); };
    EXPECT_EQ(lookAt("return good", kVariableReport, variables),
              "pel_pubshare_name=Public\ndefault_public_share_name_en=Public\n"
              "__bkanna=303072025\n");
}

} // namespace
