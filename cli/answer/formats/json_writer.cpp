// SPDX-License-Identifier: MIT
#include "cli/answer/formats/json_writer.h"

#include "cli/text/json_text.h"

namespace cli {
namespace {

void AppendMember(std::string& out, const Heading& heading, const std::string& cell) {
    if (heading.kind == Kind::kText) {
        return AppendJsonMember(out, heading.name, cell);
    }
    if (heading.kind == Kind::kOptional) {
        return AppendJsonOptional(out, heading.name, cell);
    }
    const bool set = cell == "yes";
    out += '"';
    out += heading.name;
    out += "\":";
    out += heading.kind == Kind::kBit    ? (set ? "1" : "0")
           : heading.kind == Kind::kFlag ? (set ? "true" : "false")
           : cell == "-"                 ? "null"
                                         : cell.c_str();
}

}  // namespace

void AppendJsonObject(std::string& out, const std::vector<Heading>& headings, const Row& row) {
    char separator = '{';
    for (size_t i = 0; i < headings.size(); ++i) {
        out += separator;
        separator = ',';
        AppendMember(out, headings[i], row.cells[i]);
    }
    out += '}';
}

void JsonWriter::Begin(std::vector<Heading> headings) {
    headings_ = std::move(headings);
    std::string& text = output_.Text();
    text += '{';
    AppendJsonPreamble(text, HeadOf(schema_), document_.by, document_.incompleteReason);
    text += '"';
    text += document_.list;
    text += "\":[";
}

void JsonWriter::Record(const Row& row) {
    output_.Text() += separator_;
    separator_ = ",\n";
    AppendJsonObject(output_.Text(), headings_, row);
    output_.EndRecord();
}

void JsonWriter::End() {
    output_.Text() += "\n]}\n";
}

std::unique_ptr<RecordWriter> JsonWriter::Part(Output& output) const {
    auto part = std::make_unique<JsonWriter>(schema_, document_, output);
    part->headings_ = headings_;
    part->separator_ = separator_;
    return part;
}

void JsonlWriter::Begin(std::vector<Heading> headings) {
    headings_ = std::move(headings);
    if (header_) {
        std::string& text = output_.Text();
        text += '{';
        AppendJsonPreamble(text, HeadOf(schema_), document_.by, document_.incompleteReason);
        text += "\"list\":\"";
        text += document_.list;
        text += "\"}\n";
        output_.EndRecord();
    }
}

std::unique_ptr<RecordWriter> JsonlWriter::Part(Output& output) const {
    auto part = std::make_unique<JsonlWriter>(schema_, false, document_, output);
    part->headings_ = headings_;
    return part;
}

void JsonlWriter::Record(const Row& row) {
    AppendJsonObject(output_.Text(), headings_, row);
    output_.Text() += '\n';
    output_.EndRecord();
}

}  // namespace cli
