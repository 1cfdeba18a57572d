// SPDX-License-Identifier: MIT
#include "features/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace local_platform {

namespace {

constexpr auto pollInterval = std::chrono::milliseconds(10);
constexpr int cannotStart = 127;

void limit(__rlimit_resource resource, std::uint64_t value)
{
    const struct rlimit both = {value, value};
    ::setrlimit(resource, &both);
}

/// Between fork and exec only what is safe beside other threads: no allocation, no locks.
[[noreturn]] void becomeCommand(char* const* arguments, char* const* environment, const char* directory,
    const char* errors, const ChildLimits& limits)
{
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);

    const int nothing = ::open("/dev/null", O_RDWR);
    const int reason = ::open(errors, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (nothing < 0 || reason < 0 || ::dup2(nothing, 0) < 0 || ::dup2(nothing, 1) < 0 || ::dup2(reason, 2) < 0
        || ::close_range(3, ~0u, 0) != 0 || ::chdir(directory) != 0)
        ::_exit(cannotStart);
    limit(RLIMIT_DATA, limits.memory);
    limit(RLIMIT_FSIZE, limits.fileSize);
    limit(RLIMIT_CORE, 0);
    ::execvpe(arguments[0], arguments, environment);
    ::_exit(cannotStart);
}

} // namespace

ChildOutcome runChild(const std::vector<std::string>& command, const std::filesystem::path& directory,
    const std::filesystem::path& errors, const ChildLimits& limits)
{
    const char* searchPath = std::getenv("PATH");
    std::string path = std::string("PATH=") + (searchPath ? searchPath : "/usr/local/bin:/usr/bin:/bin");
    char* environment[] = {path.data(), nullptr};
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);

    const pid_t child = ::fork();
    if (child < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0)
        becomeCommand(arguments.data(), environment, directory.c_str(), errors.c_str(), limits);

    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() >= limits.deadline) {
            ::kill(-child, SIGKILL);
            ::kill(child, SIGKILL); // it may not have come to its own group yet
            ::waitpid(child, &status, 0);
            return ChildOutcome::OutOfTime;
        }
        std::this_thread::sleep_for(pollInterval);
    }
    if (!WIFEXITED(status))
        return ChildOutcome::Killed;
    return WEXITSTATUS(status) == 0 ? ChildOutcome::Succeeded : ChildOutcome::Failed;
}

} // namespace local_platform
