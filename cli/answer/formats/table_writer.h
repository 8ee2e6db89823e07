// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_FORMATS_TABLE_WRITER_H
#define VORN_CLI_ANSWER_FORMATS_TABLE_WRITER_H

#include <optional>

#include "cli/answer/formats/table.h"
#include "cli/answer/formats/writer.h"

namespace cli {

/** The terminal as a table is to see it, which may be told to shorten nothing. */
Terminal ForTable(Terminal terminal, const Presentation& presentation);

/** Aligned columns below a heading; no record, no heading. Written at the end, when widths are
 * known. */
class TableWriter : public RecordWriter {
public:
    TableWriter(bool header, const Terminal& terminal, Output& output)
        : header_(header), terminal_(terminal), output_(output) {}

    void Begin(std::vector<Heading> headings) override;
    void Section(const std::string& title) override;
    void Record(const Row& row) override;
    void End() override;

private:
    void AddHeading();

    bool header_;
    Terminal terminal_;
    Output& output_;
    std::vector<Heading> headings_;
    std::optional<Table> table_;
};

}  // namespace cli

#endif
