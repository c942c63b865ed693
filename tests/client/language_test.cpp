// SPDX-License-Identifier: MIT
//
// Whole outputs in other languages than English, with catalogues of this test's own.
#include "client/language.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "client/check_report.h"
#include "client/commands.h"
#include "client/doctor_report.h"
#include "client/status_report.h"
#include "client/wrong_usage.h"
#include "tests/support/catalogue.h"
#include "tests/support/root.h"
#include "text/translation.h"
#include "view/sentences.h"

namespace {

using catalogue::Entries;
using namespace std::string_literals;

constexpr core::Language kOwn = {"xx", "own", "8", "Own", "xx", "xx"};

/// Speaks a language with these translations. All entries are for the plural of English.
void speak(Entries entries)
{
    entries.push_back({"", "Plural-Forms: nplurals=2; plural=(n != 1);\n"});
    std::ranges::sort(entries, {}, &catalogue::Entry::original);
    const std::string folder = LOCALE_FOLDER "/xx/LC_MESSAGES";
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/vokcontrol.mo", std::ios::binary) << catalogue::compiled(entries);
    text::speak(kOwn);
    ASSERT_STREQ(text::spoken().code, "xx");
}

class LanguageOfTheClient : public testing::Test {
  protected:
    void SetUp() override
    {
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANGUAGE"}) {
            ::unsetenv(name);
        }
        ::setenv("LANG", "de_DE.UTF-8", 1);
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }
    void TearDown() override { text::speak(*core::findLanguage("en")); }
};

std::string languageFor(std::vector<std::string> words)
{
    words.insert(words.begin(), "vokctl");
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    return client::languageFor(pointers).code;
}

TEST_F(LanguageOfTheClient, isThatOfTheEnvironment)
{
    EXPECT_EQ(languageFor({}), "ge");
    EXPECT_EQ(languageFor({"check", "--full", "80"}), "ge");
    EXPECT_EQ(languageFor({"shares", "show", "--", "--json"}), "ge");
    ::setenv("LANG", "C.UTF-8", 1);
    EXPECT_EQ(languageFor({"status"}), "en");
}

TEST_F(LanguageOfTheClient, isEnglishIfProgramsReadWhatIsPrinted)
{
    for (const client::Subcommand& command : client::kSubcommands) {
        const std::string name = command.name;
        const bool isForPrograms = name == "metrics" || name == "notify" || name == "raw";
        EXPECT_EQ(languageFor({name}), isForPrograms ? "en" : "ge") << name;
        EXPECT_EQ(languageFor({name, "--json"}), "en") << name;
        EXPECT_EQ(languageFor({"--json", name}), "en") << name;
        EXPECT_EQ(languageFor({name, "--json=true"}), "en") << name;
    }
    EXPECT_EQ(languageFor({"history", "Media", "--csv"}), "en");
}

// ---- German -----------------------------------------------------------------------------------

Entries german()
{
    return {
        {"{} MB", "{} MB"},
        {"{1} of {2} used, {3} free", "{1} von {2} belegt, {3} frei"},
        {"decimal sign\4.", ","},
        {"date\4{1} {2} {3}", "{1}. {2} {3}"},
        {"month\4November", "November"},
        {"heading\4SHARE", "FREIGABE"},
        {"heading\4USED", "BELEGT"},
        {"heading\4STATE", "STATUS"},
        {"heading\4LAST BACKUP", "LETZTE SICHERUNG"},
        {"Published {}.", "Veröffentlicht {}."},
        {"No collection is running.", "Es läuft keine Messung."},
        {"Critical: {}", "Kritisch: {}"},
        {"Warning: {}", "Warnung: {}"},
        {"{1} of {2} share\0{1} of {2} shares"s, "{1} von {2} Freigabe\0{1} von {2} Freigaben"s},
        {"{1} has never been backed up: {2}. What to do: set up a backup.",
         "{1} wurde nie gesichert: {2}. Abhilfe: eine Sicherung einrichten."},
        {"The backup of {1} on {2} has failed with state {3}: see why, and back up again.",
         "Die Sicherung von {1} am {2} ist mit Status {3} fehlgeschlagen: Ursache suchen, dann "
         "erneut sichern."},
        {"The share's name is longer than 64 bytes.",
         "Der Name der Freigabe ist länger als 64 Bytes."},
        {"{1} has no command {2}; did you mean {3}?",
         "{1} hat keinen Befehl {2}; meinten Sie {3}?"},
        {"See {}.", "Siehe {}."},
        {"{1} What to do: {2}.", "{1} Abhilfe: {2}."},
        {"sign of a check\4WRONG", "FALSCH"},
        {"Wrong: {1}, not checked: {2}, checks in all: {3}.",
         "Falsch: {1}, nicht geprüft: {2}, insgesamt: {3}."}};
}

/// Two shares: one without a backup, and one whose backup has failed.
view::Situation situation()
{
    view::Situation all;
    all.status.result = view::PublishedStatus::Result::kComplete;
    all.status.published = 1795253583; // 2026-11-21 09:33:03
    all.now = all.status.published + 60;
    all.status.shares.resize(2);
    all.status.shares[0].name = "Media";
    all.status.shares[0].used = view::Space{5, 'K'};
    all.status.shares[1].name = "Fotos";
    all.status.shares[1].used = view::Space{17, 'M'};
    all.status.shares[1].backupState = 2;
    all.status.shares[1].backupDay = view::dayOf(all.now);
    all.status.shares[1].report = view::BackupReport::kRead;
    all.capacity = view::Capacity{9400000, 900000, 8500000};
    all.listed = std::vector<std::string>{};
    return all;
}

config::Configuration configuration()
{
    config::Configuration all;
    all.failedStates = "2";
    return all;
}

const std::string kFailed = "Die Sicherung von Fotos am 21. November 2026 ist mit Status 2 "
                            "fehlgeschlagen: Ursache suchen, dann erneut sichern.";
const std::string kNever =
    "1 von 2 Freigaben wurde nie gesichert: Media. Abhilfe: eine Sicherung einrichten.";

TEST_F(LanguageOfTheClient, statusIsShownInIt)
{
    speak(german());
    EXPECT_EQ(client::renderTable(situation(), configuration()),
              "900 MB von 9,4 GB belegt, 8,5 GB frei\n"
              "\n"
              "FREIGABE  BELEGT  STATUS  LETZTE SICHERUNG\n"
              "Media        5 K  -       -\n"
              "Fotos       17 M  2       2026-11-21\n"
              "\n"
              "Veröffentlicht 2026-11-21 09:33:03 UTC. Es läuft keine Messung.\n"
              "\n"
              "Kritisch: " +
                  kFailed + "\nWarnung: " + kNever + "\n");
}

TEST_F(LanguageOfTheClient, checkSaysItsReasonsInIt)
{
    speak(german());
    EXPECT_EQ(client::renderCheck(situation(), configuration()).line,
              "VOKCONTROL CRITICAL - " + kFailed + " " + kNever +
                  " | used=900000KB;8460000;8930000;0;9400000 full=10%;89;94;0;100 age=60s;86400 "
                  "shares=2 unmeasured=0;0\n");
}

TEST_F(LanguageOfTheClient, refusalKeepsItsCode)
{
    speak(german());
    EXPECT_EQ(view::refusalSentence("shar", cmdsvc::kShareNameTooLong),
              "Der Name der Freigabe ist länger als 64 Bytes. (0x20000003)");
}

TEST_F(LanguageOfTheClient, wrongUsageIsExplainedInIt)
{
    speak(german());
    CLI::App program("For a test.", "vokctl");
    program.add_subcommand("status", "");
    try {
        program.parse("statsu");
        FAIL();
    } catch (const CLI::ParseError& error) {
        EXPECT_EQ(client::wrongUsage(program, error),
                  "vokctl: \"vokctl\" hat keinen Befehl \"statsu\"; meinten Sie \"status\"?\n"
                  "Siehe \"vokctl --help\".\n");
    }
}

TEST_F(LanguageOfTheClient, doctorReportsInIt)
{
    speak(german());
    const client::Check check = {"php", true, nullptr, nullptr};
    EXPECT_EQ(client::renderDoctorText({{&check, client::wrong("Fehlt.", "einbauen")}}),
              "FALSCH  php  Fehlt. Abhilfe: einbauen.\n"
              "\n"
              "Falsch: 1, nicht geprüft: 0, insgesamt: 1.\n");
}

// ---- Chinese ----------------------------------------------------------------------------------

TEST_F(LanguageOfTheClient, columnsFitCharactersOfDoubleWidth)
{
    speak({{"heading\4SHARE", "共享"},
           {"heading\4USED", "已用"},
           {"heading\4STATE", "状态"},
           {"heading\4LAST BACKUP", "上次备份"}});
    EXPECT_EQ(client::renderShares(situation().status.shares, configuration()),
              "共享   已用  状态  上次备份\n"
              "Media   5 K  -     -\n"
              "Fotos  17 M  2     2026-11-21\n");
}

} // namespace
