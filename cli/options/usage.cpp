// SPDX-License-Identifier: MIT
#include "cli/options/usage.h"

namespace cli {
namespace {

constexpr std::string_view kList = R"(Usage: vorn-openfiles [list] [OPTION...] [--] [PATH...]
       vorn-openfiles services [--json]
       vorn-openfiles check [--json] [--timeout N]
       vorn-openfiles metrics [--by share|volume] [--no-user] [--output FILE]
       vorn-openfiles busy|idle [--wait[=N]] [--inside] [--json|--pids] [PATH...]
       vorn-openfiles disconnect [--yes|--dry-run] [SELECTION] [PATH...]
       vorn-openfiles help [COMMAND]

Lists the files that processes hold open on the data volumes: by which service,
for which user and from which host. With PATHs, only what is at or below them.

Which:  --where COLUMN=TEXT, --match COLUMN=TEXT    equal; contains, any case
        --not-where COLUMN=TEXT, --not-match COLUMN=TEXT  leave these out
        --where 'COLUMN>N'  also < >= <=: size>1G, started<1h (ago), fd>99
        --since TIME        of processes that started within 90s, 1.5h, 7d
        --hidden, --folders, --deleted yes|no|only  such files (default: yes)
        --by share|volume   under shares (default) or anywhere on volumes
        --limit N           the first N only
Order:  --sort COLUMN[,COLUMN], --reverse, --group-by COLUMN
Output: --format table|json|jsonl|csv, --json, --schema 1|2, --header (of jsonl)
        --time              with last access times
        -o, --columns LIST  not for schema 1; +COLUMN adds to the default
        --no-header, --wide                         nothing shortened
        --print0 COLUMN, --pids                     for xargs -0; for kill
        --count-by COLUMN[,COLUMN], --sum size|space  how many, how large
        --watch [SECONDS]   keep looking; jsonl: print what opens and closes
        -q, --quiet         no output, the exit status tells
Limits: --strict            fail when something may be missing from the answer
        --timeout SECONDS   give up on a volume that doesn't answer
        --jobs N, --source auto|iterator|walk       how it is found
        -h, --help, -V, --version

Columns: service pid user host path filename time full_path hidden folder
deleted share command owner login unit started fd mode size space modified
inode device locks
Commands: services (that can disconnect clients), check (what this host lacks),
metrics (for Prometheus), busy and idle (what keeps it from being unmounted?),
disconnect (ends the clients that hold files), events (what opens and closes).
Exit status: 0 found, 1 nothing found, 2 wrong use or failed.

Examples:
  vorn-openfiles /volume1/photo                   who uses this share?
  vorn-openfiles --where user=alice --sort host   what has alice open?
  vorn-openfiles --deleted only --count-by owner --sum space
  vorn-openfiles idle /volume1 && umount /volume1
  vorn-openfiles --count-by service               top services
  vorn-openfiles --watch --format jsonl | jq .    log of what opens and closes
)";

constexpr std::string_view kServices = R"(Usage: vorn-openfiles services [--json]

Lists the services that can be asked to disconnect their clients, each with its
unit and whether it is installed and running.

        --json              a document, each service with its state
        --schema 1|2        of the document; 2 says machine and time, too
        -h, --help, -V, --version

Exit status: 0 found, 1 there is none, 2 wrong use or failed.

Example:
  vorn-openfiles services
)";

constexpr std::string_view kCheck = R"(Usage: vorn-openfiles check [--json] [--timeout SECONDS]

Tells whether this host can answer in full, and what to do where it can't: which
processes are seen, control groups, services, volumes, shares, what tells
clients, unit files, texts. Each source is really asked.

        --json              a document, each finding with its state
        --schema 1|2        of the document; 2 says machine and time, too
        --timeout SECONDS   give up on a volume that doesn't answer
        -h, --help, -V, --version

Exit status: 0 in full, 1 something is missing, 2 wrong use or failed.

Example:
  vorn-openfiles check || mail -s 'open files: something is missing' root
)";

constexpr std::string_view kMetrics =
    R"(Usage: vorn-openfiles metrics [--by share|volume] [--no-user]
                              [--sum size|space] [--output FILE] [--timeout N]
                              [--jobs N] [--source auto|iterator|walk]

Counts the open files by share, service and user in the text format of Prometheus.

        --by share|volume   under shares (default) or anywhere on volumes
        --no-user           without the label that tells the user
        --sum size|space    with the sizes of all files, or the space they take
        --output FILE       put them in the place of FILE in one step; a FIFO or a
                            device is written to, - is standard output
        --timeout SECONDS   give up on a volume that doesn't answer
        --jobs N            threads; otherwise as many as processors
        --source SOURCE     auto, the kernel's iterator or a walk of /proc
        -h, --help, -V, --version

Exit status: 0 done, 2 wrong use or failed.

Example:
  vorn-openfiles metrics --output /var/lib/prometheus/node-exporter/vorn_openfiles.prom
)";

constexpr std::string_view kBusy = R"(Usage: vorn-openfiles busy|idle [OPTION...] [--] [PATH...]

Tells what uses volumes, folders or files (all volumes without PATH), a row a
process and reason: open files, working and root directories, programs,
mappings, sockets, loop devices and what is built on them, swap, mounts below,
NFS exports and clients. Found by what it is and not by its name, so also through
bind mounts and in other mount namespaces.

        --wait[=SECONDS]    look again until nothing is in use, or the time is up
        --inside            processes outside of this PID namespace don't matter
        --source SOURCE     auto, the kernel's iterators or a walk of /proc
        --json              a document with every file
        --schema 1|2        of the document; 2 says machine and time, too
        --pids              each process id once, for kill
        -q, --quiet         no output, the exit status tells
        --timeout SECONDS   give up on a volume that doesn't answer
        -h, --help, -V, --version

Exit status of busy: 0 in use, 1 free, 2 can't tell, wrong use or failed.
Exit status of idle: 0 free, 1 in use, 2 can't tell, wrong use or failed.

Examples:
  vorn-openfiles busy /volume1/photo              who uses it, and why?
  vorn-openfiles idle /volume1 && umount /volume1
  vorn-openfiles idle --wait=60 /volume1          until it is free
)";

constexpr std::string_view kDisconnect =
    R"(Usage: vorn-openfiles disconnect [OPTION...] [--] [PATH...]

Ends the client connections that hold files open, of the services that can be
asked to ("vorn-openfiles services"). Shows them first, with what else they hold,
and asks. What serves no client is left alone, and named with what would end it.

Which:  PATHs, --where, --match, --not-where, --not-match, --hidden, --folders,
        --deleted, --by     as for the list
        --yes               don't ask
        --dry-run           show what would be ended, and end nothing
        --grace SECONDS     how long they may take to end (default: 10)
        --force             kill what is still there then
        --json              a document, each connection with its state
        --timeout SECONDS   give up on a volume that doesn't answer
        --jobs N, --source auto|iterator|walk       how files are found
        -h, --help, -V, --version

Exit status: 0 all ended, 1 nothing to end, 2 some remain, can't tell, wrong use
or failed.

Examples:
  vorn-openfiles disconnect --dry-run /volume1/photo     whose would it be?
  vorn-openfiles disconnect --yes --where user=alice /volume1
)";

constexpr std::string_view kEvents =
    R"(Usage: vorn-openfiles events [--journal] [--interval SECONDS] [--heartbeat SECONDS]
                             [--] [PATH...]

Tells each open and close of a file on the data volumes as it happens, a line of
JSON each: what, when, by which process, service, user and host. With PATHs, only
what is at or below them. Ends with SIGINT, SIGTERM or its reader.

        --journal           into systemd's journal, an entry each, instead
        --interval SECONDS  between looks at volumes that the kernel doesn't tell of
                            (default: 2); never
        --heartbeat SECONDS a sign of life (default: 60)
        -h, --help, -V, --version

Events: started, opened, closed, closed-written (it was open for writing), lost
(more happened than could be read), incomplete (a look may lack files), heartbeat,
stopped.
Takes CAP_SYS_ADMIN and CAP_DAC_READ_SEARCH, which root has, and Linux 5.15.
Exit status: 0 ended, 2 wrong use or failed.

Example:
  vorn-openfiles events /volume1/photo | jq -r '[.at, .event, .file.user] | @tsv'
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
        case Command::kBusy:
        case Command::kIdle:
            return kBusy;
        case Command::kDisconnect:
            return kDisconnect;
        case Command::kEvents:
            return kEvents;
        case Command::kList:
            break;
    }
    return kList;
}

std::string_view VersionText() {
    return "vorn-openfiles " VORN_VERSION "\n";
}

}  // namespace cli
