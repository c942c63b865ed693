// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "client/commands.h"
#include "client/failure.h"
#include "client/metrics_report.h"
#include "view/file_start.h"
#include "vokcontrol.h"

namespace client {
namespace {

struct MetricsOptions {
    std::string file = config::kDefaultFile;
    std::string output;
};

[[noreturn]] void failWriting(const std::string& path)
{
    const int error = errno;
    ::unlink(path.c_str());
    throw Failure((error == EACCES || error == EPERM) ? kNotPermitted : kFailed,
                  "cannot write " + path + ": " + std::strerror(error));
}

/// Another program reads the file at any time, and must find the last whole one. Everybody may read
/// it, as its reader runs under an account of its own.
void writeWhole(const std::string& path, const std::string& text)
{
    const std::string fresh = path + ".new";
    ::unlink(fresh.c_str());
    const int file = ::open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (file < 0) {
        failWriting(fresh);
    }
    const ssize_t size = ::write(file, text.data(), text.size());
    const bool isWritten = size == static_cast<ssize_t>(text.size()) && ::fchmod(file, 0644) == 0;
    if (size >= 0 && size < static_cast<ssize_t>(text.size())) {
        errno = ENOSPC;
    }
    const int error = errno;
    const bool isClosed = ::close(file) == 0;
    if (!isWritten || !isClosed) {
        errno = isWritten ? errno : error;
        failWriting(fresh);
    }
    if (::rename(fresh.c_str(), path.c_str()) != 0) {
        failWriting(fresh);
    }
}

void runMetrics(const MetricsOptions& options)
{
    const config::Configuration configuration = config::read(options.file);
    const std::string usage = view::readFileStart(kUsageFile, VOK_USAGE_SIZE + 1).bytes;
    constexpr std::size_t kMostTimes = 65536;
    const std::string times = view::readFileStart(kTimesFile, kMostTimes).bytes;
    const std::string text = renderMetrics(view::readSituation(), configuration, usage, times);
    if (options.output.empty()) {
        std::cout << text;
    } else {
        writeWhole(options.output, text);
    }
}

} // namespace

void buildMetricsCommand(CLI::App& command)
{
    const auto options = std::make_shared<MetricsOptions>();
    command
        .add_option("--output", options->output,
                    "Replace this file, as a whole, instead of printing")
        ->type_name("PATH");
    command.add_option("--config", options->file, "Where the settings are read")
        ->type_name("PATH")
        ->capture_default_str();
    command.footer(
        "Examples:\n"
        "  vokctl metrics\n"
        "  vokctl metrics --output /var/lib/prometheus/node-exporter/vokcontrol.prom\n"
        "\n"
        "The OpenMetrics text that Prometheus reads, and its node exporter in a folder. What\n"
        "is not known has no line.");
    command.callback([options] { runMetrics(*options); });
}

} // namespace client
