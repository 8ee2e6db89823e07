// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_FORMATS_CSV_WRITER_H
#define VORN_CLI_ANSWER_FORMATS_CSV_WRITER_H

#include "cli/answer/formats/writer.h"

namespace cli {

/** CSV as RFC 4180 has it, bytes as they are. */
class CsvWriter : public RecordWriter {
public:
    CsvWriter(bool header, Output& output) : header_(header), output_(output) {}

    void Begin(std::vector<Heading> headings) override;
    void Record(const Row& row) override;
    void End() override {}
    std::unique_ptr<RecordWriter> Part(Output& output) const override;

private:
    bool header_;
    Output& output_;
};

}  // namespace cli

#endif
