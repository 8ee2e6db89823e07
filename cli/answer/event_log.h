// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_EVENT_LOG_H
#define VORN_CLI_ANSWER_EVENT_LOG_H

#include "cli/answer/files.h"
#include "cli/events/event_lines.h"
#include "cli/process/output.h"
#include "cli/question/open_files.h"

namespace cli {

/**
 * What a watch of the list finds, as lines: those of events, but with the list's own columns as the
 * file. They are written in few writes: who reads a hundred thousand needn't be woken for each.
 */
class EventLog {
public:
    EventLog(const Presentation& presentation, bool withTime, Output& output);

    /** All that has changed is written when it returns. */
    void Tell(const OpenFiles& files);

private:
    void TellFile(std::string_view event, const FileRecord& file, bool initial);
    void TellLacks(const Snapshot& look);

    const std::vector<Column> columns_;
    const std::vector<Heading> headings_;
    const int schema_;
    Output& output_;
    EventLines lines_;
    Row row_;
    Moment at_ = 0;
    std::vector<std::string> volumes_;
    std::vector<std::string> lacks_; /**< as they were told last */
};

}  // namespace cli

#endif
