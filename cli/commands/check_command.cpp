// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <algorithm>

#include "cli/commands/commands.h"
#include "cli/host/host_check.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/text/escape.h"
#include "cli/text/json_text.h"

namespace cli {
namespace {

void AppendJson(std::string& out, const std::vector<Finding>& findings, bool ready, int schema) {
    out += '{';
    AppendJsonHead(out, HeadOf(schema));
    out += ready ? "\"ready\":true,\"checks\":[" : "\"ready\":false,\"checks\":[";
    const char* separator = "\n{";
    for (const Finding& finding : findings) {
        out += separator;
        separator = ",\n{";
        AppendJsonMember(out, "subject", finding.subject);
        out += ',';
        AppendJsonMember(out, "state", StateName(finding.state));
        out += ',';
        AppendJsonMember(out, "text", finding.text);
        out += ',';
        AppendJsonMember(out, "advice", finding.advice);
        out += '}';
    }
    out += "\n]}\n";
}

void AppendPlain(std::string& out, const std::vector<Finding>& findings, bool utf8) {
    constexpr size_t kStateWidth = 9;
    for (const Finding& finding : findings) {
        const std::string_view state = StateName(finding.state);
        out += state;
        out.append(kStateWidth - state.size(), ' ');
        AppendEscaped(out, finding.subject + ": " + finding.text, utf8);
        out += '\n';
        if (!finding.advice.empty()) {
            out.append(kStateWidth, ' ');
            AppendEscaped(out, "-> " + finding.advice, utf8);
            out += '\n';
        }
    }
}

std::vector<Finding> Examine(Gate& gate) {
    const Gate::Inside inside(gate);
    return ExamineHost();
}

}  // namespace

int CheckCommand(const Options& options, Gate& gate) {
    const std::vector<Finding> findings = Examine(gate);
    const bool ready = std::none_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.state == State::kMissing;
    });
    Output output(STDOUT_FILENO);
    if (options.presentation.format == Format::kJson) {
        AppendJson(output.Text(), findings, ready, options.presentation.schema);
    } else {
        AppendPlain(output.Text(), findings, DescribeTerminal(STDOUT_FILENO).utf8);
    }
    output.Flush();
    return ready ? kFound : kNothingFound;
}

}  // namespace cli
