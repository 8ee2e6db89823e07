// SPDX-License-Identifier: MIT
#include "cli/process/supervision/supervisor.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>

#include "cli/failure.h"
#include "cli/process/output.h"
#include "cli/process/signals.h"
#include "cli/process/supervision/gate_protocol.h"
#include "cli/process/supervision/pass_descriptors.h"
#include "cli/process/supervision/volume_probes.h"
#include "cli/process/supervision/worker.h"
#include "cli/process/terminal_state.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/** For volumes to give a sign of life once the limit has struck. */
constexpr milliseconds kProbeTime(500);
/** For work that was told to end outside the gate: its reader may take nothing any more. */
constexpr milliseconds kEndTime(500);

int MillisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

/** One worker's supervisor. */
class Supervisor {
public:
    Supervisor(Worker& worker, const Supervision& how) : worker_(worker), how_(how) {}

    int Run() {
        while (!result_) {
            std::array<struct pollfd, 4> watched = {{
                {worker_.Socket(), POLLIN, 0},
                {signals_.Fd(), POLLIN, 0},
                {terminal_ && terminal_->HasKeys() && keys_ ? STDIN_FILENO : -1, POLLIN, 0},
                // A closed pipe is told as an error whatever is asked for.
                {how_.watches ? STDOUT_FILENO : -1, 0, 0},
            }};
            const int ready = poll(watched.data(), watched.size(), MillisecondsLeft());
            if (ready == 0) {
                GiveUp();
            } else if (ready > 0) {
                Act(watched);
            } else if (errno != EINTR) {
                throw Failure(fmt::format("can't wait for the work: {}", std::strerror(errno)));
            }
        }
        return *result_;
    }

private:
    int MillisecondsLeft() const {
        return inside_ && how_.seconds ? MillisecondsUntil(deadline_) : -1;
    }

    void Act(const std::array<struct pollfd, 4>& watched) {
        // First, as a signal from the terminal may have ended the worker as well.
        if (watched[1].revents != 0) {
            TakeSignal(signals_.Next());
        }
        if (watched[0].revents != 0 && !result_) {
            Listen();
        }
        if (watched[2].revents != 0) {
            TakeKey();
        }
        if ((watched[3].revents & (POLLERR | POLLHUP)) != 0) {
            End(SIGTERM);
        }
    }

    /** One message of the worker, or its end. */
    void Listen() {
        char byte = 0;
        if (recv(worker_.Socket(), &byte, 1, 0) != 1) {
            TakeEnd(worker_.Wait());
            return;
        }
        switch (byte) {
            case kGateEntered:
                inside_ = true;
                StartTime();
                break;
            case kGateLeft:
                inside_ = false;
                Must(SendStandardDescriptors(worker_.Socket()));
                break;
            case kGateFound:
                found_ = true;
                break;
            case kScreenWanted:
                terminal_.emplace();
                Must(send(worker_.Socket(), &kScreenSet, 1, MSG_NOSIGNAL) == 1);
                break;
            case kScreenDone:
                terminal_.reset();
                Must(send(worker_.Socket(), &kScreenSet, 1, MSG_NOSIGNAL) == 1);
                break;
        }
    }

    /** @param status  as Worker::Wait() tells it */
    void TakeEnd(int status) {
        result_ = status >= 0 && status != kGateLost ? status : kFailed;
        if (ending_ || status == *result_) {
            return;
        }
        terminal_.reset();
        Complain(status < 0
                     ? fmt::format("the process that did the work was ended by signal {}", -status)
                     : "the process that did the work couldn't get its output back");
    }

    void StartTime() {
        deadline_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                       std::chrono::duration<double>(how_.seconds.value_or(0)));
    }

    /** A worker that has just ended tells so on its socket, and is not to be sent anything. */
    static void Must(bool sent) {
        if (!sent && errno != EPIPE && errno != ECONNRESET) {
            throw Failure(fmt::format("can't reach the work: {}", std::strerror(errno)));
        }
    }

    void TakeSignal(int number) {
        if (number == SIGTSTP) {
            Suspend();
        } else if (number != 0) {
            End(number);
        }
    }

    void TakeKey() {
        char key = 0;
        keys_ = read(STDIN_FILENO, &key, 1) == 1;
        if (key == 'q' || key == 'Q') {
            End(SIGTERM);
        }
    }

    /** The shell gets the terminal as it knows it. Goes on when somebody continues this process. */
    void Suspend() {
        const bool drawn = terminal_.has_value();
        terminal_.reset();
        worker_.Send(SIGSTOP);
        raise(SIGSTOP);
        if (drawn) {
            terminal_.emplace();
        }
        StartTime();
        worker_.Send(SIGCONT);
        worker_.Send(SIGWINCH);
    }

    /** Inside the gate the worker may be unable to act on anything but a kill. */
    void End(int number) {
        ending_ = true;
        worker_.Send(inside_ ? SIGKILL : how_.watches ? SIGTERM : number);
        if (!inside_) {
            AwaitEnd();
        }
        terminal_.reset();
        result_ = !how_.watches ? kFailed : found_ ? kFound : kNothingFound;
    }

    /** Once this is over the worker writes no more, or is killed with its owner. */
    void AwaitEnd() {
        const auto deadline = Clock::now() + kEndTime;
        struct pollfd watched = {worker_.Socket(), POLLIN, 0};
        int ready = 1;
        while (!result_ && ready != 0) {
            ready = poll(&watched, 1, MillisecondsUntil(deadline));
            if (ready > 0) {
                Listen();
            }
        }
    }

    void GiveUp() {
        worker_.Send(SIGKILL);
        terminal_.reset();
        const std::vector<std::string> silent = SilentVolumes(kProbeTime);
        Complain(
            silent.empty()
                ? fmt::format("no answer within {} s, though every volume answers", *how_.seconds)
                : fmt::format("no answer within {} s; volumes that don't answer: {}", *how_.seconds,
                              fmt::join(silent, ", ")));
        result_ = kFailed;
    }

    Worker& worker_;
    const Supervision how_;
    const Signals signals_{SIGINT, SIGTERM, SIGHUP, SIGTSTP};
    std::optional<TerminalState> terminal_;
    bool keys_ = true; /**< standard input has not ended */
    bool inside_ = false;
    bool found_ = false;
    bool ending_ = false;
    Clock::time_point deadline_;
    std::optional<int> result_;
};

}  // namespace

int RunSupervised(const Supervision& how, const std::function<int(Gate&)>& work) {
    Worker worker(work);
    return Supervisor(worker, how).Run();
}

}  // namespace cli
