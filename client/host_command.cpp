// SPDX-License-Identifier: MIT
#include <ctime>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>

#include "client/commands.h"
#include "client/connection_options.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "core/languages.h"
#include "text/translation.h"
#include "view/wording.h"

namespace client {
namespace {

struct Options {
    Connection connection;
    std::string time;
    std::string name;
    std::string workGroup;
    std::string language;
};

/// The time of the option, or the present time; in UTC.
std::tm readTime(const std::string& text)
{
    std::tm time = {};
    if (text.empty()) {
        const std::time_t now = std::time(nullptr);
        ::gmtime_r(&now, &time);
        return time;
    }
    constexpr const char* kForm = "%Y-%m-%dT%H:%M:%S";
    constexpr std::size_t kSize = std::string_view("2026-11-21T18:30:00").size();
    std::istringstream in(text);
    in >> std::get_time(&time, kForm);
    // A day that does not exist, or a similar form, would be printed differently.
    std::tm normal = time;
    const std::time_t seconds = ::timegm(&normal);
    ::gmtime_r(&seconds, &normal);
    std::ostringstream again;
    again << std::put_time(&normal, kForm);
    if (in.fail() || text.size() != kSize || again.str() != text) {
        throw Failure(kWrongUsage, text::tr("--time needs the form 2026-11-21T18:30:00, in UTC"));
    }
    return time;
}

/// The longest names, in bytes.
constexpr std::size_t kLongestHostName = cmdsvc::parameter("host", "host name").limit.longest;
constexpr std::size_t kLongestWorkGroup = cmdsvc::parameter("host", "work group").limit.longest;

/// Fails if the appliance would refuse a name, or leave the old one without saying so. An empty
/// name is one that is not given.
void expectSize(const char* option, const std::string& name, std::size_t longest)
{
    constexpr std::size_t kShortest = 2;
    if (!name.empty() && (name.size() < kShortest || name.size() > longest)) {
        throw Failure(kWrongUsage,
                      text::fill(text::tr("{1} needs {2} to {3} bytes"),
                                 {option, std::to_string(kShortest), std::to_string(longest)}));
    }
}

/// A time in the form of the appliance.
std::string formatTime(const std::tm& time)
{
    return view::formatTime("%m%d%H%M%Y.%S", time);
}

void setHost(const Options& options)
{
    expectSize("--name", options.name, kLongestHostName);
    expectSize("--workgroup", options.workGroup, kLongestWorkGroup);
    askToDo(options.connection, {cmdsvc::command("host"),
                                 {formatTime(readTime(options.time)), options.name,
                                  options.workGroup, options.language}});
    std::cerr << "vokctl: " << text::tr("the settings were applied") << "\n";
}

/// "en (english), fr (french)" and so on.
std::string listLanguages()
{
    std::string list;
    for (const core::Language& language : core::kLanguages) {
        list +=
            (list.empty() ? "" : ", ") + std::string(language.code) + " (" + language.name + ")";
    }
    return list;
}

} // namespace

void buildHostCommand(CLI::App& host)
{
    host.require_subcommand(1);
    CLI::App* set = host.add_subcommand("set", "Set clock, names and language");
    const auto options = std::make_shared<Options>();
    set->add_option("--time", options->time, "The time in UTC, 2026-11-21T18:30:00 (default: now)")
        ->type_name("TIME");
    set->add_option("--name", options->name,
                    "The host name, 2 to " + std::to_string(kLongestHostName) +
                        " bytes; if it is not given, the name is not changed")
        ->type_name("NAME");
    set->add_option("--workgroup", options->workGroup,
                    "The work group, 2 to " + std::to_string(kLongestWorkGroup) +
                        " bytes; if it is not given, the group is not changed")
        ->type_name("NAME");
    set->add_option("--language", options->language, "One of " + listLanguages())
        ->type_name("CODE")
        ->required();
    addConnectionOptions(*set, options->connection);
    set->footer("Examples:\n"
                "  vokctl host set --language en\n"
                "  vokctl host set --language fr --name cellar --workgroup HOME\n"
                "  vokctl host set --language ge --time 2026-11-21T18:30:00");
    set->callback([options] { setHost(*options); });
}

} // namespace client
