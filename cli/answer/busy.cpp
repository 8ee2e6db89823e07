// SPDX-License-Identifier: MIT
#include "cli/answer/busy.h"

#include <fmt/format.h>

#include "cli/answer/formats/plain_writer.h"
#include "cli/answer/formats/table_writer.h"
#include "cli/text/json_text.h"
#include "cli/text/number_text.h"

namespace cli {
namespace {

/** What a cell or a member shows where there is nothing. */
const std::string& OrNone(const std::string& text) {
    static const std::string kNone = "-";
    return text.empty() ? kNone : text;
}

std::string PidText(const Holder& row) {
    return row.pid == 0 ? "-" : std::to_string(row.pid);
}

std::string DescriptorText(const Holder& row) {
    std::vector<int> descriptors;
    for (const UsedFile& file : row.files) {
        if (file.descriptor >= 0) {
            descriptors.push_back(file.descriptor);
        }
    }
    return descriptors.empty() ? OrNone(row.access) : NumberRanges(std::move(descriptors));
}

/** The first name, and how many more there are. */
std::string PathText(const Holder& row) {
    const size_t more = row.files.size() + row.unnamed - 1;
    const std::string path = row.files.empty() ? "" : row.files.front().path;
    return more == 0 ? OrNone(path) : fmt::format("{} +{}", OrNone(path), more);
}

void WriteTable(const Holders& holders, const Terminal& terminal, Output& output) {
    TableWriter writer(true, terminal, output);
    writer.Begin({{"reason"},
                  {"pid", Kind::kText, true},
                  {"command"},
                  {"owner"},
                  {"service"},
                  {"user"},
                  {"host"},
                  {"fd"},
                  {"path"}});
    for (const Holder& row : holders.rows) {
        writer.Record({{std::string(ReasonName(row.reason)), PidText(row),
                        OrNone(row.pid == 0 ? row.device : row.command), OrNone(row.owner),
                        OrNone(row.service), OrNone(row.user), OrNone(row.host),
                        DescriptorText(row), PathText(row)},
                       Style::kPlain});
    }
    writer.End();
}

void WritePids(const Holders& holders, Output& output) {
    PlainWriter writer('\n', PlainWriter::kDistinct, output);
    for (const Holder& row : holders.rows) {
        if (row.pid != 0) {
            writer.Record({{std::to_string(row.pid)}, Style::kPlain});
        }
    }
}

void AppendTexts(std::string& out, std::string_view key, const std::vector<std::string>& texts) {
    out += fmt::format("\"{}\":[", key);
    const char* separator = "";
    for (const std::string& text : texts) {
        out += separator;
        separator = ",";
        AppendJsonText(out, text);
    }
    out += ']';
}

void AppendFiles(std::string& out, const std::vector<UsedFile>& files) {
    out += "\"files\":[";
    const char* separator = "{";
    for (const UsedFile& file : files) {
        out += separator;
        separator = ",{";
        if (file.descriptor >= 0) {
            out += fmt::format("\"descriptor\":{},", file.descriptor);
        }
        AppendJsonMember(out, "path", OrNone(file.path));
        out += file.deleted ? ",\"deleted\":true}" : ",\"deleted\":false}";
    }
    out += ']';
}

void AppendHolder(std::string& out, const Holder& row, int schema) {
    out += fmt::format("{{\"reason\":\"{}\",", ReasonName(row.reason));
    const std::string pid = PidText(row);
    out += schema == 1  ? fmt::format("\"pid\":\"{}\",", pid)
           : pid == "-" ? "\"pid\":null,"
                        : fmt::format("\"pid\":{},", pid);
    const std::pair<std::string_view, std::string> members[] = {
        {"command", OrNone(row.command)}, {"owner", OrNone(row.owner)},
        {"service", OrNone(row.service)}, {"user", OrNone(row.user)},
        {"host", OrNone(row.host)},       {"device", OrNone(row.device)},
        {"access", OrNone(row.access)}};
    for (const auto& [key, text] : members) {
        schema == 1 ? AppendJsonMember(out, key, text) : AppendJsonOptional(out, key, text);
        out += ',';
    }
    AppendFiles(out, row.files);
    out += '}';
}

const char* StateOf(const Holders& holders) {
    return !holders.rows.empty() ? "busy" : holders.Complete() ? "free" : "unknown";
}

void WriteJson(const Holders& holders, const std::vector<std::string>& paths, int schema,
               Output& output) {
    std::string& out = output.Text();
    out += '{';
    AppendJsonHead(out, HeadOf(schema));
    out += fmt::format("\"state\":\"{}\",\"complete\":{},", StateOf(holders), holders.Complete());
    AppendTexts(out, "reasons", holders.lost);
    out += ',';
    AppendTexts(out, "notes", holders.notes);
    out += ',';
    AppendTexts(out, "paths", paths);
    out += ",\"holders\":[";
    const char* separator = "\n";
    for (const Holder& row : holders.rows) {
        out += separator;
        separator = ",\n";
        AppendHolder(out, row, schema);
        output.EndRecord();
    }
    out += "\n]}\n";
}

}  // namespace

void WriteHolders(const Holders& holders, const std::vector<std::string>& paths,
                  const Presentation& presentation, const Terminal& terminal, Output& output) {
    switch (presentation.format) {
        case Format::kJson:
            return WriteJson(holders, paths, presentation.schema, output);
        case Format::kPids:
            return WritePids(holders, output);
        default:
            return WriteTable(holders, terminal, output);
    }
}

}  // namespace cli
