// SPDX-License-Identifier: MIT
#include <filesystem>
#include <gtest/gtest.h>

#include "client/doctor_checks.h"
#include "sharestatus/status_format.h"
#include "tests/support/root.h"

namespace {

using namespace client;
namespace fs = std::filesystem;

class DoctorNames : public root::UntracedTest {
  protected:
    static Diagnosis say(Diagnosis (*examine)(const Surroundings&, const Check&))
    {
        Surroundings surroundings;
        surroundings.settings.path = "/stubs:/usr/bin";
        surroundings.folder = "/tmp";
        return examine(surroundings, {"it", false, nullptr, examine});
    }

    /// Makes the user script list these.
    static void stubUsers(const std::vector<std::string>& users)
    {
        std::string lines;
        for (const std::string& user : users) {
            lines += "<username>" + user + "</username>\n";
        }
        root::writeFile("/stubs/users", lines);
        root::stub("php", "[ \"$1 $2\" = '/etc/inc/api_user.php tovGetUsers' ] && "
                          "cat /stubs/users >\"$3\"");
    }

    static void expectHopeless(const std::string& passwords, const std::string& names)
    {
        root::writeFile("/usr/private/smbpasswd", passwords);
        EXPECT_EQ(say(examineAccounts).reason,
                  "No password can match these users' entries in /usr/private/smbpasswd: " + names);
    }
};

const std::string kHash = "0123456789abcdefABCDEF0123456789";

std::string entry(const std::string& name, const std::string& hash)
{
    return name + ":1000:X:" + hash + ":[U          ]:LCT-0:\n";
}

TEST_F(DoctorNames, accountNeedsAnEntryThatAPasswordCanMatch)
{
    stubUsers({"anna", "bob"});
    EXPECT_EQ(
        say(examineAccounts),
        wrong("No password can be checked: /usr/private/smbpasswd: No such file or directory.",
              "see that the file server keeps its passwords there"));
    root::writeFile("/usr/private/smbpasswd", "# a comment\n" + entry("Anna", kHash) +
                                                  entry("bob", kHash) + entry("carl", "none"));
    EXPECT_EQ(say(examineAccounts), good("Each user has an entry that a password can match."));

    expectHopeless(entry("bob", kHash), "anna.");
    expectHopeless(entry("anna", kHash) + entry("bob", kHash.substr(1)), "bob.");
    expectHopeless(entry("anna", kHash) + entry("bob", kHash + "0"), "bob.");
    expectHopeless(entry("anna", kHash) + entry("bob", kHash.substr(1) + "X"), "bob.");
    // The first of two counts.
    expectHopeless(entry("bob", "none") + entry("bob", kHash) + entry("anna", kHash), "bob.");
    EXPECT_EQ(say(examineAccounts).remedy, "set these users' passwords anew");
    expectHopeless(entry("anna", kHash) + "nonsense\n" + entry("bob", kHash),
                   "bob. The file has a line that is not an entry, and nothing after it is read.");
    EXPECT_EQ(say(examineAccounts).remedy, "correct or remove that line");
    fs::remove("/usr/private/smbpasswd");
}

TEST_F(DoctorNames, userScriptThatFailsIsComplainedOf)
{
    EXPECT_EQ(say(examineAccounts).reason,
              "sudo /usr/bin/php /etc/inc/api_user.php tovGetUsers FILE ended with 1.");
}

TEST_F(DoctorNames, sharesThatAreNotMeasuredAreNamed)
{
    const std::string payload =
        root::zeros(5) + root::le16(1) + root::zeros(3) + root::le16(604) + "K111820261Media\n";
    root::writeFile(root::kStatusFile, std::string(sharestatus::encodeStatus(payload).text()));
    fs::create_directory("/share/Media");
    EXPECT_EQ(say(examineShareNames), good("Every share is measured."));
    fs::create_directory("/share/a$b");
    fs::create_directory("/share/a,b");
    EXPECT_EQ(say(examineShareNames),
              wrong("a$b is not measured: its name could run a command in a shell. Rename it, "
                    "without any of \" $ `, a backslash or a newline. a,b is not measured: its "
                    "name has a comma or the bracket ]. Rename it.",
                    "correct that, then vokctl collect --wait 600"));
}

} // namespace
