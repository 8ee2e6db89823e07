#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <csignal>

#include "commands.h"
#include "output.h"
#include "terminal.h"
#include "watch.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

/** Signals that end the watch or tell that the terminal has another size, as a descriptor. */
class Signals {
public:
    Signals() {
        sigset_t awaited;
        sigemptyset(&awaited);
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGWINCH}) {
            sigaddset(&awaited, number);
        }
        sigprocmask(SIG_BLOCK, &awaited, nullptr);
        fd_ = signalfd(-1, &awaited, SFD_CLOEXEC | SFD_NONBLOCK);
    }
    ~Signals() { close(fd_); }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    int Fd() const { return fd_; }
    /** The next one; 0 when there is none. */
    int Next() const {
        struct signalfd_siginfo info {};
        return read(fd_, &info, sizeof(info)) == sizeof(info) ? static_cast<int>(info.ssi_signo)
                                                              : 0;
    }

private:
    int fd_;
};

enum class Wake { kTime, kResize, kEnd };

/** Waits for the next look, a signal or the reader's end. */
Wake WaitUntil(Clock::time_point next, const Signals& signals) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
        // A closed pipe is told as an error whatever is asked for.
        struct pollfd watched[] = {{signals.Fd(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
        poll(watched, 2, left.count() > 0 ? static_cast<int>(left.count()) : 0);
        if ((watched[1].revents & (POLLERR | POLLHUP)) != 0) {
            return Wake::kEnd;
        }
        const int number = signals.Next();
        if (number == SIGWINCH) {
            return Wake::kResize;
        }
        if (number != 0) {
            return Wake::kEnd;
        }
        if (left.count() <= 0) {
            return Wake::kTime;
        }
    }
}

Snapshot Look(const Options& options, Gate& gate) {
    const Gate::Inside inside(gate);
    return TakeSnapshot(options);
}

void WarnOnce(const Snapshot& snapshot, const Options& options) {
    if (snapshot.incompleteReason.empty()) {
        return;
    }
    if (options.strict) {
        throw Failure("incomplete: " + snapshot.incompleteReason);
    }
    Complain("incomplete: " + snapshot.incompleteReason);
}

}  // namespace

int WatchCommand(const Options& options, Gate& gate) {
    const bool onScreen = options.format == Format::kTable;
    if (onScreen && !DescribeTerminal(STDOUT_FILENO).isTerminal) {
        throw Failure("--watch draws its table on a terminal; use --format jsonl elsewhere");
    }
    const Signals signals;
    const auto interval = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(*options.watchSeconds));
    Output output(STDOUT_FILENO);
    Watch watch;
    Snapshot snapshot = Look(options, gate);
    WarnOnce(snapshot, options);
    const auto screen = onScreen ? std::make_unique<Screen>(output) : nullptr;
    bool everFound = false;
    for (;;) {
        const auto next = Clock::now() + interval;
        const Changes changes = watch.Compare(snapshot);
        everFound = everFound || !snapshot.files.empty();
        Wake wake = Wake::kResize;
        if (!onScreen) {
            AppendEvents(output, changes, options);
        }
        while (wake == Wake::kResize && !output.IsClosed()) {
            if (onScreen) {
                screen->Draw(snapshot, changes, options, DescribeTerminal(STDOUT_FILENO));
            }
            wake = WaitUntil(next, signals);
        }
        if (wake != Wake::kTime || output.IsClosed()) {
            return everFound ? kFound : kNothingFound;
        }
        snapshot = Look(options, gate);
    }
}

}  // namespace cli
