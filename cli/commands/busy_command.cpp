// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cmath>

#include "cli/answer/busy.h"
#include "cli/commands/commands.h"
#include "cli/host/volumes.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/question/holders/search.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/** Between looks of --wait. */
constexpr milliseconds kPause(500);

Wanted WantedBy(const Options& options) {
    if (options.quiet) {
        return Wanted::kWhether;
    }
    switch (options.presentation.format) {
        case Format::kJson:
            return Wanted::kNames;
        case Format::kPids:
            return Wanted::kPids;
        default:
            return Wanted::kFirstName;
    }
}

std::vector<std::string> PathsOf(const Options& options) {
    const std::vector<std::string>& given = options.question.selection.paths;
    std::vector<std::string> paths = given.empty() ? MountedVolumes() : given;
    if (paths.empty()) {
        throw Failure(
            "no data volume is mounted: volumes are file systems on /volume1, /volume2 and so on");
    }
    return paths;
}

Holders Look(SearchQuestion question, const Options& options, Gate& gate) {
    const Gate::Inside inside(gate);
    // Whoever asks in a terminal on the volume is told of the shell, and not of this program.
    question.own = {getpid()};
    if (gate.HasSupervisor()) {
        question.own.insert(getppid());
    }
    question.paths = PathsOf(options);
    return FindHolders(question);
}

/** The answer of the last look, and whether the time is up. */
struct Answer {
    Holders holders;
    bool late = false;
};

/** Looks until nothing is in use, or it can't be told, or the time is up. */
Answer LookUntilFree(const SearchQuestion& question, const Options& options, Gate& gate) {
    const auto begin = Clock::now();
    for (;;) {
        Answer answer{Look(question, options, gate), false};
        if (!options.waitSeconds || answer.holders.rows.empty()) {
            return answer;
        }
        const std::chrono::duration<double> waited = Clock::now() - begin;
        const double left = *options.waitSeconds - waited.count();
        if (left <= 0) {
            answer.late = true;
            return answer;
        }
        const double pause = std::fmin(left * 1000, kPause.count());
        poll(nullptr, 0, static_cast<int>(std::ceil(pause)));
    }
}

void Show(const Holders& holders, const Options& options) {
    Output output(STDOUT_FILENO);
    WriteHolders(holders, options.question.selection.paths, options.presentation,
                 DescribeTerminal(STDOUT_FILENO), output);
    output.Flush();
}

void Explain(const Answer& answer, const Options& options) {
    if (!options.quiet) {
        for (const std::string& note : answer.holders.notes) {
            Complain("note: " + note);
        }
    }
    const bool told = !answer.holders.rows.empty();
    if (!options.quiet || !told) {
        for (const std::string& reason : answer.holders.lost) {
            Complain((told ? "incomplete: " : "can't tell: ") + reason);
        }
    }
    if (answer.late) {
        Complain(fmt::format("still in use after {} s", *options.waitSeconds));
    }
}

int StatusOf(const Answer& answer, Command command) {
    const bool busy = !answer.holders.rows.empty();
    if (answer.late || (!busy && !answer.holders.Complete())) {
        return kFailed;
    }
    return busy == (command == Command::kBusy) ? kFound : kNothingFound;
}

}  // namespace

int BusyCommand(const Options& options, Gate& gate) {
    SearchQuestion question;
    question.wanted = WantedBy(options);
    question.inside = options.inside;
    question.source = options.question.source;
    const Answer answer = LookUntilFree(question, options, gate);
    if (!options.quiet) {
        Show(answer.holders, options);
    }
    Explain(answer, options);
    return StatusOf(answer, options.command);
}

}  // namespace cli
