// SPDX-License-Identifier: MIT
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <optional>
#include <string>

#include "cli/answer/event_log.h"
#include "cli/answer/screen.h"
#include "cli/commands/commands.h"
#include "cli/process/output.h"
#include "cli/process/signals.h"
#include "cli/process/terminal.h"
#include "cli/question/open_files.h"
#include "cli/text/escape.h"

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
        if (number == SIGTERM) {
            return Wake::kEnd;
        }
        if (left.count() <= 0) {
            return Wake::kTime;
        }
    }
}

/** What keeps a look from being the whole truth; empty when nothing does. */
std::string Lacks(const Snapshot& snapshot) {
    return !snapshot.doubt.empty() ? snapshot.doubt
           : snapshot.incompleteReason.empty()
               ? ""
               : "incomplete: " + Escaped(snapshot.incompleteReason, true);
}

/** Lines tell the start of each process, which is asked for along with what is asked of it. */
Question QuestionOf(const Options& options) {
    Question question = options.question;
    if (options.presentation.format == Format::kJsonl) {
        question.asked.facts.set(static_cast<size_t>(Column::kStarted));
    }
    return question;
}

/** Looks again and again, and shows each look. */
class Watch {
public:
    Watch(const Options& options, Gate& gate)
        : options_(options),
          question_(QuestionOf(options)),
          gate_(gate),
          onScreen_(options.presentation.format == Format::kTable),
          log_(options.presentation, options.question.time, output_) {}

    int Run() {
        if (onScreen_ && !DescribeTerminal(STDOUT_FILENO).isTerminal) {
            throw Failure("--watch draws its table on a terminal; use --format jsonl elsewhere");
        }
        Look();
        TellNews();
        std::optional<Gate::Screen> screen;
        if (onScreen_) {
            screen.emplace(gate_);
        }
        while (ShowUntilNext() == Wake::kTime && !output_.IsClosed()) {
            Look();
        }
        return everFound_ ? kFound : kNothingFound;
    }

private:
    void Look() {
        next_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                   std::chrono::duration<double>(*options_.watchSeconds));
        files_.Take(TakeSnapshot(question_, gate_));
        if (!files_.Look().files.empty()) {
            everFound_ = true;
            gate_.TellFound();
        }
        if (const std::string lacks = Lacks(files_.Look()); options_.strict && !lacks.empty()) {
            throw Failure(lacks);
        }
    }

    /** Shows the look, on a screen anew whenever its size changes. */
    Wake ShowUntilNext() {
        const Changes& changes = files_.News();
        if (!onScreen_) {
            log_.Tell(files_);
            TellNews();
        }
        Wake wake = Wake::kResize;
        while (wake == Wake::kResize && !output_.IsClosed()) {
            if (onScreen_) {
                DrawLook(files_.Look(), changes, options_.question, options_.presentation,
                         *options_.watchSeconds, DescribeTerminal(STDOUT_FILENO), frame_, output_);
            }
            wake = WaitUntil(next_, signals_);
            if (wake == Wake::kResize) {
                frame_.Forget();
            }
        }
        return wake;
    }

    /** What is the same at every look is said once. A screen shows news itself. */
    void TellNews() {
        const std::string& notice = files_.Look().notice;
        if (!notice.empty() && notice != said_) {
            Complain(notice);
            said_ = notice;
        }
        const std::string lacks = Lacks(files_.Look());
        // Not each time the processes behind it are others.
        if (!lacks.empty() && !lacked_) {
            Complain(lacks);
        }
        lacked_ = !lacks.empty();
    }

    const Options& options_;
    const Question question_;
    Gate& gate_;
    const bool onScreen_;
    // The supervisor ends the watch, by SIGTERM. What else a terminal sends to both processes is
    // kept from ending or stopping this one.
    const Signals signals_{SIGTERM, SIGWINCH, SIGINT, SIGHUP, SIGTSTP};
    Output output_{STDOUT_FILENO};
    EventLog log_;
    Frame frame_;
    OpenFiles files_;
    Clock::time_point next_;
    std::string said_;
    bool lacked_ = false;
    bool everFound_ = false;
};

}  // namespace

int WatchCommand(const Options& options, Gate& gate) {
    return Watch(options, gate).Run();
}

}  // namespace cli
