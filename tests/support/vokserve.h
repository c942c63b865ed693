// SPDX-License-Identifier: MIT
//
// vokserve.h: runs the service for tests of its client.
#pragma once

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

#include "tests/support/root.h"

namespace root {

/// Runs vokserve at /tmp/socket during a test.
class ServedTest : public UntracedTest {
  protected:
    void SetUp() override
    {
        UntracedTest::SetUp();
        service_.emplace(std::vector<std::string>{built("vokserve"), "--shared-tmp", "--socket",
                                                  "/tmp/socket", "--path", path()});
        for (int tries = 0; tries < 500 && !exists("/tmp/socket"); ++tries) {
            ::usleep(10000);
        }
    }

    void TearDown() override
    {
        ::kill(service_->pid(), SIGTERM);
        EXPECT_EQ(service_->wait().exitCode, 0);
        UntracedTest::TearDown();
    }

    /// Calls the client with the service's socket.
    static Ended vokctl(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), built("vokctl"));
        arguments.insert(arguments.end(), {"--socket", "/tmp/socket"});
        return run(arguments);
    }

    static void expectEnd(const Ended& ended, int code, const std::string& output,
                          const std::string& errors)
    {
        EXPECT_EQ(ended.exitCode, code);
        EXPECT_EQ(ended.output, output);
        EXPECT_EQ(ended.errors, errors);
    }

  private:
    /// The PATH of this root, with the stubs before the commands.
    static std::string path() { return std::getenv("PATH"); }

    std::optional<Program> service_;
};

/// The same, after the service has answered once: then it has started completely, and ends in order
/// even after a short test.
class AnsweringTest : public ServedTest {
  protected:
    void SetUp() override
    {
        ServedTest::SetUp();
        for (int tries = 0; tries < 500 && vokctl({"raw", "gubs"}).exitCode != 0; ++tries) {
            ::usleep(10000);
        }
    }
};

} // namespace root
