// SPDX-License-Identifier: MIT
#include "cli/answer/event_log.h"

#include "cli/answer/formats/json_writer.h"
#include "cli/host/volumes.h"

namespace cli {

EventLog::EventLog(const Presentation& presentation, bool withTime, Output& output)
    : columns_(ShownColumns(presentation, withTime)),
      headings_(HeadingsOf(columns_, presentation.schema)),
      schema_(presentation.schema),
      output_(output),
      lines_(NewOrigin(), output.Text(), presentation.schema) {}

void EventLog::Tell(const OpenFiles& files) {
    at_ = MomentNow();
    volumes_ = MountedVolumes();
    const Changes& news = files.News();
    for (const FileRecord* const closed : news.closed) {
        TellFile("closed", *closed, false);
    }
    for (const FileRecord* const opened : news.opened) {
        TellFile("opened", *opened, news.first);
    }
    TellLacks(files.Look());
    output_.Flush();
}

void EventLog::TellFile(std::string_view event, const FileRecord& file, bool initial) {
    lines_.BeginListed(event, at_, {LowestVolume(file.fullPath, volumes_), StartOf(file), initial});
    FillRow(row_, file, columns_, schema_);
    AppendJsonObject(output_.Text(), headings_, row_);
    lines_.EndListed();
    output_.EndRecord();
}

/** Readers of schema 1 know of files alone. */
void EventLog::TellLacks(const Snapshot& look) {
    if (schema_ > 1 && !look.incompleteReasons.empty() && look.incompleteReasons != lacks_) {
        lines_.Incomplete(at_, look.incompleteReasons);
    }
    lacks_ = look.incompleteReasons;
}

}  // namespace cli
