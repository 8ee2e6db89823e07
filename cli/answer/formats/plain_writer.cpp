// SPDX-License-Identifier: MIT
#include "cli/answer/formats/plain_writer.h"

namespace cli {

std::unique_ptr<RecordWriter> PlainWriter::Part(Output& output) const {
    return repeats_ == kEach ? std::make_unique<PlainWriter>(end_, kEach, output) : nullptr;
}

void PlainWriter::Record(const Row& row) {
    const std::string& text = row.cells.front();
    if (repeats_ == kDistinct && !seen_.insert(text).second) {
        return;
    }
    output_.Text() += text;
    output_.Text() += end_;
    output_.EndRecord();
}

}  // namespace cli
