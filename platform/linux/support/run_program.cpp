// SPDX-License-Identifier: MIT
#include "platform/linux/support/run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <utility>

#include "platform/linux/support/host_error.h"
#include "platform/linux/support/start_program.h"
#include "support/descriptor.h"

namespace vornplatform {
namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
    support::Descriptor read;
    support::Descriptor write;
};

/** In a host that closed its standard descriptors the pipe must not take their numbers. */
support::Descriptor AboveStandard(const support::Descriptor& low) {
    support::Descriptor high(fcntl(low.Get(), F_DUPFD_CLOEXEC, 3));
    if (!high) {
        throw HostError(errno);
    }
    return high;
}

Pipe OpenPipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw HostError(errno);
    }
    const support::Descriptor read(ends[0]);
    const support::Descriptor write(ends[1]);
    Pipe pipe = {AboveStandard(read), AboveStandard(write)};
    if (fcntl(pipe.read.Get(), F_SETFL, O_NONBLOCK) != 0) {
        throw HostError(errno);
    }
    return pipe;
}

enum class ReadState { kMore, kEmpty, kEnd, kLimit };

/** Takes what the pipe holds, up to the limit. */
ReadState ReadSome(int fd, size_t limit, std::string& output) {
    char buffer[16 * 1024];
    const ssize_t got = read(fd, buffer, sizeof(buffer));
    if (got < 0) {
        if (errno != EAGAIN && errno != EINTR) {
            throw HostError(errno);
        }
        return ReadState::kEmpty;
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
    if (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0) {
        return info.si_pid == pid;
    }
    if (errno != ECHILD) {
        throw HostError(errno);
    }
    return true;
}

/** For poll(), which may come back too late but not, again and again, too early. */
int MillisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, INT_MAX));
}

/** Waits until the program has printed or has ended, or the deadline has come. */
void WaitForProgram(const StartedProgram& program, const support::Descriptor& pipe,
                    Clock::time_point deadline) {
    // Without its descriptor only a look says that the program has ended, for a grandchild may
    // hold the pipe open after that.
    constexpr int kLookEvery = 10;
    const int left = MillisecondsUntil(deadline);
    pollfd waited[] = {{pipe.Get(), POLLIN, 0}, {program.end.Get(), POLLIN, 0}};
    if (poll(waited, 2, program.end ? left : std::min(left, kLookEvery)) < 0 && errno != EINTR) {
        throw HostError(errno);
    }
}

/** Reads until the program has ended, which kExited stands for, or has reached a limit. */
ProgramEnd Collect(const StartedProgram& program, support::Descriptor pipe,
                   const ProgramLimits& limits, std::string& output) {
    const auto deadline = Clock::now() + limits.time;
    for (;;) {
        // Looked at before the last read, so that nothing is missed.
        const bool ended = HasEnded(program.pid);
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
        WaitForProgram(program, pipe, deadline);
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

/** Runs the program that has been started. */
void Attend(const StartedProgram& program, support::Descriptor pipe, const ProgramLimits& limits,
            ProgramResult& result) {
    try {
        result.end = Collect(program, std::move(pipe), limits, result.output);
    } catch (...) {
        Finish(program.pid, result);
        throw;
    }
    Finish(program.pid, result);
}

}  // namespace

std::string DescribeEnd(const ProgramResult& result, const ProgramLimits& limits) {
    switch (result.end) {
        case ProgramEnd::kNotStarted:
            return result.status == ENOENT
                       ? "is not installed"
                       : "does not start, errno=" + std::to_string(result.status);
        case ProgramEnd::kTimeLimit:
            return "takes longer than " +
                   std::to_string(std::chrono::ceil<std::chrono::seconds>(limits.time).count()) +
                   " s";
        case ProgramEnd::kOutputLimit:
            return "prints too much";
        case ProgramEnd::kSignalled:
            return "ended by signal " + std::to_string(result.status);
        default:
            return "failed with status " + std::to_string(result.status);
    }
}

ProgramResult RunProgram(const std::vector<std::string>& argv, const ProgramLimits& limits) {
    ProgramResult result;
    Pipe pipe;
    StartedProgram program;
    try {
        pipe = OpenPipe();
        program = StartProgram(argv, pipe.write.Get());
    } catch (const HostError& error) {
        PassOnShortage(error);
        result.status = error.Error();
        return result;
    }
    pipe.write.Reset();
    Attend(program, std::move(pipe.read), limits, result);
    return result;
}

}  // namespace vornplatform
