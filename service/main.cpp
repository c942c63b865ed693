// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <csignal>
#include <optional>
#include <string>
#include <sys/resource.h>

#include "config/configuration.h"
#include "guard/guard.h"
#include "service/background.h"
#include "service/child.h"
#include "service/kept_files.h"
#include "service/listener.h"
#include "service/log.h"
#include "service/own_tmp.h"
#include "service/peer.h"
#include "service/server.h"
#include "service/service_lock.h"

namespace {

constexpr int kCannotServe = 1;
constexpr int kWrongUsage = 2;
constexpr int kAnotherServes = 3;

/// The settings: from the command line, else from the configuration file.
struct Options {
    std::string file = config::kDefaultFile;
    config::Configuration settings;
    service::GroupName members;
    service::GroupName viewers;
    bool isTmpShared = false;
    bool isInBackground = false;
    std::string pidFile;
    std::string log;
};

/// Each client needs a descriptor, and there may be a thousand at once.
void raiseDescriptorLimit()
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

/// Opens the log, and ends the process that waits for this one to listen.
void show(const Options& options, service::Background& background)
{
    if (!options.log.empty()) {
        service::logTo(options.log);
    }
    background.ready(!options.log.empty());
}

int serve(const Options& options, service::Background& background)
{
    const config::Configuration& settings = options.settings;
    // A client that closes its connection before its answer must not end the service.
    std::signal(SIGPIPE, SIG_IGN);
    raiseDescriptorLimit();
    const std::string path = "PATH=" + settings.path;
    guard::usePath(path.c_str());
    asio::io_context context(1);
    asio::signal_set stop(context, SIGTERM, SIGINT);
    const service::Admission admission(options.members, options.viewers);
    // Made before the socket, so that it is released after the socket was removed.
    const service::ServiceLock lock;
    service::Listener listener(context, settings.socket, admission.group(), admission.socketMode());
    // After the socket, which may be in the /tmp of all programs.
    if (!options.isTmpShared) {
        service::useOwnTmp();
    }
    service::protectVariableLock();
    // A service that was killed may have left the password of a new user in the traces.
    service::emptyTraces();
    service::Server server(context, listener, stop, admission,
                           {.send = std::chrono::seconds(settings.deadline),
                            .request = std::chrono::seconds(settings.timeout),
                            .passwordPause = std::chrono::seconds(settings.passwordPause)},
                           settings.path);
    const service::PidFile pidFile(options.pidFile);
    show(options, background);
    service::log("ready");
    server.run();
    service::log("stopped");
    return 0;
}

int start(const Options& options)
{
    service::Background background;
    if (options.isInBackground) {
        if (const std::optional<int> code = background.enter()) {
            return *code;
        }
    }
    return serve(options, background);
}

void addBackgroundOptions(CLI::App& program, Options& options)
{
    program.add_flag("--background", options.isInBackground,
                     "Serve in the background; the command ends when the service listens");
    program
        .add_option("--pidfile", options.pidFile,
                    "Write the process's number into this file while it runs")
        ->type_name("PATH");
    program.add_option("--log", options.log, "Append log lines to this file after it listens")
        ->type_name("PATH");
}

CLI::Option* addSeconds(CLI::App& program, const char* name, unsigned& number, const char* purpose)
{
    return program.add_option(name, number, purpose)->type_name("SECONDS")->capture_default_str();
}

/// In place of the library's check, whose complaint has the largest number in full.
std::string complainOfSeconds(const std::string& text)
{
    unsigned number = 0;
    const bool isGood = CLI::detail::lexical_cast(text, number) && number > 0;
    return isGood ? "" : "needs a number of seconds above 0";
}

void addOptions(CLI::App& program, Options& options)
{
    config::Configuration& settings = options.settings;
    program.add_option("--config", options.file, "Read the settings from this file")
        ->type_name("PATH")
        ->capture_default_str();
    program
        .add_option("--socket", settings.socket,
                    "Listen on this socket, unless systemd hands one over")
        ->type_name("PATH")
        ->capture_default_str();
    addSeconds(program, "--timeout", settings.timeout, "End a request that runs longer than this")
        ->check(complainOfSeconds, "POSITIVE");
    addSeconds(program, "--deadline", settings.deadline,
               "Time for a client to send its request, and again to receive its answer")
        ->check(complainOfSeconds, "POSITIVE");
    addSeconds(program, "--password-pause", settings.passwordPause,
               "The longest pause after wrong passwords; 0 for none");
    program
        .add_option("--group", settings.group,
                    "Members of this group may send every command; root always may")
        ->type_name("NAME")
        ->capture_default_str();
    program
        .add_option("--view-group", settings.viewGroup,
                    "Members of this group may send the commands that change nothing")
        ->type_name("NAME")
        ->capture_default_str();
    program.add_option("--path", settings.path, "The folders in which requests find programs")
        ->type_name("FOLDERS")
        ->capture_default_str();
    program.add_flag("--shared-tmp", options.isTmpShared,
                     "Use the /tmp of all programs for work files, not /run/vokcontrol/tmp");
}

/// Reads the command line, which may name the file, then the file, then the command line again,
/// because its settings win. A group must exist if it is not the default one.
void readSettings(CLI::App& program, int argc, char** argv, Options& options)
{
    program.parse(argc, argv);
    options.settings = config::read(options.file);
    program.parse(argc, argv);
    const config::Configuration& settings = options.settings;
    const config::Configuration usual;
    options.members = {settings.group,
                       program.count("--group") > 0 || settings.group != usual.group};
    options.viewers = {settings.viewGroup,
                       program.count("--view-group") > 0 || settings.viewGroup != usual.viewGroup};
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    CLI::App program("Carries requests to the appliance's control module.", "vokserve");
    program.set_version_flag("--version", "vokserve " VOKSERVE_VERSION);
    addOptions(program, options);
    addBackgroundOptions(program, options);
    program.footer(
        "Options win over the configuration file, vokcontrol.conf(5).\n\n"
        "A client sends one request, shuts its sending side down and reads the answer\n"
        "to its end. After SIGTERM the service finishes the request that runs, tells\n"
        "the waiting clients that it is stopping, and ends.\n\n"
        "Exit codes: 0 after SIGTERM; 1 if it cannot listen or cannot have a /tmp of its\n"
        "own; 2 for wrong usage or a wrong configuration; 3 if another service runs.");
    try {
        readSettings(program, argc, argv, options);
        return start(options);
    } catch (const CLI::ParseError& error) {
        return (program.exit(error) == 0) ? 0 : kWrongUsage;
    } catch (const config::BadConfiguration& failure) {
        service::log(failure.what());
        return kWrongUsage;
    } catch (const service::AnotherService& failure) {
        service::log(failure.what());
        return kAnotherServes;
    } catch (const std::exception& failure) {
        service::log(failure.what());
        return kCannotServe;
    }
}
