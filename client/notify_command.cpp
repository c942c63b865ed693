// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <array>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <unistd.h>

#include "client/commands.h"
#include "client/failure.h"
#include "client/hooks.h"
#include "client/json_values.h"
#include "client/notification.h"

namespace client {
namespace {

struct NotifyOptions {
    std::string file = config::kDefaultFile;
    bool test = false;
};

/// What is told.
struct Message {
    view::Level before;
    view::Level now;
    std::time_t time;
    bool isTest;
    std::vector<view::Finding> findings;
};

std::string hostName()
{
    std::array<char, 256> name{};
    return (::gethostname(name.data(), name.size() - 1) == 0) ? name.data() : "";
}

HookInput inputOf(const Message& message)
{
    Json json;
    json["host"] = hostName();
    json["time"] = makeTime(message.time);
    json["test"] = message.isTest;
    json["old_level"] = view::wordOf(message.before);
    json["new_level"] = view::wordOf(message.now);
    json["findings"] = makeFindings(message.findings);
    std::vector<std::string> environment = {
        std::string("VOKCONTROL_OLD_LEVEL=") + view::wordOf(message.before),
        std::string("VOKCONTROL_NEW_LEVEL=") + view::wordOf(message.now)};
    if (message.isTest) {
        environment.emplace_back("VOKCONTROL_TEST=yes");
    }
    return {.text = renderJson(json), .environment = environment};
}

/// Runs one program after the other. @return how many have failed
int tell(const std::vector<Hook>& hooks, const Message& message,
         const config::Configuration& configuration)
{
    const HookInput input = inputOf(message);
    const HookLimits limits{.account = configuration.notifyAccount,
                            .timeout = std::chrono::seconds(configuration.notifyTimeout)};
    int failed = 0;
    for (const Hook& hook : hooks) {
        const std::string failure = runHook(hook, input, limits);
        if (!failure.empty()) {
            std::cerr << "vokctl: " << hook.path << " " << failure << "\n";
            ++failed;
        } else if (message.isTest) {
            std::cout << hook.path << " ended well\n";
        }
    }
    return failed;
}

/// What was told is kept even if a program has failed: the others would be run again and again.
void keepTold(const Told& told)
{
    const int error = writeTold(told);
    if (error != 0) {
        throw Failure(kFailed, std::string("cannot write ") + kToldFile +
                                   ", so the same will be "
                                   "told again: " +
                                   std::strerror(error));
    }
}

void runNotify(const NotifyOptions& options)
{
    const config::Configuration configuration = config::read(options.file);
    const std::vector<Hook> hooks = findHooks();
    if (hooks.empty() && options.test) {
        throw Failure(kNoData, std::string("no program is switched on in ") + kHookFolder);
    }
    if (hooks.empty()) {
        return;
    }
    const TellingLock lock;
    const view::Situation situation = view::readSituation();
    const Told last = readTold();
    Message message{.before = last.level,
                    .now = view::Level::kFine,
                    .time = situation.now,
                    .isTest = options.test,
                    .findings = view::judge(situation, configuration)};
    message.now = view::worstOf(message.findings);
    if (!options.test && !isDue(last, message.now, situation.now)) {
        return;
    }
    if (!options.test) {
        keepTold({message.now, situation.now});
    }
    if (tell(hooks, message, configuration) > 0) {
        throw Failure(kFailed, "not everybody was told");
    }
}

} // namespace

void buildNotifyCommand(CLI::App& command)
{
    const auto options = std::make_shared<NotifyOptions>();
    command.add_flag("--test", options->test, "Run the programs now, whatever was told last");
    command.add_option("--config", options->file, "Where the settings are read")
        ->type_name("PATH")
        ->capture_default_str();
    command.footer(
        "Examples:\n"
        "  vokctl notify          for a timer: tells if there is something new\n"
        "  vokctl notify --test   try the programs\n"
        "\n"
        "Runs the programs in /etc/vokcontrol/notify.d when the judgement becomes better or\n"
        "worse, and once a day while it is not fine. They get the findings as JSON. Ends\n"
        "with 8 when one of them has failed.");
    command.callback([options] { runNotify(*options); });
}

} // namespace client
