// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>

#include "cli/answer/busy.h"
#include "cli/answer/disconnect.h"
#include "cli/commands/commands.h"
#include "cli/host/asker.h"
#include "cli/host/rights.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/question/disconnect/ending.h"
#include "cli/question/disconnect/look.h"
#include "cli/question/holders/identity.h"
#include "cli/text/escape.h"
#include "cli/text/number_text.h"
#include "support/write_all.h"

namespace cli {
namespace {

/** Looks between the question and the signals, while processes are started all the time. */
constexpr int kMostLooks = 5;

void RequireRights() {
    const Rights rights = OwnRights();
    if (!rights.Complete() || !rights.kill) {
        throw Failure(
            "'disconnect' needs the rights of root (CAP_KILL, CAP_SYS_PTRACE and "
            "CAP_DAC_READ_SEARCH) to see whose connections there are and to end them");
    }
    // Its numbers would be those of other processes here.
    if (LinkText(AT_FDCWD, "/proc/self") != std::to_string(getpid())) {
        throw Failure("'disconnect' needs the /proc of its own PID namespace");
    }
}

void RequireSomebodyToAsk(const Options& options) {
    if (!options.yes && !options.dryRun &&
        (isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0)) {
        throw UsageError("'disconnect' asks on a terminal; elsewhere give --yes or --dry-run");
    }
}

/** A line from the terminal; no other answer than yes is one. */
bool Agrees(size_t connections) {
    support::WriteAll(STDERR_FILENO, fmt::format("End {} connection{}? [y/N] ", connections,
                                                 connections == 1 ? "" : "s"));
    std::string answer;
    char byte = 0;
    while (read(STDIN_FILENO, &byte, 1) == 1 && byte != '\n') {
        answer += byte;
    }
    return answer == "y" || answer == "Y" || answer == "yes" || answer == "Yes";
}

void ComplainOf(const Look& look) {
    for (const std::string& text : {look.notice, look.doubt}) {
        if (!text.empty()) {
            Complain(text);
        }
    }
    if (!look.incompleteReason.empty()) {
        Complain("incomplete: " + Escaped(look.incompleteReason, true));
    }
    for (const LeftAlone& leftAlone : look.plan.leftAlone) {
        Complain(Describe(leftAlone));
    }
}

/** Looks until every process that is to end is confirmed. */
Look LookAgain(const Question& question, Gate& gate, Ending& ending) {
    for (int looks = 1;; ++looks) {
        Look now = TakeLook(question, gate, false);
        if (!ending.Confirm(now.plan) || looks == kMostLooks) {
            return now;
        }
    }
}

void Log(const std::string& what, const PlannedConnection& connection,
         const std::vector<pid_t>& pids) {
    const std::string files =
        connection.selected.empty() ? "" : Escaped(connection.selected.front().fullPath, true);
    const size_t more = connection.selected.size() < 2 ? 0 : connection.selected.size() - 1;
    const std::string line =
        fmt::format("disconnect: {} {} the {}: processes {}, for {}{}", Asker(), what,
                    Describe(connection), NumberRanges({pids.begin(), pids.end()}), files,
                    more == 0 ? "" : fmt::format(" +{}", more));
    syslog(LOG_NOTICE, "%s", line.c_str());
}

/** In the log first: this command may itself be ended before it comes to that. */
void Send(int signal, const char* what, const Plan& plan, Ending& ending) {
    for (size_t i = 0; i < plan.connections.size(); ++i) {
        const std::vector<pid_t> pids = ending.Confirmed(i);
        if (!pids.empty()) {
            Log(what, plan.connections[i], pids);
            ending.Send(signal, i);
        }
    }
}

void End(const Options& options, const Plan& plan, Ending& ending) {
    Send(SIGTERM, "ends", plan, ending);
    ending.Wait(options.graceSeconds);
    if (options.force) {
        Send(SIGKILL, "kills", plan, ending);
        ending.Wait(options.graceSeconds);
    }
}

/** Selected files of a later look, but for those of the processes that were left alone before. */
std::vector<FileOfProcess> HeldSince(const Look& before, const Look& after) {
    std::vector<FileOfProcess> files;
    for (const PlannedConnection& connection : after.plan.connections) {
        files.insert(files.end(), connection.selected.begin(), connection.selected.end());
    }
    for (const LeftAlone& leftAlone : after.plan.leftAlone) {
        const auto& known = before.plan.leftAlone;
        const bool isKnown = std::any_of(known.begin(), known.end(), [&](const LeftAlone& it) {
            return it.pid == leftAlone.pid;
        });
        if (!isKnown) {
            files.insert(files.end(), leftAlone.selected.begin(), leftAlone.selected.end());
        }
    }
    return files;
}

/** What a process has started just before its end goes by itself, or is named. */
Look LookUntilFree(const Options& options, Gate& gate, const Look& agreed,
                   std::vector<FileOfProcess>& heldSince) {
    constexpr std::chrono::milliseconds kPause(300);
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::duration<double>(options.graceSeconds);
    for (;;) {
        Look look = TakeLook(options.question, gate, false);
        heldSince = HeldSince(agreed, look);
        if (heldSince.empty() || std::chrono::steady_clock::now() >= deadline) {
            return look;
        }
        poll(nullptr, 0, static_cast<int>(kPause.count()));
    }
}

void ComplainOfRest(const Options& options, const Plan& plan, const DisconnectState& state) {
    for (size_t i = 0; i < plan.connections.size(); ++i) {
        const Outcome& outcome = state.outcomes[i];
        if (outcome.state != Outcome::kRemains) {
            continue;
        }
        const std::string pids = NumberRanges({outcome.remaining.begin(), outcome.remaining.end()});
        Complain(outcome.error != 0
                     ? fmt::format("can't end the {}: {}", Describe(plan.connections[i]),
                                   std::strerror(outcome.error))
                     : fmt::format("still there after {} s: {}, of the {}{}", options.graceSeconds,
                                   pids, Describe(plan.connections[i]),
                                   options.force ? "" : "; --force kills"));
    }
    for (const FileOfProcess& file : state.heldSince) {
        Complain(fmt::format("held by process {}: {}", file.pid, Escaped(file.path, true)));
    }
}

void Report(const Options& options, const Plan& plan, const DisconnectState& state) {
    Output output(STDOUT_FILENO);
    if (options.presentation.format == Format::kJson) {
        WriteDisconnectJson(plan, state, output);
    } else if (!state.outcomes.empty()) {
        WriteOutcomes(plan, state.outcomes, output);
    }
    output.Flush();
}

void ShowPlan(const Options& options, const Plan& plan) {
    if (options.presentation.format != Format::kJson) {
        Output output(STDOUT_FILENO);
        WritePlan(plan, DescribeTerminal(STDOUT_FILENO), output);
        output.Flush();
    }
}

/** Ends what was agreed to; the result is what the reader is told. */
DisconnectState Carry(const Options& options, Gate& gate, const Look& agreed, Ending& ending) {
    const Look now = LookAgain(options.question, gate, ending);
    End(options, agreed.plan, ending);
    DisconnectState state;
    const Look after = LookUntilFree(options, gate, agreed, state.heldSince);
    state.outcomes = ending.Outcomes();
    for (const std::string& reason :
         {after.incompleteReason, now.incompleteReason, agreed.incompleteReason}) {
        state.incompleteReason = reason.empty() ? state.incompleteReason : reason;
    }
    const bool remains =
        !state.heldSince.empty() ||
        std::any_of(state.outcomes.begin(), state.outcomes.end(),
                    [](const Outcome& it) { return it.state == Outcome::kRemains; });
    state.state = remains ? "remaining" : "ended";
    return state;
}

}  // namespace

int DisconnectCommand(const Options& options, Gate& gate) {
    RequireSomebodyToAsk(options);
    RequireRights();
    const Look agreed = TakeLook(options.question, gate, true);
    ComplainOf(agreed);
    ShowPlan(options, agreed.plan);
    const bool nothing = agreed.plan.connections.empty();
    if (nothing || options.dryRun) {
        Report(options, agreed.plan,
               {nothing ? "nothing" : "planned", agreed.incompleteReason, {}, {}});
        return !agreed.incompleteReason.empty() ? kFailed : nothing ? kNothingFound : kFound;
    }
    Ending ending(agreed.plan.connections);
    if (!options.yes && !Agrees(agreed.plan.connections.size())) {
        Complain("nothing was ended");
        return kFailed;
    }
    const DisconnectState state = Carry(options, gate, agreed, ending);
    Report(options, agreed.plan, state);
    ComplainOfRest(options, agreed.plan, state);
    const bool done = state.state == "ended" && state.incompleteReason.empty();
    return done ? kFound : kFailed;
}

}  // namespace cli
