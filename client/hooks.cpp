// SPDX-License-Identifier: MIT
#include "client/hooks.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <grp.h>
#include <optional>
#include <pwd.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "client/failure.h"

namespace client {
namespace {

namespace fs = std::filesystem;

// ---- Finding ------------------------------------------------------------------------------------

bool isHookName(const std::string& name)
{
    return !name.empty() && std::ranges::all_of(name, [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '-' || c == '_';
    });
}

bool isOthers(const struct stat& status)
{
    const bool isOurs = status.st_uid == 0 || status.st_uid == ::geteuid();
    return !isOurs || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

/// Why a program is not run; nothing if it is no program at all.
std::optional<std::string> objectTo(const std::string& path, const struct stat& folder)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) ||
        (status.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) == 0) {
        return std::nullopt;
    }
    if (isOthers(folder)) {
        return "was not run, because others can change its folder (chown root, chmod go-w)";
    }
    return isOthers(status) ? "was not run, because others can change it (chown root, chmod go-w)"
                            : "";
}

// ---- Running ------------------------------------------------------------------------------------

/// Whom a program runs as.
struct Account {
    std::string name;
    uid_t user;
    gid_t group;
    std::string home;
};

std::optional<Account> findAccount(const std::string& name)
{
    const passwd* entry = name.empty() ? ::getpwuid(::geteuid()) : ::getpwnam(name.c_str());
    if (entry == nullptr) {
        return name.empty() ? std::optional(Account{"", ::geteuid(), ::getegid(), "/"})
                            : std::nullopt;
    }
    return Account{entry->pw_name, entry->pw_uid, entry->pw_gid, entry->pw_dir};
}

/// A file that is nowhere, for standard input: a program that does not read it blocks nobody.
int holdText(const std::string& text)
{
    const int file = ::memfd_create("findings", MFD_CLOEXEC);
    const auto size = static_cast<ssize_t>(text.size());
    if (file >= 0 &&
        (::write(file, text.data(), text.size()) != size || ::lseek(file, 0, SEEK_SET) != 0)) {
        ::close(file);
        return -1;
    }
    return file;
}

bool become(const Account& account, bool isAnother)
{
    return !isAnother || (::initgroups(account.name.c_str(), account.group) == 0 &&
                          ::setgid(account.group) == 0 && ::setuid(account.user) == 0);
}

/// In the child: never returns.
[[noreturn]] void execute(const Hook& hook, int input, const Account& account, bool isAnother,
                          const std::vector<char*>& environment)
{
    constexpr int kCannotRun = 126;
    ::setpgid(0, 0);
    std::signal(SIGPIPE, SIG_DFL);
    const bool isReady = ::dup2(input, STDIN_FILENO) >= 0 &&
                         ::dup2(STDERR_FILENO, STDOUT_FILENO) >= 0 && ::chdir("/") == 0 &&
                         become(account, isAnother);
    if (isReady) {
        const auto arguments =
            std::to_array<char*>({const_cast<char*>(hook.path.c_str()), nullptr});
        ::execve(hook.path.c_str(), arguments.data(), environment.data());
    }
    ::_exit(kCannotRun);
}

std::string describeEnd(int status)
{
    if (WIFSIGNALED(status)) {
        return std::string("was ended by a signal: ") + ::strsignal(WTERMSIG(status));
    }
    const int code = WEXITSTATUS(status);
    return (code == 0) ? "" : "ended with " + std::to_string(code);
}

/// What a program leaves in the background goes on: mail programs deliver there.
std::string awaitEnd(pid_t child, std::chrono::seconds timeout)
{
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kPause{10};
    const auto end = Clock::now() + timeout;
    int status = 0;
    pid_t ended = 0;
    while ((ended = ::waitpid(child, &status, WNOHANG)) == 0 && Clock::now() < end) {
        std::this_thread::sleep_for(kPause);
    }
    if (ended == 0) {
        ::kill(-child, SIGKILL);
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
        return "took longer than " + std::to_string(timeout.count()) + " seconds and was killed";
    }
    return describeEnd(status);
}

std::vector<std::string> environmentOf(const HookInput& input, const Account& account)
{
    std::vector<std::string> environment = {
        "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "HOME=" + account.home,
        "LC_ALL=C.UTF-8"};
    environment.insert(environment.end(), input.environment.begin(), input.environment.end());
    return environment;
}

} // namespace

std::vector<Hook> findHooks(const std::string& folder)
{
    std::vector<Hook> hooks;
    struct stat status = {};
    if (::stat(folder.c_str(), &status) != 0 && errno == ENOENT) {
        return hooks;
    }
    std::error_code error;
    for (const auto& each : fs::directory_iterator(folder, error)) {
        const std::string name = each.path().filename();
        const auto objection =
            isHookName(name) ? objectTo(each.path(), status) : std::optional<std::string>();
        if (objection) {
            hooks.push_back({name, each.path(), *objection});
        }
    }
    if (error) {
        throw Failure(kFailed, "cannot read " + folder + ": " + error.message());
    }
    std::ranges::sort(hooks, {}, &Hook::name);
    return hooks;
}

std::string runHook(const Hook& hook, const HookInput& input, const HookLimits& limits)
{
    if (!hook.objection.empty()) {
        return hook.objection;
    }
    const std::optional<Account> account = findAccount(limits.account);
    if (!account) {
        return "was not run: there is no account " + limits.account;
    }
    std::vector<std::string> texts = environmentOf(input, *account);
    std::vector<char*> environment;
    environment.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        environment.push_back(text.data());
    }
    environment.push_back(nullptr);
    const int file = holdText(input.text);
    const pid_t child = (file >= 0) ? ::fork() : -1;
    if (child == 0) {
        execute(hook, file, *account, !limits.account.empty(), environment);
    }
    const int error = errno;
    if (file >= 0) {
        ::close(file);
    }
    if (child < 0) {
        return std::string("was not run: ") + std::strerror(error);
    }
    return awaitEnd(child, limits.timeout);
}

} // namespace client
