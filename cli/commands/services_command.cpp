// SPDX-License-Identifier: MIT
#include <unistd.h>

#include "cli/answer/formats/table_writer.h"
#include "cli/commands/commands.h"
#include "cli/host/kickable_services.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/text/json_text.h"

namespace cli {
namespace {

void AppendFlag(std::string& out, std::string_view key, bool flag) {
    out += ",\"";
    out += key;
    out += flag ? "\":true" : "\":false";
}

void AppendJson(std::string& out, const std::vector<KickableService>& services, int schema) {
    out += '{';
    AppendJsonHead(out, HeadOf(schema));
    out += "\"services\":[";
    const char* separator = "\n{";
    for (const KickableService& service : services) {
        out += separator;
        separator = ",\n{";
        AppendJsonMember(out, "service", service.name);
        out += ',';
        AppendJsonMember(out, "unit", service.unit);
        if (service.state) {
            AppendFlag(out, "installed", service.state->installed);
            AppendFlag(out, "running", service.state->running);
            AppendFlag(out, "elsewhere", service.state->elsewhere);
        }
        out += '}';
    }
    out += "\n]}\n";
}

void WriteTable(const std::vector<KickableService>& services, Output& output) {
    TableWriter writer(true, DescribeTerminal(STDOUT_FILENO), output);
    writer.Begin({{"service"}, {"unit"}, {"state"}});
    for (const KickableService& service : services) {
        Row row;
        row.cells = {service.name, service.unit, StateText(service)};
        writer.Record(row);
    }
    writer.End();
}

}  // namespace

int ServicesCommand(const Options& options) {
    const std::vector<KickableService> services = KickableServices();
    Output output(STDOUT_FILENO);
    if (options.presentation.format == Format::kJson) {
        AppendJson(output.Text(), services, options.presentation.schema);
    } else if (!services.empty()) {
        WriteTable(services, output);
    }
    output.Flush();
    return services.empty() ? kNothingFound : kFound;
}

}  // namespace cli
