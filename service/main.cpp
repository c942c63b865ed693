// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <csignal>
#include <string>
#include <sys/resource.h>

#include "guard/guard.h"
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

struct Options {
    std::string socket = "/run/vokcontrol.sock";
    unsigned timeout = 60;
    unsigned deadline = 10;
    unsigned passwordPause = 16;
    std::string group = "vokcontrol";
    bool isGroupGiven = false;
    bool isTmpShared = false;
    std::string path = service::kDefaultPath;
};

/// A thousand clients at once are a thousand descriptors.
void raiseDescriptorLimit()
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

int serve(const Options& options)
{
    // A client that leaves before its answer must not end the service.
    std::signal(SIGPIPE, SIG_IGN);
    raiseDescriptorLimit();
    const std::string path = "PATH=" + options.path;
    guard::usePath(path.c_str());
    asio::io_context context(1);
    asio::signal_set stop(context, SIGTERM, SIGINT);
    const service::Admission admission(options.group, options.isGroupGiven);
    // It is released last, when the socket is gone.
    const service::ServiceLock lock;
    if (!options.isTmpShared) {
        service::useOwnTmp(options.socket);
    }
    service::protectVariableLock();
    // A service that was killed may have left the password of a new user there.
    service::emptyTraces();
    service::Listener listener(context, options.socket, admission.group());
    service::Server server(context, listener, stop, admission,
                           {.send = std::chrono::seconds(options.deadline),
                            .request = std::chrono::seconds(options.timeout),
                            .passwordPause = std::chrono::seconds(options.passwordPause)},
                           options.path);
    service::log("ready");
    server.run();
    service::log("stopped");
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    CLI::App program("Carries requests to the appliance's control module.", "vokserve");
    program.set_version_flag("--version", "vokserve " VOKSERVE_VERSION);
    program
        .add_option("--socket", options.socket, "Listen here, unless systemd hands over a socket")
        ->type_name("PATH")
        ->capture_default_str();
    program.add_option("--timeout", options.timeout, "End a request that runs longer than this")
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    program
        .add_option("--deadline", options.deadline,
                    "Give a client so long to send its request, and so long to take its answer")
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    program
        .add_option("--password-pause", options.passwordPause,
                    "The longest pause of a user who asks for wrong passwords; 0 for none")
        ->type_name("SECONDS")
        ->capture_default_str();
    const CLI::Option* group =
        program
            .add_option(
                "--group", options.group,
                "Members of this group may ask; root always may. Without such a group it is "
                "root alone")
            ->type_name("NAME")
            ->capture_default_str();
    program.add_option("--path", options.path, "Where requests find the appliance's programs")
        ->type_name("FOLDERS")
        ->capture_default_str();
    program.add_flag("--shared-tmp", options.isTmpShared,
                     "Use everybody's /tmp for work files, instead of /run/vokcontrol/tmp");
    program.footer("A client sends one request frame, shuts its sending side down and reads the\n"
                   "answer up to its end. SIGTERM finishes the request in hand, tells the clients\n"
                   "that wait, and ends the service with 0. Ends with 1 when it cannot listen or\n"
                   "have a /tmp of its own, 2 on wrong usage, 3 if another service runs.");
    try {
        program.parse(argc, argv);
        options.isGroupGiven = group->count() > 0;
        return serve(options);
    } catch (const CLI::ParseError& error) {
        return (program.exit(error) == 0) ? 0 : kWrongUsage;
    } catch (const service::AnotherService& failure) {
        service::log(failure.what());
        return kAnotherServes;
    } catch (const std::exception& failure) {
        service::log(failure.what());
        return kCannotServe;
    }
}
