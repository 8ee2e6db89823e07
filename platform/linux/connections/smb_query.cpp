#include "platform/linux/connections/smb_query.h"

#include <syslog.h>

#include <cerrno>
#include <chrono>
#include <vector>

#include "platform/linux/support/fault.h"
#include "platform/linux/support/run_program.h"

namespace vornplatform {
namespace {

constexpr char kSource[] = "smb_query";
constexpr ProgramLimits kLimits{std::chrono::seconds(2), std::size_t{8} << 20};

std::string Reason(const ProgramResult& result) {
    switch (result.end) {
        case ProgramEnd::kNotStarted:
            return result.status == ENOENT
                       ? "is not installed"
                       : "does not start, errno=" + std::to_string(result.status);
        case ProgramEnd::kTimeLimit:
            return "takes too long";
        case ProgramEnd::kOutputLimit:
            return "prints too much";
        case ProgramEnd::kSignalled:
            return "ended by signal " + std::to_string(result.status);
        default:
            return "failed with status " + std::to_string(result.status);
    }
}

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
    if (!users) {
        const std::string reason =
            result.Succeeded() ? "prints what is not understood" : Reason(result);
        Log(LOG_WARNING, kSource, __LINE__,
            Escape(program) + ' ' + reason + ": users of SMB connections stay unknown");
    }
    return users;
}

}  // namespace vornplatform
