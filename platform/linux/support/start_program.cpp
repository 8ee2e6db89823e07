// SPDX-License-Identifier: MIT
#include "platform/linux/support/start_program.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <memory>

#include "platform/linux/support/host_error.h"
#include "support/block_signals.h"

namespace vornplatform {
namespace {

/** Room for a few plain calls, also as sanitizers compile them. */
struct alignas(16) Stack {
    std::byte bytes[64 * 1024];
};

/** What the child needs to know, made before it starts, for it must not allocate. */
struct Plan {
    char* const* argv;
    char* const* environment;
    int output;
    uid_t user;
    gid_t group;
    int error; /**< set by the child where it fails; it shares the memory */
};

/** Nothing that the host program handles or ignores is handled or ignored by the program. */
bool ResetSignals() {
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    // Those that can't be set (SIGKILL, and two of the C library) are neither.
    for (int signal = 1; signal < _NSIG; ++signal) {
        sigaction(signal, &action, nullptr);
    }
    sigset_t none;
    sigemptyset(&none);
    return sigprocmask(SIG_SETMASK, &none, nullptr) == 0;
}

/** Not open(), where a cancelled thread of the host program would end. */
bool OpenNull(int as, int flags) {
    return syscall(SYS_openat, AT_FDCWD, "/dev/null", flags, 0) == as;
}

/** Closes before it opens: the host program may have as many open as it may have. */
bool ArrangeDescriptors(int output) {
    if (dup2(output, 1) != 1) {
        return false;
    }
    close(0);
    closefrom(2);
    return OpenNull(0, O_RDONLY) && OpenNull(2, O_WRONLY);
}

/** The host program's limit may be used up by what it has open; the program has three. */
bool AllowDescriptors() {
    constexpr rlim_t kUsual = 1024;
    rlimit limit;
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return false;
    }
    limit.rlim_cur = std::max(limit.rlim_cur, std::min(kUsual, limit.rlim_max));
    return setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

/**
 * Programs that find their real user to differ take themselves for set-user-id and refuse to work,
 * and whoever the real user is could send them signals. Not setresuid(), by which the C library
 * would change the threads of the host program. The other groups stay as they are: they give
 * nothing to root, and an ordinary user has them rightly.
 */
bool TakeOneIdentity(uid_t user, gid_t group) {
    return syscall(SYS_setresgid, group, group, group) == 0 &&
           syscall(SYS_setresuid, user, user, user) == 0;
}

/** In the child, whose memory is the host program's: plain system calls only. */
int Become(void* argument) {
    Plan& plan = *static_cast<Plan*>(argument);
    if (TakeOneIdentity(plan.user, plan.group) && setpgid(0, 0) == 0 &&
        ArrangeDescriptors(plan.output) && chdir("/") == 0 && AllowDescriptors() &&
        ResetSignals()) {
        execve(plan.argv[0], plan.argv, plan.environment);
    }
    plan.error = errno;
    return 127;
}

#ifdef __SANITIZE_THREAD__
/** ThreadSanitizer takes a child for a copy. What can't be started seems to end with 127 then. */
constexpr int kChildFlags = CLONE_VFORK | SIGCHLD;
#else
/** As posix_spawn does, which can't change identities: no copy of a large host's memory. */
constexpr int kChildFlags = CLONE_VM | CLONE_VFORK | SIGCHLD;
#endif

/** What a kernel, or a filter of system calls, says that knows no pid descriptors. */
bool IsRefusal(int error) {
    return error == EINVAL || error == EPERM || error == ENOSYS;
}

/**
 * Comes back when the child has become the program or has failed. Where the kernel gives no pid
 * descriptor (before 5.2 it passes over the flag, others refuse it), the program has none.
 */
StartedProgram StartChild(Plan& plan) {
    const auto stack = std::make_unique<Stack>();
    std::byte* const top = stack->bytes + sizeof(stack->bytes);
    int end = -1;
    const support::BlockSignals blocked;
    pid_t child = clone(&Become, top, kChildFlags | CLONE_PIDFD, &plan, &end);
    if (child < 0 && IsRefusal(errno)) {
        child = clone(&Become, top, kChildFlags, &plan);
    }
    if (child < 0) {
        throw HostError(errno);
    }
    return {child, support::Descriptor(end)};
}

}  // namespace

StartedProgram StartProgram(const std::vector<std::string>& argv, int output) {
    std::vector<char*> arguments;
    for (const std::string& argument : argv) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    char locale[] = "LC_ALL=C";
    char* environment[] = {locale, nullptr};
    Plan plan = {arguments.data(), environment, output, geteuid(), getegid(), 0};
    StartedProgram program = StartChild(plan);
    if (plan.error == 0) {
        return program;
    }
    while (waitpid(program.pid, nullptr, 0) < 0 && errno == EINTR) {
    }
    throw HostError(plan.error);
}

}  // namespace vornplatform
