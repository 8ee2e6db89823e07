#include "platform/linux/support/run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <new>
#include <utility>

#include "platform/linux/support/fd.h"
#include "platform/linux/support/shortage.h"
#include "platform/linux/support/start_program.h"

namespace vornplatform {
namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
    Fd read;
    Fd write;
};

/** In a host that closed its standard descriptors the pipe must not take their numbers. */
Fd AboveStandard(int fd) {
    const Fd low(fd);
    return Fd(fcntl(fd, F_DUPFD_CLOEXEC, 3));
}

int OpenPipe(Pipe& pipe) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return errno;
    }
    pipe.read = AboveStandard(ends[0]);
    pipe.write = AboveStandard(ends[1]);
    if (!pipe.read || !pipe.write || fcntl(pipe.read.Get(), F_SETFL, O_NONBLOCK) != 0) {
        return errno;
    }
    return 0;
}

enum class ReadState { kMore, kEmpty, kEnd, kLimit };

/** Takes what the pipe holds, up to the limit. */
ReadState ReadSome(int fd, size_t limit, std::string& output) {
    char buffer[16 * 1024];
    const ssize_t got = read(fd, buffer, sizeof(buffer));
    if (got < 0) {
        return errno == EAGAIN || errno == EINTR ? ReadState::kEmpty : ReadState::kEnd;
    }
    const size_t fitting = std::min(static_cast<size_t>(got), limit - output.size());
    output.append(buffer, fitting);
    if (fitting < static_cast<size_t>(got)) {
        return ReadState::kLimit;
    }
    return got == 0 ? ReadState::kEnd : ReadState::kMore;
}

/** Leaves the process uncollected, so that its group can't become someone else's. */
bool HasEnded(pid_t pid) {
    siginfo_t info = {};
    if (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0) {
        return errno == ECHILD;
    }
    return info.si_pid == pid;
}

int MillisecondsUntil(Clock::time_point deadline) {
    // Short steps: a grandchild may hold the pipe open after the program itself has ended.
    constexpr std::chrono::milliseconds kStep(10);
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::clamp(left, std::chrono::milliseconds(0), kStep).count());
}

/** Reads until the program has ended, which kExited stands for, or has reached a limit. */
ProgramEnd Collect(pid_t pid, Fd pipe, const ProgramLimits& limits, std::string& output) {
    const auto deadline = Clock::now() + limits.time;
    for (;;) {
        const bool ended = HasEnded(pid);  // before the last read, so that nothing is missed
        ReadState state = ReadState::kMore;
        while (pipe && state == ReadState::kMore) {
            state = ReadSome(pipe.Get(), limits.output, output);
        }
        if (state == ReadState::kLimit) {
            return ProgramEnd::kOutputLimit;
        }
        if (ended) {
            return ProgramEnd::kExited;
        }
        if (Clock::now() >= deadline) {
            return ProgramEnd::kTimeLimit;
        }
        if (state == ReadState::kEnd) {
            pipe.Reset();
        }
        pollfd waited = {pipe.Get(), POLLIN, 0};
        poll(&waited, 1, MillisecondsUntil(deadline));
    }
}

/** Kills what is left of the group, collects the program and says how it ended. */
void Finish(pid_t pid, ProgramResult& result) {
    kill(-pid, SIGKILL);
    int status = 0;
    pid_t waited;
    do {
        waited = waitpid(pid, &status, 0);
    } while (waited < 0 && errno == EINTR);
    if (result.end != ProgramEnd::kExited) {
        return;
    }
    if (waited != pid) {
        result.end = ProgramEnd::kUnknown;
    } else if (WIFSIGNALED(status)) {
        result.end = ProgramEnd::kSignalled;
        result.status = WTERMSIG(status);
    } else {
        result.status = WEXITSTATUS(status);
    }
}

}  // namespace

ProgramResult RunProgram(const std::vector<std::string>& argv, const ProgramLimits& limits) {
    ProgramResult result;
    Pipe pipe;
    result.status = OpenPipe(pipe);
    pid_t pid = -1;
    if (result.status == 0) {
        result.status = StartProgram(argv, pipe.write.Get(), pid);
    }
    ThrowOnShortage(result.status);
    if (result.status != 0) {
        return result;
    }
    pipe.write.Reset();
    try {
        result.end = Collect(pid, std::move(pipe.read), limits, result.output);
    } catch (const std::bad_alloc&) {
        Finish(pid, result);
        throw;
    }
    Finish(pid, result);
    return result;
}

}  // namespace vornplatform
