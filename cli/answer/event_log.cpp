// SPDX-License-Identifier: MIT
#include "cli/answer/event_log.h"

#include <fmt/format.h>

#include <ctime>

#include "cli/answer/files.h"
#include "cli/answer/formats/json_writer.h"
#include "cli/text/number_text.h"

namespace cli {
namespace {

class EventLog {
public:
    EventLog(const Presentation& presentation, bool withTime, Output& output)
        : columns_(ShownColumns(presentation, withTime)),
          headings_(HeadingsOf(columns_, presentation.schema)),
          schema_(presentation.schema),
          output_(output) {}

    void Write(std::string_view event, const FileRecord& file, bool initial) {
        std::string& text = output_.Text();
        text += fmt::format(
            "{{\"event\":\"{}\",\"at\":\"{}\","
            "\"initial\":{},\"file\":",
            event, UtcTime(std::time(nullptr)), initial);
        FillRow(row_, file, columns_, schema_);
        AppendJsonObject(text, headings_, row_);
        text += "}\n";
        output_.EndRecord();
    }

    void End() { output_.Flush(); }

private:
    std::vector<Column> columns_;
    std::vector<Heading> headings_;
    int schema_;
    Output& output_;
    Row row_;
};

}  // namespace

void WriteEvents(const Changes& changes, const Presentation& presentation, bool withTime,
                 Output& output) {
    EventLog log(presentation, withTime, output);
    for (const FileRecord* closed : changes.closed) {
        log.Write("closed", *closed, false);
    }
    for (const FileRecord* opened : changes.opened) {
        log.Write("opened", *opened, changes.first);
    }
    log.End();
}

}  // namespace cli
