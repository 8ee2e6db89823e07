// SPDX-License-Identifier: MIT
#include "cli/answer/formats/csv_writer.h"

namespace cli {
namespace {

void AppendField(std::string& out, std::string_view text) {
    if (text.find_first_of("\",\r\n") == std::string_view::npos) {
        out += text;
        return;
    }
    out += '"';
    for (const char byte : text) {
        out.append(byte == '"' ? 2 : 1, byte);
    }
    out += '"';
}

}  // namespace

void CsvWriter::Begin(std::vector<Heading> headings) {
    if (header_) {
        Row row;
        for (Heading& heading : headings) {
            row.cells.push_back(std::move(heading.name));
        }
        Record(row);
    }
}

std::unique_ptr<RecordWriter> CsvWriter::Part(Output& output) const {
    return std::make_unique<CsvWriter>(false, output);
}

void CsvWriter::Record(const Row& row) {
    std::string& text = output_.Text();
    const char* separator = "";
    for (const std::string& cell : row.cells) {
        text += separator;
        separator = ",";
        AppendField(text, cell);
    }
    text += "\r\n";
    output_.EndRecord();
}

}  // namespace cli
