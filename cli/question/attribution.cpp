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

/** Neighbours of one process in a list. */
struct Run {
    std::string pid;
    size_t records;
    size_t process; /**< index in the order of ids */
    bool begins;    /**< with the process's first record */
};
using Runs = std::vector<Run>;

Runs FindRuns(Files& files) {
    Runs runs;
    for (OpenedFile& file : files) {
        std::string pid = file.getPidStr();
        if (runs.empty() || runs.back().pid != pid) {
            runs.push_back({std::move(pid), 0, 0, true});
        }
        ++runs.back().records;
    }
    return runs;
}

/** A process by one record, and by another where it has more. */
struct Process {
    const Run* run;
    size_t records;
    OpenedFile first;
    OpenedFile second;
};

/** In the order of /proc, which is that of the ids; tells the runs which is theirs. */
std::vector<Process> FindProcesses(std::vector<Runs>& lists) {
    std::vector<std::pair<int, Run*>> ordered;
    for (Runs& runs : lists) {
        for (Run& run : runs) {
            ordered.emplace_back(support::ParseNumber<int>(run.pid).value_or(0), &run);
        }
    }
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<Process> processes;
    for (const auto& each : ordered) {
        Run* const run = each.second;
        run->begins = processes.empty() || processes.back().run->pid != run->pid;
        if (run->begins) {
            processes.push_back({run, 0, {}, {}});
        }
        run->process = processes.size() - 1;
        processes.back().records += run->records;
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
        Files files;
        std::for_each(begin, end,
                      [&](Process& process) { files.emplace_back().setPid(process.run->pid); });
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
    Files files;
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

/** What a record tells of its process, to be given to others. */
class Told {
public:
    explicit Told(OpenedFile& file)
        : service_(file.getService()), host_(file.getHost()), user_(file.getUser()) {}

    void GiveTo(OpenedFile& file, const Asked& asked) const {
        file.setServiceName(service_);
        if (asked.connection) {
            file.setHost(host_);
            file.setUser(user_);
        }
    }

private:
    std::string service_;
    std::string host_;
    std::string user_;
};

void CopyToRecords(std::vector<Process>& processes, const Runs& runs, Files& files,
                   const Asked& asked) {
    auto file = files.begin();
    for (const Run& run : runs) {
        const Told first(processes[run.process].first);
        const Told others(processes[run.process].second);
        for (size_t i = 0; i < run.records; ++i) {
            (run.begins && i == 0 ? first : others).GiveTo(*file++, asked);
        }
    }
}

}  // namespace

void Attribute(std::vector<Files>& lists, const Asked& asked, const Workers& workers) {
    if (!asked.service && !asked.connection) {
        return;
    }
    std::vector<Runs> runs(lists.size());
    workers.ForEach(lists.size(), [&](size_t list) { runs[list] = FindRuns(lists[list]); });
    std::vector<Process> processes = FindProcesses(runs);
    SetServices(processes, workers);
    if (asked.connection) {
        SetConnections(processes);
    }
    workers.ForEach(lists.size(),
                    [&](size_t list) { CopyToRecords(processes, runs[list], lists[list], asked); });
}

}  // namespace cli
