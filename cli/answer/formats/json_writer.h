#ifndef VORN_CLI_ANSWER_FORMATS_JSON_WRITER_H
#define VORN_CLI_ANSWER_FORMATS_JSON_WRITER_H

#include "cli/answer/formats/writer.h"

namespace cli {

/** Appends a row as an object with a member a heading. */
void AppendJsonObject(std::string& out, const std::vector<Heading>& headings, const Row& row);

/** One document with all records in a list. */
class JsonWriter : public RecordWriter {
public:
    JsonWriter(const Document& document, Output& output) : document_(document), output_(output) {}

    void Begin(std::vector<Heading> headings) override;
    void Record(const Row& row) override;
    void End() override;

private:
    Document document_;
    Output& output_;
    std::vector<Heading> headings_;
    const char* separator_ = "\n";
};

/** One object a line. */
class JsonlWriter : public RecordWriter {
public:
    explicit JsonlWriter(Output& output) : output_(output) {}

    void Begin(std::vector<Heading> headings) override { headings_ = std::move(headings); }
    void Record(const Row& row) override;
    void End() override {}

private:
    Output& output_;
    std::vector<Heading> headings_;
};

}  // namespace cli

#endif
