// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_FORMATS_PLAIN_WRITER_H
#define VORN_CLI_ANSWER_FORMATS_PLAIN_WRITER_H

#include <unordered_set>

#include "cli/answer/formats/writer.h"

namespace cli {

/** The first column alone, bytes as they are, for other programs. */
class PlainWriter : public RecordWriter {
public:
    enum Repeats { kEach, kDistinct };

    /** @param end  what ends each text */
    PlainWriter(char end, Repeats repeats, Output& output)
        : end_(end), repeats_(repeats), output_(output) {}

    void Begin(std::vector<Heading>) override {}
    void Record(const Row& row) override;
    void End() override {}
    std::unique_ptr<RecordWriter> Part(Output& output) const override;

private:
    char end_;
    Repeats repeats_;
    Output& output_;
    std::unordered_set<std::string> seen_;
};

}  // namespace cli

#endif
