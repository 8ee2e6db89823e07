#include "cli/answer/formats/plain_writer.h"

namespace cli {

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
