#include "cli/options/usage.h"

namespace cli {
namespace {

constexpr std::string_view kList = R"(Usage: vorn-openfiles [list] [OPTION...] [--] [PATH...]
       vorn-openfiles services [--json]
       vorn-openfiles check [--json] [--timeout N]
       vorn-openfiles metrics [--by share|volume] [--output FILE] [--timeout N]
       vorn-openfiles help [COMMAND]

Lists the files that processes hold open on the data volumes: by which service,
for which user and from which host. With PATHs, only what is at or below them.

Which:  --where COLUMN=TEXT, --match COLUMN=TEXT    equal; contains, any case
        --not-where COLUMN=TEXT, --not-match COLUMN=TEXT  leave these out
        --hidden, --folders, --deleted yes|no|only  such files (default: yes)
        --by share|volume   under shares (default) or anywhere on volumes
        --limit N           the first N only
Order:  --sort COLUMN, --reverse
Output: --format table|json|jsonl|csv, --json
        --time              with last access times
        --columns LIST, --no-header                 for table and csv
        --print0 COLUMN, --pids                     for xargs -0; for kill
        --count-by COLUMN[,COLUMN]                  how many, biggest first
        --watch [SECONDS]   keep looking; jsonl: print what opens and closes
        -q, --quiet         no output, the exit status tells
Limits: --strict            fail when processes can't be seen
        --timeout SECONDS   give up on a volume that doesn't answer
        -h, --help, -V, --version

Conditions: any of one column's, but all of the columns' must hold. Columns:
service pid user host path filename time full_path hidden folder deleted
Commands: services (that can disconnect clients), check (can this host answer
in full?), metrics (for Prometheus).
Exit status: 0 found, 1 nothing found, 2 wrong use or failed.

Examples:
  vorn-openfiles /volume1/photo                   who uses this share?
  vorn-openfiles --where user=alice --sort host   what has alice open?
  vorn-openfiles --by volume --deleted only       what holds deleted space?
  vorn-openfiles -q /volume1 && echo busy         stop if anything is open
  vorn-openfiles --count-by service               top services
  vorn-openfiles --watch --format jsonl | jq .    log of what opens and closes
)";

constexpr std::string_view kServices = R"(Usage: vorn-openfiles services [--json]

Lists the services that can be asked to disconnect their clients, by the names
that their control groups have.

        --json              a list of texts
        -h, --help, -V, --version

Exit status: 0 found, 1 there is none, 2 wrong use or failed.

Example:
  vorn-openfiles services
)";

constexpr std::string_view kCheck = R"(Usage: vorn-openfiles check [--json] [--timeout SECONDS]

Tells whether this host can answer in full, and what to do where it can't: rights,
control groups, volumes, shares, unit files, texts, and what tells clients.

        --json              a document, each finding with its state
        --timeout SECONDS   give up on a volume that doesn't answer
        -h, --help, -V, --version

Exit status: 0 in full, 1 something is missing, 2 wrong use or failed.

Example:
  vorn-openfiles check || mail -s 'open files: something is missing' root
)";

constexpr std::string_view kMetrics =
    R"(Usage: vorn-openfiles metrics [--by share|volume] [--output FILE] [--timeout N]

Counts the open files by share, service and user in the text format of Prometheus.

        --by share|volume   under shares (default) or anywhere on volumes
        --output FILE       put them in the place of FILE in one step; a FIFO or a
                            device is written to, - is standard output
        --timeout SECONDS   give up on a volume that doesn't answer
        -h, --help, -V, --version

Exit status: 0 done, 2 wrong use or failed.

Example:
  vorn-openfiles metrics --output /var/lib/prometheus/node-exporter/vorn_openfiles.prom
)";

}  // namespace

std::string_view HelpText(Command command) {
    switch (command) {
        case Command::kServices:
            return kServices;
        case Command::kCheck:
            return kCheck;
        case Command::kMetrics:
            return kMetrics;
        case Command::kList:
            break;
    }
    return kList;
}

std::string_view VersionText() {
    return "vorn-openfiles " VORN_VERSION "\n";
}

}  // namespace cli
