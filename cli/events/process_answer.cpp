// SPDX-License-Identifier: MIT
#include "cli/events/process_answer.h"

#include <fmt/format.h>

#include "cli/process/workers.h"
#include "cli/question/attribution.h"
#include "support/process_text.h"
#include "support/read_file.h"
#include "support/text.h"

namespace cli {
namespace {

std::string ReadOf(const std::string& pid, const char* name) {
    return support::ReadFile(fmt::format("/proc/{}/{}", pid, name).c_str());
}

}  // namespace

void AskProcesses(std::vector<ProcessAnswer>& processes) {
    Files files;
    for (ProcessAnswer& process : processes) {
        files.emplace_back().process = &process.texts;
        const auto stat = support::ParseProcessStat(ReadOf(process.texts.pid, "stat"));
        process.start = stat ? stat->startTime : 0;
        process.command = ReadOf(process.texts.pid, "comm");
        process.command.resize(support::TrimRight(process.command, "\n").size());
    }
    RecordTexts texts;
    Attribute(files, Asked(), texts, Workers(1));
}

}  // namespace cli
