#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

#include "cli/commands/commands.h"
#include "cli/process/gate.h"
#include "cli/process/gate_protocol.h"
#include "cli/process/output.h"
#include "cli/process/probe.h"
#include "cli/process/signals.h"
#include "cli/question/snapshot.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

/** The parent of one worker. */
class Supervisor {
public:
    Supervisor(pid_t worker, int socket, double seconds)
        : worker_(worker), socket_(socket), seconds_(seconds) {}

    int Run() {
        for (;;) {
            struct pollfd watched[] = {{socket_, POLLIN, 0}, {signals_.Fd(), POLLIN, 0}};
            const int ready = poll(watched, 2, MillisecondsLeft());
            if (ready == 0) {
                return GiveUp();
            }
            if (watched[1].revents != 0 && !Forward()) {
                return kFailed;
            }
            if (watched[0].revents != 0 && !Listen()) {
                return WorkerStatus();
            }
        }
    }

private:
    int MillisecondsLeft() const {
        if (!inside_) {
            return -1;
        }
        const auto left = deadline_ - Clock::now();
        const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(left).count();
        return milliseconds > 0 ? static_cast<int>(milliseconds) : 0;
    }

    /** One message of the worker; false when it has ended. */
    bool Listen() {
        char byte = 0;
        if (recv(socket_, &byte, 1, 0) != 1) {
            return false;
        }
        inside_ = byte == kGateEntered;
        if (inside_) {
            deadline_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                           std::chrono::duration<double>(seconds_));
            probes_.Start();
        } else {
            SendOutputs(socket_);
        }
        return true;
    }

    /** Passes a signal on; false when the worker may be unable to act on it. */
    bool Forward() {
        const int number = signals_.Next();
        if (number == 0) {
            return true;
        }
        kill(worker_, number);
        return !inside_;
    }

    int GiveUp() {
        kill(worker_, SIGKILL);
        const std::vector<std::string> silent = probes_.Unanswered();
        Complain(silent.empty()
                     ? fmt::format("no answer within {} s, though every volume answers", seconds_)
                     : fmt::format("no answer within {} s; volumes that don't answer: {}", seconds_,
                                   fmt::join(silent, ", ")));
        return kFailed;
    }

    int WorkerStatus() const {
        int status = 0;
        if (waitpid(worker_, &status, 0) != worker_ || !WIFEXITED(status)) {
            return kFailed;
        }
        return WEXITSTATUS(status);
    }

    pid_t worker_;
    int socket_;
    double seconds_;
    const Signals signals_{SIGINT, SIGTERM, SIGHUP};
    bool inside_ = false;
    Clock::time_point deadline_;
    VolumeProbes probes_;
};

}  // namespace

int RunWithTimeout(double seconds, const std::function<int(Gate&)>& work) {
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) != 0) {
        throw Failure("can't make a socket pair");
    }
    const pid_t worker = fork();
    if (worker < 0) {
        throw Failure("can't start a process");
    }
    if (worker == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        close(sockets[0]);
        Gate gate(sockets[1]);
        _exit(work(gate));
    }
    close(sockets[1]);
    return Supervisor(worker, sockets[0], seconds).Run();
}

}  // namespace cli
