// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_FORMATS_WRITER_H
#define VORN_CLI_ANSWER_FORMATS_WRITER_H

/**
 * @file
 * A list on its way out in one of the formats: files, counts, whatever has columns and rows.
 */

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/answer/presentation.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"

namespace cli {

/** What the texts of a column are, for formats that tell kinds apart. */
enum class Kind {
    kText,
    kNumber,   /**< or "-", which JSON has as null */
    kSize,     /**< a number of bytes, which a table shortens, or "-" */
    kFlag,     /**< "yes" or "no" */
    kBit,      /**< the same, which JSON has as 1 or 0 */
    kOptional, /**< a text, or "-", which JSON has as null */
    kJson      /**< JSON as it is */
};

struct Heading {
    std::string name; /**< as options and JSON have it; may be empty in a table */
    Kind kind = Kind::kText;
    bool alignedRight = false;
};

/** How a row of a table stands out. */
enum class Style : uint8_t { kPlain, kHeading, kNew, kFaint };

struct Row {
    std::vector<std::string> cells; /**< one a heading; bytes as they are */
    Style style = Style::kPlain;
};

/** Begin, then each record, then End: once each, in this order. What is written is in Output. */
class RecordWriter {
public:
    RecordWriter() = default;
    virtual ~RecordWriter() = default;
    RecordWriter(const RecordWriter&) = delete;
    RecordWriter& operator=(const RecordWriter&) = delete;

    virtual void Begin(std::vector<Heading> headings) = 0;
    virtual void Record(const Row& row) = 0;
    virtual void End() = 0;
    /** What the records that follow have in common; only tables have such sections. */
    virtual void Section(const std::string& /*title*/) {}

    /**
     * After the first record: a writer of some of those that follow, which has begun already and
     * doesn't end, so that several threads can each write a part. Null for a format whose records
     * depend on each other.
     */
    virtual std::unique_ptr<RecordWriter> Part(Output& output) const;
};

/** What a JSON document says of the list that it holds. */
struct Document {
    std::string_view by;               /**< "share" or "volume" */
    std::string_view incompleteReason; /**< empty when the list is complete */
    std::string_view list;             /**< key of the list, such as "files" */
};

/** The writer of a format; document's texts and output must outlive it. */
std::unique_ptr<RecordWriter> MakeWriter(const Presentation& presentation, const Document& document,
                                         const Terminal& terminal, Output& output);

}  // namespace cli

#endif
