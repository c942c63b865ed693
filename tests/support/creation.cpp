// SPDX-License-Identifier: MIT
#include "tests/support/creation.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <unistd.h>

#include "cmdsvc/channel.h"
#include "tests/support/copies.h"
#include "tests/support/request.h"
#include "vokcontrol.h"

namespace fs = std::filesystem;

namespace creation {
namespace {

Lines leftBehind()
{
    Lines paths;
    for (const char* folder : {"/tmp", "/tmp/work"}) {
        for (const std::string& name : root::list(folder)) {
            paths.push_back(std::string(folder) + "/" + name);
        }
    }
    std::erase_if(paths, [](const std::string& path) {
        return path == "/tmp/work" || path == kWorkFile || path == root::kTraceFile ||
               path == "/tmp/outbuf7";
    });
    std::ranges::sort(paths);
    return paths;
}

} // namespace

void stubScripts(const Lines& shares, const Lines& users, const std::string& special)
{
    std::string listing;
    for (const std::string& share : shares) {
        listing += root::shareBlock(share);
    }
    root::writeFile("/stubs/listing", listing);
    std::string answer;
    for (const std::string& user : users) {
        answer += "  <username>" + user + "</username>\n";
    }
    root::writeFile("/stubs/users", answer);
    root::stub("php", "case $2 in\n" + special + R"(
tovGetShareList) cat /stubs/listing >"$3" ;;
tovGetUsers) cat /stubs/users >"$3" ;;
*) shift; printf '<%s>' "$@" >>/stubs/asked ;;
esac)");
}

std::string asked()
{
    return root::readFile("/stubs/asked");
}

Lines userFetch()
{
    const std::string answer = "isUserExisted" + root::pid() + root::pid();
    return {"sudo /usr/bin/php /etc/inc/api_user.php tovGetUsers " + answer,
            "cat " + answer + " | grep username >  " + answer + "2"};
}

void Test::SetUp()
{
    root::Test::SetUp();
    fs::create_directory("/tmp/work");
    ASSERT_EQ(::chdir("/tmp/work"), 0);
    stubScripts({}, {"anna"});
}

void Test::TearDown()
{
    root::copiesLeft = -1;
    cmdsvc::closeCurrentFile();
    ASSERT_EQ(::chdir("/"), 0);
    root::Test::TearDown();
}

void Test::load(const std::string& request)
{
    for (const std::string& path : leftBehind()) {
        fs::remove_all(path);
    }
    fs::remove("/stubs/asked");
    request::load(request);
    root::copiesLeft = -1;
    root::writeFile(kWorkFile, "work");
    ASSERT_NE(cmdsvc::openCurrentFile(kWorkFile), nullptr);
}

void Test::expectEnd(std::uint32_t code, const Lines& calls, Lines left)
{
    const request::Outcome outcome = request::run();
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.answer, root::le32(code));
    const bool isGood = code == 0;
    EXPECT_EQ(outcome.calls,
              root::join({calls, isGood ? Lines{} : Lines{request::exitTrace(code)}}));
    EXPECT_EQ(cmdsvc::currentFile() != nullptr, isGood) << "an exit closes the slot";
    EXPECT_EQ(root::exists(kWorkFile), isGood) << "an exit removes the work file";
    EXPECT_EQ(fout_buf, nullptr);
    std::ranges::sort(left);
    EXPECT_EQ(leftBehind(), left);
    cmdsvc::closeCurrentFile();
}

} // namespace creation
