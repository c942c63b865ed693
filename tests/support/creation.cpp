// SPDX-License-Identifier: MIT
#include "tests/support/creation.h"

#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace creation {
namespace {

std::string listOf(const Lines& users)
{
    std::string line = "return [\"guest\"";
    for (const std::string& user : users) {
        line += ", \"" + user + "\"";
    }
    return line + "];";
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

Lines userList(const Lines& users)
{
    return root::join(
        {userFetch(), {root::sizeTrace("isUserExisted" + root::pid(), listOf(users).size())}});
}

Lines userLookup(const Lines& users, const std::string& name, int result)
{
    const std::string needle = "\"" + name + "\"";
    return root::join({userList(users),
                       {root::cutTrace("isUserExisted() user return:" + listOf(users) +
                                       " -- userName: " + needle.substr(0, 511)),
                        root::trace("isUserExisted() iRet:" + std::to_string(result))}});
}

void Test::SetUp()
{
    request::Test::SetUp();
    fs::create_directory("/tmp/work");
    ASSERT_EQ(::chdir("/tmp/work"), 0);
    stubScripts({}, {"anna"});
}

void Test::TearDown()
{
    ASSERT_EQ(::chdir("/"), 0);
    request::Test::TearDown();
}

void Test::load(const std::string& request)
{
    for (const std::string& path : request::leftBehind()) {
        fs::remove_all(path);
    }
    fs::remove("/stubs/asked");
    request::load(request);
    root::writeFile(request::kWorkFile, "work");
}

void Test::expectEnd(std::uint32_t code, const Lines& calls, const Lines& left)
{
    // A quote in a name can end the text of its trace; then the shell line prints something.
    const request::Outcome outcome = request::run();
    const std::string answer = root::le32(code);
    if (code == request::kGood) {
        request::Test::expectEnd(outcome, answer, calls, root::join({left, {request::kWorkFile}}),
                                 outcome.printed);
    } else {
        expectError(outcome, answer, code, calls, left, outcome.printed);
    }
}

} // namespace creation
