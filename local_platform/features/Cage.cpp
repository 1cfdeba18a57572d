// SPDX-License-Identifier: MIT
#include "features/Cage.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace local_platform {

namespace {

// Of later kernels than the headers may be.
constexpr std::uint64_t mayTruncate = 1u << 14;
constexpr std::uint64_t mayControlDevices = 1u << 15;
constexpr std::uint64_t anyTcp = 3;
constexpr std::uint64_t socketsAndSignalsOutside = 3;
struct RulesetAttributes
{
    std::uint64_t files;
    std::uint64_t network;
    std::uint64_t scope;
};

constexpr std::uint64_t mayRead = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_EXECUTE;
constexpr std::uint64_t mayList = LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t mayKeepFiles = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR
    | LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_REMOVE_FILE
    | mayTruncate;

int landlockVersion()
{
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return version < 0 ? 0 : static_cast<int>(version);
}

/// All that this version of Landlock can forbid.
RulesetAttributes allOf(int version)
{
    RulesetAttributes all = {LANDLOCK_ACCESS_FS_REFER - 1, 0, 0};
    if (version >= 2)
        all.files |= LANDLOCK_ACCESS_FS_REFER;
    if (version >= 3)
        all.files |= mayTruncate;
    if (version >= 4)
        all.network = anyTcp;
    if (version >= 5)
        all.files |= mayControlDevices;
    if (version >= 6)
        all.scope = socketsAndSignalsOutside;
    return all;
}

[[noreturn]] void fail(const char* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

/// What does not exist needs no rule.
void allow(int ruleset, const std::filesystem::path& path, std::uint64_t access)
{
    const int file = ::open(path.c_str(), O_PATH | O_CLOEXEC);
    if (file < 0)
        return;
    landlock_path_beneath_attr rule = {};
    rule.allowed_access = access;
    rule.parent_fd = file;
    const bool added = ::syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0;
    ::close(file);
    if (!added)
        fail("landlock_add_rule");
}

bool kernelTakesFilters()
{
    const std::uint32_t action = SECCOMP_RET_ERRNO;
    return ::syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

/// Memory, files by their descriptors and names, threads, waiting, the clocks. What names another process,
/// makes one, opens a socket or changes who may do what is not among them.
const int harmlessCalls[] = {
    SCMP_SYS(access),
    SCMP_SYS(arch_prctl),
    SCMP_SYS(brk),
    SCMP_SYS(capget),
    SCMP_SYS(clock_getres),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(clock_nanosleep),
    SCMP_SYS(close),
    SCMP_SYS(close_range),
    SCMP_SYS(copy_file_range),
    SCMP_SYS(dup),
    SCMP_SYS(dup2),
    SCMP_SYS(dup3),
    SCMP_SYS(epoll_create),
    SCMP_SYS(epoll_create1),
    SCMP_SYS(epoll_ctl),
    SCMP_SYS(epoll_pwait),
    SCMP_SYS(epoll_pwait2),
    SCMP_SYS(epoll_wait),
    SCMP_SYS(eventfd),
    SCMP_SYS(eventfd2),
    SCMP_SYS(execve),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
    SCMP_SYS(faccessat),
    SCMP_SYS(faccessat2),
    SCMP_SYS(fadvise64),
    SCMP_SYS(fdatasync),
    SCMP_SYS(fstat),
    SCMP_SYS(fstatfs),
    SCMP_SYS(fsync),
    SCMP_SYS(ftruncate),
    SCMP_SYS(futex),
    SCMP_SYS(getcwd),
    SCMP_SYS(getdents64),
    SCMP_SYS(getegid),
    SCMP_SYS(geteuid),
    SCMP_SYS(getgid),
    SCMP_SYS(getpid),
    SCMP_SYS(getppid),
    SCMP_SYS(getrandom),
    SCMP_SYS(getrlimit),
    SCMP_SYS(getrusage),
    SCMP_SYS(gettid),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(getuid),
    SCMP_SYS(lseek),
    SCMP_SYS(lstat),
    SCMP_SYS(madvise),
    SCMP_SYS(membarrier),
    SCMP_SYS(mprotect),
    SCMP_SYS(mremap),
    SCMP_SYS(munmap),
    SCMP_SYS(nanosleep),
    SCMP_SYS(newfstatat),
    SCMP_SYS(open),
    SCMP_SYS(openat),
    SCMP_SYS(pipe),
    SCMP_SYS(pipe2),
    SCMP_SYS(pkey_alloc),
    SCMP_SYS(pkey_free),
    SCMP_SYS(pkey_mprotect),
    SCMP_SYS(poll),
    SCMP_SYS(ppoll),
    SCMP_SYS(pread64),
    SCMP_SYS(preadv),
    SCMP_SYS(pselect6),
    SCMP_SYS(pwrite64),
    SCMP_SYS(pwritev),
    SCMP_SYS(read),
    SCMP_SYS(readlink),
    SCMP_SYS(readlinkat),
    SCMP_SYS(readv),
    SCMP_SYS(rename),
    SCMP_SYS(renameat),
    SCMP_SYS(renameat2),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(rseq),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigpending),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(rt_sigsuspend),
    SCMP_SYS(rt_sigtimedwait),
    SCMP_SYS(sched_getaffinity),
    SCMP_SYS(sched_getparam),
    SCMP_SYS(sched_getscheduler),
    SCMP_SYS(sched_yield),
    SCMP_SYS(select),
    SCMP_SYS(set_robust_list),
    SCMP_SYS(set_tid_address),
    SCMP_SYS(setrlimit),
    SCMP_SYS(sigaltstack),
    SCMP_SYS(stat),
    SCMP_SYS(statfs),
    SCMP_SYS(statx),
    SCMP_SYS(sysinfo),
    SCMP_SYS(time),
    SCMP_SYS(umask),
    SCMP_SYS(uname),
    SCMP_SYS(unlink),
    SCMP_SYS(unlinkat),
    SCMP_SYS(write),
    SCMP_SYS(writev),
};

/// Calls that are harmless where an argument, masked, has a value.
struct Condition
{
    int call;
    unsigned argument;
    scmp_datum_t mask;
    scmp_datum_t value;
};
constexpr scmp_datum_t all = ~scmp_datum_t{0};
constexpr scmp_datum_t command = 0xffffffff;
constexpr scmp_datum_t newNamespaces =
    CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS | CLONE_NEWIPC | CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;
constexpr scmp_datum_t nameOfMapping = 0x53564d41; // PR_SET_VMA
const Condition harmlessArguments[] = {
    {SCMP_SYS(clone), 0, CLONE_THREAD | newNamespaces, CLONE_THREAD}, // threads and no processes
    {SCMP_SYS(mmap), 3, MAP_SHARED, 0}, // shared memory without a file is not counted by the limits
    {SCMP_SYS(mmap), 3, MAP_ANONYMOUS, 0},
    {SCMP_SYS(prlimit64), 0, all, 0}, // its own limits
    {SCMP_SYS(prctl), 0, command, PR_SET_NAME},
    {SCMP_SYS(prctl), 0, command, nameOfMapping},
    {SCMP_SYS(ioctl), 1, command, TCGETS}, // asks whether it is a terminal
    {SCMP_SYS(ioctl), 1, command, FIOCLEX},
    {SCMP_SYS(ioctl), 1, command, FIONBIO},
    {SCMP_SYS(ioctl), 1, command, FIONREAD},
    {SCMP_SYS(fcntl), 1, command, F_DUPFD}, // not F_SETOWN, which sends signals
    {SCMP_SYS(fcntl), 1, command, F_DUPFD_CLOEXEC},
    {SCMP_SYS(fcntl), 1, command, F_GETFD},
    {SCMP_SYS(fcntl), 1, command, F_SETFD},
    {SCMP_SYS(fcntl), 1, command, F_GETFL},
    {SCMP_SYS(fcntl), 1, command, F_SETFL},
};

void check(int result, const char* what)
{
    if (result < 0) {
        errno = -result;
        fail(what);
    }
}

/// Every other call fails as if the kernel had none of that name, for which programs are prepared.
std::vector<sock_filter> filterOfCalls()
{
    const auto release = [](scmp_filter_ctx context) { ::seccomp_release(context); };
    const std::unique_ptr<void, decltype(release)> filter(::seccomp_init(SCMP_ACT_ERRNO(ENOSYS)), release);
    if (!filter)
        throw std::runtime_error("No filter of system calls can be made");
    check(
        ::seccomp_attr_set(filter.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_KILL_PROCESS), "seccomp_attr_set");
    check(::seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_OPTIMIZE, 2), "seccomp_attr_set");
    for (const int call : harmlessCalls)
        if (call >= 0) // this architecture has it
            check(::seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0), "seccomp_rule_add");
    for (const Condition& condition : harmlessArguments) {
        const scmp_arg_cmp comparison = {
            condition.argument, SCMP_CMP_MASKED_EQ, condition.mask, condition.value};
        check(::seccomp_rule_add_array(filter.get(), SCMP_ACT_ALLOW, condition.call, 1, &comparison),
            "seccomp_rule_add_array");
    }

    const int file = ::memfd_create("filter", MFD_CLOEXEC);
    if (file < 0)
        fail("memfd_create");
    const int exported = ::seccomp_export_bpf(filter.get(), file);
    struct stat status = {};
    std::vector<sock_filter> program;
    if (exported == 0 && ::fstat(file, &status) == 0)
        program.resize(static_cast<std::size_t>(status.st_size) / sizeof(sock_filter));
    const ssize_t wanted = static_cast<ssize_t>(program.size() * sizeof(sock_filter));
    const ssize_t got = ::pread(file, program.data(), static_cast<std::size_t>(wanted), 0);
    ::close(file);
    if (wanted == 0 || got != wanted)
        throw std::runtime_error("The filter of system calls cannot be read");
    return program;
}

} // namespace

Cage::Cage(std::vector<std::filesystem::path> needed)
    : needed_(std::move(needed))
    , landlock_(landlockVersion())
{
    if (landlock_ == 0)
        gaps_.emplace_back("files beside its own: the kernel lacks Landlock");
    if (kernelTakesFilters())
        filter_ = filterOfCalls();
    else
        gaps_.emplace_back("the network and other processes: the kernel lacks seccomp filters");
}

Cage::Door::Door(const Cage& cage, const std::filesystem::path& folder)
    : cage_(cage)
{
    if (cage_.landlock_ == 0)
        return;
    const RulesetAttributes attributes = allOf(cage_.landlock_);
    // Earlier kernels know fewer attributes, and refuse the others unless they are zero.
    ruleset_ = static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0));
    if (ruleset_ < 0)
        fail("landlock_create_ruleset");
    try {
        for (const auto& path : cage_.needed_)
            allow(ruleset_, path, std::filesystem::is_directory(path) ? mayRead | mayList : mayRead);
        allow(ruleset_, "/dev/null", LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE);
        allow(ruleset_, folder, mayKeepFiles & attributes.files);
    } catch (...) {
        ::close(ruleset_);
        throw;
    }
}

Cage::Door::~Door()
{
    if (ruleset_ >= 0)
        ::close(ruleset_);
}

bool Cage::Door::shut() const noexcept
{
    const sock_fprog program = {
        static_cast<unsigned short>(cage_.filter_.size()), const_cast<sock_filter*>(cage_.filter_.data())};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
        && (ruleset_ < 0 || ::syscall(SYS_landlock_restrict_self, ruleset_, 0) == 0)
        && ::close_range(3, ~0u, 0) == 0
        && (program.len == 0 || ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) == 0);
}

} // namespace local_platform
