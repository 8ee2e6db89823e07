#include "cli/answer/event_log.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>
#include <iterator>

#include "cli/answer/files.h"
#include "cli/answer/formats/json_writer.h"

namespace cli {
namespace {

class EventLog {
public:
    EventLog(bool withTime, Output& output)
        : columns_(AllColumns(withTime)), headings_(HeadingsOf(columns_)), output_(output) {}

    void Write(std::string_view event, Remembered& what, bool initial) {
        std::string& text = output_.Text();
        fmt::format_to(std::back_inserter(text),
                       "{{\"event\":\"{}\",\"at\":\"{:%Y-%m-%dT%H:%M:%SZ}\","
                       "\"initial\":{},\"file\":",
                       event, fmt::gmtime(std::time(nullptr)), initial);
        FillRow(row_, what.file, columns_, what.deleted);
        AppendJsonObject(text, headings_, row_);
        text += "}\n";
        output_.Flush();
    }

private:
    std::vector<Column> columns_;
    std::vector<Heading> headings_;
    Output& output_;
    Row row_;
};

}  // namespace

void WriteEvents(Changes changes, bool withTime, Output& output) {
    EventLog log(withTime, output);
    for (Remembered& closed : changes.closed) {
        log.Write("closed", closed, false);
    }
    for (Remembered& opened : changes.opened) {
        log.Write("opened", opened, changes.first);
    }
}

}  // namespace cli
