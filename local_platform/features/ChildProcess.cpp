// SPDX-License-Identifier: MIT
#include "features/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace local_platform {

namespace {

constexpr auto pollInterval = std::chrono::milliseconds(10);
constexpr int cannotStart = 127;

void limit(__rlimit_resource resource, std::uint64_t value, std::uint64_t warning = 0)
{
    const struct rlimit both = {warning != 0 ? warning : value, value};
    ::setrlimit(resource, &both);
}

/// Between fork and exec only what is safe beside other threads: no allocation, no locks.
[[noreturn]] void becomeCommand(char* const* arguments, const char* directory, const char* errors,
    const ChildLimits& limits, const Cage::Door& door, pid_t parent)
{
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent)
        ::_exit(cannotStart); // it died before that
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);

    const int nothing = ::open("/dev/null", O_RDWR);
    const int reason = ::open(errors, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (nothing < 0 || reason < 0 || ::dup2(nothing, 0) < 0 || ::dup2(nothing, 1) < 0 || ::dup2(reason, 2) < 0
        || ::chdir(directory) != 0)
        ::_exit(cannotStart);
    const auto seconds = static_cast<std::uint64_t>(limits.processorTime.count());
    limit(RLIMIT_CPU, seconds + 1, seconds); // SIGXCPU, then SIGKILL
    limit(RLIMIT_DATA, limits.memory);
    limit(RLIMIT_FSIZE, limits.space);
    limit(RLIMIT_NOFILE, limits.files);
    limit(RLIMIT_CORE, 0);
    char* const environment[] = {nullptr};
    if (door.shut())
        ::execve(arguments[0], arguments, environment);
    ::_exit(cannotStart);
}

/// Whether it keeps to the limits that no call of the kernel sets for one process.
bool isWithin(const ChildLimits& limits, const std::string& threads, const std::filesystem::path& directory)
{
    struct stat status = {};
    if (::stat(threads.c_str(), &status) == 0 && status.st_nlink > limits.threads + 2)
        return false; // the folder's own two names, and one for each thread
    std::error_code ignored; // files come and go meanwhile
    std::uint64_t size = 0;
    unsigned files = 0;
    for (std::filesystem::directory_iterator file(directory, ignored), end; file != end;
         file.increment(ignored)) {
        std::error_code gone;
        const std::uintmax_t its = file->file_size(gone);
        size += gone ? 0 : its;
        if (++files > limits.files || size > limits.space)
            return false;
    }
    return true;
}

/// What ended the child before it ended itself; nothing when it did.
std::optional<ChildOutcome> watch(pid_t child, const std::filesystem::path& directory,
    const ChildLimits& limits, const std::function<bool()>& isWanted)
{
    const std::string threads = "/proc/" + std::to_string(child) + "/task";
    for (;;) {
        siginfo_t ended = {};
        // Its number is kept, so that its group can be killed whoever has come meanwhile.
        if (::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT) != 0
            || ended.si_pid != 0)
            return {};
        if (std::chrono::steady_clock::now() >= limits.deadline)
            return ChildOutcome::OutOfTime;
        if (!isWithin(limits, threads, directory))
            return ChildOutcome::Killed;
        if (!isWanted())
            return ChildOutcome::Unwanted;
        std::this_thread::sleep_for(pollInterval);
    }
}

} // namespace

ChildOutcome runChild(const std::vector<std::string>& command, const std::filesystem::path& directory,
    const std::filesystem::path& errors, const ChildLimits& limits, const Cage& cage,
    const std::function<bool()>& isWanted)
{
    const Cage::Door door(cage, directory);
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);

    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0)
        becomeCommand(arguments.data(), directory.c_str(), errors.c_str(), limits, door, parent);

    const std::optional<ChildOutcome> outcome = watch(child, directory, limits, isWanted);
    ::kill(-child, SIGKILL);
    ::kill(child, SIGKILL); // it may not have come to its own group yet
    int status = 0;
    ::waitpid(child, &status, 0);
    if (outcome)
        return *outcome;
    if (WIFEXITED(status))
        return WEXITSTATUS(status) == 0 ? ChildOutcome::Succeeded : ChildOutcome::Failed;
    return WTERMSIG(status) == SIGXCPU ? ChildOutcome::OutOfTime : ChildOutcome::Killed;
}

} // namespace local_platform
