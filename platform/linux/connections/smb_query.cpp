// SPDX-License-Identifier: MIT
#include "platform/linux/connections/smb_query.h"

#include <syslog.h>

#include <chrono>
#include <vector>

#include "platform/linux/support/fault.h"
#include "platform/linux/support/lost_sources.h"
#include "platform/linux/support/run_program.h"

namespace vornplatform {
namespace {

constexpr char kSource[] = "smb_query";
constexpr ProgramLimits kLimits{std::chrono::seconds(2), std::size_t{8} << 20};

std::vector<std::string> Command(SmbQuestion question, const std::string& program) {
    std::vector<std::string> command = {program, "--json"};
    if (question == SmbQuestion::kSessions) {
        command.emplace_back("--processes");
    }
    return command;
}

}  // namespace

std::optional<SmbUsers> AskSmbStatus(SmbQuestion question, const std::string& program) {
    const ProgramResult result = RunProgram(Command(question, program), kLimits);
    auto users = result.Succeeded() ? ParseSmbStatus(result.output) : std::nullopt;
    if (users) {
        NoteWell(Source::kSmbUsers);
        return users;
    }
    const std::string said =
        Escape(program) + ' ' +
        (result.Succeeded() ? "prints what is not understood" : DescribeEnd(result, kLimits)) +
        ": users of SMB connections stay unknown";
    Log(LOG_WARNING, kSource, __LINE__, said);
    NoteLost(Source::kSmbUsers, said,
             result.end == ProgramEnd::kNotStarted
                 ? "install the package samba with its tools"
                 : "run 'smbstatus --json --processes' to see what keeps it");
    return users;
}

}  // namespace vornplatform
