// SPDX-License-Identifier: MIT
#include "cli/answer/disconnect.h"

#include <fmt/format.h>

#include "cli/answer/busy.h"
#include "cli/answer/formats/table_writer.h"
#include "cli/text/escape.h"
#include "cli/text/json_text.h"
#include "cli/text/number_text.h"

namespace cli {
namespace {

std::string_view ObstacleName(Obstacle obstacle) {
    switch (obstacle) {
        case Obstacle::kNoClient:
            return "no client";
        case Obstacle::kOtherService:
            return "other service";
        case Obstacle::kDaemon:
            return "daemon";
        case Obstacle::kInit:
            return "init";
        case Obstacle::kOwn:
            return "own";
        case Obstacle::kApart:
            return "apart";
        case Obstacle::kUnknown:
            break;
    }
    return "unknown";
}

std::string_view Explanation(Obstacle obstacle) {
    switch (obstacle) {
        case Obstacle::kNoClient:
            return "it serves no client";
        case Obstacle::kOtherService:
            return "its service can't be asked to disconnect its clients";
        case Obstacle::kDaemon:
            return "it is a server, and other clients would go with it";
        case Obstacle::kInit:
            return "it is the first process of its PID namespace";
        case Obstacle::kOwn:
            return "this command runs over its connection";
        case Obstacle::kApart:
            return "it has left its client's session";
        case Obstacle::kUnknown:
            break;
    }
    return "it can't be told what it serves";
}

std::string ProcessesText(const std::vector<pid_t>& pids) {
    return NumberRanges({pids.begin(), pids.end()});
}

/** The first name, and how many more there are. */
std::string FilesText(const std::vector<FileOfProcess>& files) {
    std::string text = files.empty() ? "" : Escaped(files.front().path, true);
    return files.size() < 2 ? text : fmt::format("{} +{}", text, files.size() - 1);
}

void WriteRows(const PlannedConnection& connection, const std::vector<FileOfProcess>& files,
               const char* how, TableWriter& writer) {
    for (const FileOfProcess& file : files) {
        writer.Record({{connection.service, connection.client.user, connection.client.host,
                        ProcessesText(connection.processes), how, file.path},
                       Style::kPlain});
    }
}

void AppendPids(std::string& out, std::string_view key, const std::vector<pid_t>& pids) {
    out += fmt::format("\"{}\":[", key);
    const char* separator = "";
    for (const pid_t pid : pids) {
        out += fmt::format("{}\"{}\"", separator, pid);
        separator = ",";
    }
    out += ']';
}

void AppendFiles(std::string& out, std::string_view key, const std::vector<FileOfProcess>& files) {
    out += fmt::format("\"{}\":[", key);
    const char* separator = "";
    for (const FileOfProcess& file : files) {
        out += fmt::format("{}{{\"pid\":\"{}\",", separator, file.pid);
        AppendJsonMember(out, "path", file.path);
        out += ',';
        AppendJsonMember(out, "full_path", file.fullPath);
        out += fmt::format(",\"deleted\":{}}}", file.deleted);
        separator = ",";
    }
    out += ']';
}

const char* StateName(const DisconnectState& state, size_t connection) {
    if (connection >= state.outcomes.size()) {
        return "planned";
    }
    switch (state.outcomes[connection].state) {
        case Outcome::kLeft:
            return "left";
        case Outcome::kEnded:
            return "ended";
        case Outcome::kRemains:
            break;
    }
    return "remaining";
}

void AppendConnection(std::string& out, const PlannedConnection& connection,
                      const DisconnectState& state, size_t index) {
    out += '{';
    AppendJsonMember(out, "service", connection.service);
    out += ',';
    AppendJsonMember(out, "user", connection.client.user);
    out += ',';
    AppendJsonMember(out, "host", connection.client.host);
    out += fmt::format(",\"state\":\"{}\",", StateName(state, index));
    AppendPids(out, "processes", connection.processes);
    out += ',';
    AppendPids(
        out, "remaining",
        index < state.outcomes.size() ? state.outcomes[index].remaining : std::vector<pid_t>());
    out += ',';
    AppendFiles(out, "selected", connection.selected);
    out += ',';
    AppendFiles(out, "others", connection.others);
    out += '}';
}

void AppendLeftAlone(std::string& out, const LeftAlone& leftAlone) {
    out += fmt::format("{{\"pid\":\"{}\",", leftAlone.pid);
    AppendJsonMember(out, "program", leftAlone.program);
    out += fmt::format(",\"why\":\"{}\",", ObstacleName(leftAlone.obstacle));
    AppendJsonMember(out, "remedy", leftAlone.remedy);
    out += ',';
    AppendFiles(out, "selected", leftAlone.selected);
    out += '}';
}

}  // namespace

std::string Describe(const PlannedConnection& connection) {
    return fmt::format("{} connection of {} from {} ({} {})", Escaped(connection.service, true),
                       Escaped(connection.client.user, true), Escaped(connection.client.host, true),
                       connection.processes.size() == 1 ? "process" : "processes",
                       ProcessesText(connection.processes));
}

std::string Describe(const LeftAlone& leftAlone) {
    return fmt::format("process {} ({}) is left alone, as {}; '{}' would end it: {}", leftAlone.pid,
                       Escaped(leftAlone.program, true), Explanation(leftAlone.obstacle),
                       Escaped(leftAlone.remedy, true), FilesText(leftAlone.selected));
}

void WritePlan(const Plan& plan, const Terminal& terminal, Output& output) {
    TableWriter writer(true, terminal, output);
    writer.Begin({{"service"}, {"user"}, {"host"}, {"processes"}, {"file"}, {"path"}});
    for (const PlannedConnection& connection : plan.connections) {
        WriteRows(connection, connection.selected, "selected", writer);
        WriteRows(connection, connection.others, "also held", writer);
    }
    writer.End();
}

void WriteOutcomes(const Plan& plan, const std::vector<Outcome>& outcomes, Output& output) {
    for (size_t i = 0; i < plan.connections.size(); ++i) {
        if (outcomes[i].state == Outcome::kRemains) {
            continue;
        }
        output.Text() +=
            fmt::format("{}: {}\n", outcomes[i].state == Outcome::kEnded ? "ended" : "gone before",
                        Describe(plan.connections[i]));
    }
}

void WriteDisconnectJson(const Plan& plan, const DisconnectState& state, Output& output) {
    std::string& out = output.Text();
    out += '{';
    AppendJsonHead(out, HeadOf(1));
    out += fmt::format("\"state\":\"{}\",\"complete\":{},", state.state,
                       state.incompleteReason.empty());
    if (!state.incompleteReason.empty()) {
        AppendJsonMember(out, "reason", state.incompleteReason);
        out += ',';
    }
    out += "\"connections\":[";
    for (size_t i = 0; i < plan.connections.size(); ++i) {
        out += i == 0 ? "\n" : ",\n";
        AppendConnection(out, plan.connections[i], state, i);
    }
    out += "\n],\"left_alone\":[";
    const char* separator = "\n";
    for (const LeftAlone& leftAlone : plan.leftAlone) {
        out += separator;
        separator = ",\n";
        AppendLeftAlone(out, leftAlone);
    }
    out += "\n],";
    AppendFiles(out, "held_since", state.heldSince);
    out += "}\n";
}

}  // namespace cli
