// SPDX-License-Identifier: MIT
#include "cli/question/attribution.h"

#include <algorithm>
#include <string>

#include "cli/question/service_names.h"
#include "cli/question/step.h"
#include "support/numbers.h"

namespace cli {
namespace {

namespace fh = VORN::FileHandle;

/** Neighbours of one process in the order of the records. */
struct Run {
    ProcessTexts* texts;
    FilePlace first;
    size_t records;
};
using Runs = std::vector<Run>;

Runs FindRuns(Files& files) {
    Runs runs;
    for (auto file = files.begin(); file != files.end(); ++file) {
        if (runs.empty() || runs.back().texts != file->process) {
            runs.push_back({file->process, file, 0});
        }
        ++runs.back().records;
    }
    return runs;
}

/** A process by one record, and by another where it has more. */
struct Process {
    std::vector<Run> runs;
    size_t records;
    OpenedFile first;
    OpenedFile second;
};

/** In the order of /proc, which is that of the ids. */
std::vector<Process> FindProcesses(Files& files) {
    std::vector<std::pair<int, Run>> ordered;
    for (const Run& run : FindRuns(files)) {
        ordered.emplace_back(support::ParseNumber<int>(run.texts->pid).value_or(0), run);
    }
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<Process> processes;
    for (const auto& [pid, run] : ordered) {
        if (processes.empty() || processes.back().runs.front().texts->pid != run.texts->pid) {
            processes.push_back({{}, 0, {}, {}});
        }
        processes.back().runs.push_back(run);
        processes.back().records += run.records;
    }
    return processes;
}

void SetServices(std::vector<Process>& processes, const Workers& workers) {
    constexpr size_t kLeast = 16;
    const size_t parts = std::clamp<size_t>(processes.size() / kLeast, 1, workers.Count());
    workers.ForEach(parts, [&](size_t part) {
        const auto at = [&](size_t index) { return processes.begin() + static_cast<long>(index); };
        const auto begin = at(processes.size() * part / parts);
        const auto end = at(processes.size() * (part + 1) / parts);
        LibraryFiles files;
        std::for_each(begin, end, [&](Process& process) {
            files.emplace_back().setPid(process.runs.front().texts->pid);
        });
        MustSucceed(NameServices(files), "get service name", 34);
        std::transform(files.begin(), files.end(), begin, begin,
                       [](const OpenedFile& file, Process& process) {
                           process.first = file;
                           return std::move(process);
                       });
    });
    for (Process& process : processes) {
        process.second = process.first;
    }
}

/**
 * The library's search for a session above a process goes on from what its last search remembers:
 * a second record may find what the first did not. All others find what the second does.
 */
void SetConnections(std::vector<Process>& processes) {
    LibraryFiles files;
    for (const Process& process : processes) {
        files.push_back(process.first);
        if (process.records > 1) {
            files.push_back(process.second);
        }
    }
    MustSucceed(fh::UpdateConnectionInfo(files), "update connection info", 39);
    auto file = files.begin();
    for (Process& process : processes) {
        process.first = *file++;
        process.second = process.records > 1 ? *file++ : process.first;
    }
}

/** What a record tells of its process. */
ProcessTexts Told(OpenedFile& file, const Asked& asked) {
    return {file.getPidStr(), file.getService(), asked.connection ? file.getHost() : "",
            asked.connection ? file.getUser() : ""};
}

bool IsSame(const ProcessTexts& a, const ProcessTexts& b) {
    return a.service == b.service && a.host == b.host && a.user == b.user;
}

void GiveToRecords(Process& process, const Asked& asked, RecordTexts& texts) {
    const ProcessTexts others = Told(process.second, asked);
    for (const Run& run : process.runs) {
        *run.texts = others;
    }
    const ProcessTexts first = Told(process.first, asked);
    if (!IsSame(first, others)) {
        process.runs.front().first->process = &texts.AddProcess(first);
    }
}

}  // namespace

void Attribute(Files& files, const Asked& asked, RecordTexts& texts, const Workers& workers) {
    if (!asked.service && !asked.connection) {
        return;
    }
    std::vector<Process> processes = FindProcesses(files);
    SetServices(processes, workers);
    if (asked.connection) {
        SetConnections(processes);
    }
    for (Process& process : processes) {
        GiveToRecords(process, asked, texts);
    }
}

}  // namespace cli
