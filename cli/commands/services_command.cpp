#include <unistd.h>

#include "cli/commands/commands.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/text/escape.h"
#include "cli/text/json_text.h"

namespace cli {

int ServicesCommand(const Options& options) {
    std::list<std::string> services;
    VORN::FileHandle::GetKickableServiceList(services);
    Output output(STDOUT_FILENO);
    if (options.presentation.format == Format::kJson) {
        output.Text() += '[';
        const char* separator = "";
        for (const std::string& service : services) {
            output.Text() += separator;
            separator = ",";
            AppendJsonText(output.Text(), service);
        }
        output.Text() += "]\n";
    } else {
        const bool utf8 = DescribeTerminal(STDOUT_FILENO).utf8;
        for (const std::string& service : services) {
            AppendEscaped(output.Text(), service, utf8);
            output.Text() += '\n';
        }
    }
    output.Flush();
    return services.empty() ? kNothingFound : kFound;
}

}  // namespace cli
