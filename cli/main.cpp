// SPDX-License-Identifier: MIT
#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include "cli/commands/commands.h"
#include "cli/host/rights.h"
#include "cli/options/arguments.h"
#include "cli/options/usage.h"
#include "cli/process/output.h"
#include "cli/process/standard_descriptors.h"
#include "cli/process/supervision/supervisor.h"

namespace {

int Print(std::string_view text) {
    cli::Output output(STDOUT_FILENO);
    output.Text() += text;
    output.Flush();
    return cli::kFound;
}

int Run(const cli::Options& options, cli::Gate& gate) {
    switch (options.command) {
        case cli::Command::kList:
            return cli::ListCommand(options, gate);
        case cli::Command::kServices:
            return cli::ServicesCommand(options);
        case cli::Command::kCheck:
            return cli::CheckCommand(options, gate);
        case cli::Command::kMetrics:
            return cli::MetricsCommand(options, gate);
        case cli::Command::kBusy:
        case cli::Command::kIdle:
            return cli::BusyCommand(options, gate);
        case cli::Command::kDisconnect:
            return cli::DisconnectCommand(options, gate);
        case cli::Command::kEvents:
            return cli::EventsCommand(options);
    }
    return cli::kFailed;
}

/** Runs work; a reason that stops it goes to standard error. */
int Guarded(const std::function<int()>& work) {
    try {
        return work();
    } catch (const cli::UsageError& error) {
        cli::Complain(error.what());
        cli::Complain("'vorn-openfiles --help' shows what can be asked");
    } catch (const std::exception& error) {
        cli::Complain(error.what());
    }
    return cli::kFailed;
}

int RunCommandLine(std::vector<std::string> words) {
    const cli::Options options = cli::ParseArguments(std::move(words));
    if (options.help) {
        return Print(cli::HelpText(options.command));
    }
    if (options.version) {
        return Print(cli::VersionText());
    }
    if (!options.timeoutSeconds && !options.watchSeconds) {
        cli::Gate gate;
        return Run(options, gate);
    }
    const cli::Supervision how = {options.timeoutSeconds, options.watchSeconds.has_value()};
    return cli::RunSupervised(
        how, [&](cli::Gate& gate) { return Guarded([&] { return Run(options, gate); }); });
}

}  // namespace

int main(int argc, char** argv) {
    // A reader that goes away ends the output, not the program.
    std::signal(SIGPIPE, SIG_IGN);
    // The heaps of threads grow by a few pages otherwise, and each time all of them wait for that.
    constexpr int kHeapGrowth = 16 << 20;
    mallopt(M_TOP_PAD, kHeapGrowth);
    return Guarded([&] {
        cli::OpenStandardDescriptors();
        if (cli::RunsWithLentRights()) {
            throw cli::Failure(
                "refuses to run with rights that its file lends (set-user-id, set-group-id, "
                "capabilities): everyone could see everyone's files; take them off and use sudo");
        }
        return RunCommandLine({argv + 1, argv + argc});
    });
}
