// SPDX-License-Identifier: MIT
#include "cli/answer/formats/writer.h"

#include "cli/answer/formats/csv_writer.h"
#include "cli/answer/formats/json_writer.h"
#include "cli/answer/formats/plain_writer.h"
#include "cli/answer/formats/table_writer.h"

namespace cli {

std::unique_ptr<RecordWriter> RecordWriter::Part(Output& /*output*/) const {
    return nullptr;
}

std::unique_ptr<RecordWriter> MakeWriter(const Presentation& presentation, const Document& document,
                                         const Terminal& terminal, Output& output) {
    switch (presentation.format) {
        case Format::kJson:
            return std::make_unique<JsonWriter>(presentation.schema, document, output);
        case Format::kJsonl:
            return std::make_unique<JsonlWriter>(presentation.schema, presentation.jsonHeader,
                                                 document, output);
        case Format::kCsv:
            return std::make_unique<CsvWriter>(presentation.header, output);
        case Format::kPrint0:
            return std::make_unique<PlainWriter>('\0', PlainWriter::kEach, output);
        case Format::kPids:
            return std::make_unique<PlainWriter>('\n', PlainWriter::kDistinct, output);
        case Format::kTable:
            break;
    }
    return std::make_unique<TableWriter>(presentation.header, ForTable(terminal, presentation),
                                         output);
}

}  // namespace cli
