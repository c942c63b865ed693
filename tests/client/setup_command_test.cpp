// SPDX-License-Identifier: MIT
//
// "vokctl setup" as people and scripts call it.
#include <array>
#include <gtest/gtest.h>

#include "tests/support/scripted_service.h"
#include "tests/support/vokserve.h"

namespace {

using root::Exchange;
using root::exchange;
using root::le32;
using Strings = std::vector<std::string>;

class SetupCommand : public root::AnsweringTest {
  protected:
    /// What the appliance remembers, and its language as its script tells it.
    static void prepare(const std::string& variables, const std::string& language)
    {
        root::writeFile("/etc/pelconfig/system_var", variables);
        root::writeFile("/stubs/language", "<languag>" + language + "</languag>\n");
        root::stub("php", "printf '<%s>' \"$1\" \"$2\" >/stubs/asked; cat /stubs/language >\"$3\"");
    }

    static void expectRefusal(const std::string& command, const std::string& sentence)
    {
        expectEnd(vokctl({"setup", command}), 1, "", "vokctl: " + sentence + "\n");
    }

    static std::string quick(const std::string& code, const std::string& name)
    {
        return "qlrt " + le32(2) + "\n" + code + "\n" + name + "\n";
    }
};

// ---- pending ----------------------------------------------------------------------------------

TEST_F(SetupCommand, framesHaveNoParameters)
{
    const Exchange pending = exchange({"setup", "pending"}, {le32(0)});
    EXPECT_EQ(pending.frames, Strings{"frst " + le32(0) + "\n"});
    expectEnd(pending.ended, 0, "", "vokctl: the appliance waits for its first setup\n");
    const Exchange asked = exchange({"setup", "quick"}, {quick("en", "Public")});
    EXPECT_EQ(asked.frames, Strings{"qlps " + le32(0) + "\n"});
    expectEnd(asked.ended, 0, "Language:           en\nPublic share name:  Public\n", "");
}

TEST_F(SetupCommand, markerTellsWhetherTheSetupIsPending)
{
    const std::string waits = "vokctl: the appliance waits for its first setup\n";
    expectEnd(vokctl({"setup", "pending"}), 0, "", waits);
    for (const char* marker :
         {"", "firsttime=\n", "firsttime=1\n", "firsttime=10\n", "other=0\n"}) {
        prepare(marker, "english");
        expectEnd(vokctl({"setup", "pending"}), 0, "", waits);
    }
    for (const char* marker : {"firsttime=0\n", "firsttime=01\n", "firsttime=0 and more\n"}) {
        prepare(marker, "english");
        expectRefusal("pending", "the first setup has been done");
    }
}

// ---- quick ------------------------------------------------------------------------------------

TEST_F(SetupCommand, languageAndShareNameAreShown)
{
    const std::string variables = "default_public_share_name_en=Public\n"
                                  "default_public_share_name_fr=Publique\n"
                                  "default_public_share_name_ge=\xC3\x96"
                                  "ffentlich\n"
                                  "default_public_share_name_it=Pubblico\n"
                                  "default_public_share_name_sp=P\xC3\xBA"
                                  "blico\n";
    const std::vector<std::array<std::string, 3>> languages = {
        {"english", "en", "Public"},
        {"french", "fr", "Publique"},
        {"german", "ge",
         "\xC3\x96"
         "ffentlich"},
        {"italian", "it", "Pubblico"},
        {"spanish", "sp",
         "P\xC3\xBA"
         "blico"},
        {"old english", "en", "Public"},
    };
    for (const auto& [language, code, name] : languages) {
        prepare(variables, language);
        expectEnd(vokctl({"setup", "quick"}), 0,
                  "Language:           " + code + "\nPublic share name:  " + name + "\n", "");
        EXPECT_EQ(root::readFile("/stubs/asked"), "</etc/inc/api_system.php><tovGetLanguage>");
    }
}

TEST_F(SetupCommand, jsonIsForPrograms)
{
    prepare("default_public_share_name_sp=P\xC3\xBA"
            "blico \xFF\n",
            "spanish");
    expectEnd(vokctl({"setup", "quick", "--json"}), 0,
              "{\n"
              "  \"language\": \"sp\",\n"
              "  \"public_share_name\": \"P\\u00fablico \\ufffd\"\n"
              "}\n",
              "");
}

TEST_F(SetupCommand, shareNameIsCutAfterSixtyFourBytes)
{
    for (const std::size_t size : {64U, 65U, 70U}) {
        prepare("default_public_share_name_en=" + std::string(size, 'n') + "\n", "english");
        expectEnd(vokctl({"setup", "quick"}), 0,
                  "Language:           en\nPublic share name:  " + std::string(64, 'n') + "\n", "");
    }
}

TEST_F(SetupCommand, hostileNameNeverReachesTheTerminalRaw)
{
    prepare("default_public_share_name_en=a\x1B[2J\n", "english");
    expectEnd(vokctl({"setup", "quick"}), 0,
              "Language:           en\nPublic share name:  a\\u{1b}[2J\n", "");
}

/// A share may be called like the nine bytes of an error.
TEST_F(SetupCommand, nameThatLooksLikeAnErrorIsNone)
{
    prepare("default_public_share_name_en=erro abc\n", "english");
    expectEnd(vokctl({"setup", "quick"}), 0,
              "Language:           en\nPublic share name:  erro abc\n", "");
}

TEST_F(SetupCommand, quickSetupIsRefusedInWords)
{
    prepare("default_public_share_name_en=Public\n", "");
    expectRefusal(
        "quick",
        "The appliance's language cannot be read; vokctl doctor may say why. (0xB0000001)");
    root::stub("php", "exit 1");
    expectRefusal(
        "quick",
        "The appliance's language cannot be read; vokctl doctor may say why. (0xB0000001)");
    for (const char* language : {"chinese", "traditional_chinese", "English", "klingon"}) {
        prepare("default_public_share_name_en=Public\n", language);
        expectRefusal("quick", "There is no quick setup in the appliance's language. (0xB0000002)");
    }
    const std::string noName =
        "The appliance has no name for a public share in its language. (0xB0000003)";
    prepare("default_public_share_name_en=Public\n", "french");
    expectRefusal("quick", noName);
    prepare("default_public_share_name_en=\n", "english");
    expectRefusal("quick", noName);
}

// ---- Both -------------------------------------------------------------------------------------

TEST_F(SetupCommand, otherAnswersCannotBeRead)
{
    const std::string unreadable = "vokctl: the answer cannot be read: ";
    const std::string empty =
        "empty: the command was ignored, is not known, or failed before it answered";
    const std::string noShape = "of a shape that this client does not know";
    const std::vector<std::array<std::string, 3>> answers = {
        {"pending", "", empty},
        {"pending", quick("en", "a"), noShape},
        {"pending", "frst ", noShape},
        {"quick", "", empty},
        {"quick", le32(0), noShape},
        {"quick", "qlrt " + le32(2) + "\nen\n", "\"qlrt\" with count 2\n  en"},
        {"quick", quick("en", "a\nb"), "\"qlrt\" with count 2\n  en\n  a\n  b"},
        {"quick", "vert " + le32(2) + "\nen\na\n", noShape},
    };
    for (const auto& [command, answer, description] : answers) {
        expectEnd(exchange({"setup", command}, {answer}).ended, 7, "",
                  unreadable + description + "\n");
    }
}

TEST_F(SetupCommand, unreachableServiceAndWrongUsage)
{
    for (const char* command : {"pending", "quick"}) {
        expectEnd(root::run({root::built("vokctl"), "setup", command, "--socket", "/tmp/none"}), 3,
                  "",
                  "vokctl: cannot reach the service at /tmp/none: No such file or directory. Is "
                  "vokserve running?\n");
        EXPECT_EQ(vokctl({"setup", command, "extra"}).exitCode, 2);
    }
    EXPECT_EQ(vokctl({"setup"}).exitCode, 2);
    EXPECT_EQ(vokctl({"setup", "slow"}).exitCode, 2);
    EXPECT_EQ(vokctl({"setup", "pending", "--json"}).exitCode, 2);
}

} // namespace
