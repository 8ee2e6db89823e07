#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <string>

#include "cli/answer/watch.h"
#include "cli/commands/commands.h"
#include "cli/process/output.h"
#include "cli/process/signals.h"
#include "cli/process/terminal.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

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

/** Of the first look; what is the same at every look is said once. */
void Warn(const Snapshot& snapshot, const Options& options) {
    if (!snapshot.notice.empty()) {
        Complain(snapshot.notice);
    }
    if (snapshot.incompleteReason.empty()) {
        return;
    }
    if (options.strict) {
        throw Failure("incomplete: " + snapshot.incompleteReason);
    }
    Complain("incomplete: " + snapshot.incompleteReason);
}

/** A screen shows its notice itself. */
void ComplainOfNews(const std::string& notice, std::string& said) {
    if (!notice.empty() && notice != said) {
        Complain(notice);
        said = notice;
    }
}

}  // namespace

int WatchCommand(const Options& options, Gate& gate) {
    const bool onScreen = options.format == Format::kTable;
    if (onScreen && !DescribeTerminal(STDOUT_FILENO).isTerminal) {
        throw Failure("--watch draws its table on a terminal; use --format jsonl elsewhere");
    }
    const Signals signals({SIGINT, SIGTERM, SIGHUP, SIGWINCH});
    const auto interval = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(*options.watchSeconds));
    Output output(STDOUT_FILENO);
    Watch watch;
    Snapshot snapshot = TakeSnapshot(options, gate);
    Warn(snapshot, options);
    std::string said = snapshot.notice;
    const auto screen = onScreen ? std::make_unique<Screen>(output) : nullptr;
    bool everFound = false;
    for (;;) {
        const auto next = Clock::now() + interval;
        const Changes changes = watch.Compare(snapshot);
        everFound = everFound || !snapshot.files.empty();
        Wake wake = Wake::kResize;
        if (!onScreen) {
            AppendEvents(output, changes, options);
            ComplainOfNews(snapshot.notice, said);
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
        snapshot = TakeSnapshot(options, gate);
    }
}

}  // namespace cli
