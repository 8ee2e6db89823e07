#include "cli/answer/formats/json_writer.h"

#include "cli/text/json_text.h"

namespace cli {
namespace {

void AppendMember(std::string& out, const Heading& heading, const std::string& cell) {
    if (heading.kind == Kind::kText) {
        AppendJsonMember(out, heading.name, cell);
        return;
    }
    const bool set = cell == "yes";
    out += '"';
    out += heading.name;
    out += "\":";
    out += heading.kind == Kind::kNumber ? cell.c_str()
           : heading.kind == Kind::kBit  ? (set ? "1" : "0")
                                         : (set ? "true" : "false");
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
    AppendJsonPreamble(text, document_.by, document_.incompleteReason);
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

void JsonlWriter::Record(const Row& row) {
    AppendJsonObject(output_.Text(), headings_, row);
    output_.Text() += '\n';
    output_.EndRecord();
}

}  // namespace cli
