// SPDX-License-Identifier: MIT
#include "config/configuration.h"

#include <filesystem>
#include <sys/stat.h>

#include "tests/support/root.h"

namespace {

using config::Configuration;

constexpr const char* kFile = "/tmp/settings";
constexpr const char* kOthersCan =
    "/tmp/settings: others can change this file; it must belong to root, and only its owner may "
    "write it (chown root, chmod go-w)";

class Settings : public root::Test {
  protected:
    void TearDown() override
    {
        std::filesystem::remove_all(config::kDefaultFile);
        root::Test::TearDown();
    }

    static std::string complaintOf(const std::string& path = kFile)
    {
        try {
            static_cast<void>(config::read(path));
        } catch (const config::BadConfiguration& failure) {
            return failure.what();
        }
        return "none";
    }
};

TEST_F(Settings, missingDefaultFileIsTheDefaults)
{
    EXPECT_TRUE(config::read() == Configuration());
}

TEST_F(Settings, defaultFileIsRead)
{
    root::writeFile(config::kDefaultFile, "[service]\ntimeout = 5\n");
    EXPECT_TRUE(config::read() == Configuration{.timeout = 5});
}

TEST_F(Settings, fileThatIsNamedMustBeThere)
{
    EXPECT_EQ(complaintOf(), "/tmp/settings: cannot be read: No such file or directory");
    root::writeFile(kFile, "[client]\ntimeout = 5");
    EXPECT_TRUE(config::read(kFile) == Configuration{.clientTimeout = 5});
}

TEST_F(Settings, defaultFileThatIsThereMustBeReadable)
{
    root::writeFile(config::kDefaultFile, "[client]\ntimeout = 5");
    root::makeUnreadable(config::kDefaultFile);
    EXPECT_EQ(complaintOf(config::kDefaultFile),
              "/etc/vokcontrol.conf: cannot be read: Permission denied");
}

TEST_F(Settings, complaintNamesFileAndLine)
{
    root::writeFile(kFile, "[client]\ntimeout = x");
    EXPECT_EQ(complaintOf(), "/tmp/settings:2: timeout must be a whole number from 1 to 86400");
}

TEST_F(Settings, fileThatOthersCanWriteIsRefused)
{
    root::writeFile(kFile, "[client]\ntimeout = 5");
    for (const mode_t mode : {0666U, 0620U, 0602U}) {
        ::chmod(kFile, mode);
        EXPECT_EQ(complaintOf(), kOthersCan);
    }
    ::chmod(kFile, 0644);
    EXPECT_EQ(complaintOf(), "none");
}

TEST_F(Settings, whatIsNoFileIsRefused)
{
    ::mkfifo(kFile, 0600);
    EXPECT_EQ(complaintOf(), "/tmp/settings: this is not a plain file");
    EXPECT_EQ(complaintOf("/dev/null"), "/dev/null: this is not a plain file");
    EXPECT_EQ(complaintOf("/etc"), "/etc: this is not a plain file");
}

TEST_F(Settings, fileIsReadWholeUpToItsLimit)
{
    const std::string end = "\n[client]\ntimeout = 5";
    root::writeFile(kFile, "#" + std::string(65535 - end.size(), 'x') + end);
    EXPECT_TRUE(config::read(kFile) == Configuration{.clientTimeout = 5});
    root::writeFile(kFile, "#" + std::string(65536 - end.size(), 'x') + end);
    EXPECT_EQ(complaintOf(), "/tmp/settings: the file is larger than 65536 bytes");
}

TEST_F(Settings, nothingStaysOpen)
{
    root::writeFile(kFile, "[client]\ntimeout = x");
    static_cast<void>(complaintOf());
    EXPECT_EQ(root::openFiles(), std::vector<std::string>());
}

} // namespace
