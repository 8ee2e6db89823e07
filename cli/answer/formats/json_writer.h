// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_FORMATS_JSON_WRITER_H
#define VORN_CLI_ANSWER_FORMATS_JSON_WRITER_H

#include "cli/answer/formats/writer.h"

namespace cli {

/** Appends a row as an object with a member a heading. */
void AppendJsonObject(std::string& out, const std::vector<Heading>& headings, const Row& row);

/** One document with all records in a list. */
class JsonWriter : public RecordWriter {
public:
    JsonWriter(int schema, const Document& document, Output& output)
        : schema_(schema), document_(document), output_(output) {}

    void Begin(std::vector<Heading> headings) override;
    void Record(const Row& row) override;
    void End() override;
    std::unique_ptr<RecordWriter> Part(Output& output) const override;

private:
    int schema_;
    Document document_;
    Output& output_;
    std::vector<Heading> headings_;
    const char* separator_ = "\n";
};

/** One object a line. */
class JsonlWriter : public RecordWriter {
public:
    /** @param header  whether the first line says what a document would */
    JsonlWriter(int schema, bool header, const Document& document, Output& output)
        : schema_(schema), header_(header), document_(document), output_(output) {}

    void Begin(std::vector<Heading> headings) override;
    void Record(const Row& row) override;
    void End() override {}
    std::unique_ptr<RecordWriter> Part(Output& output) const override;

private:
    int schema_;
    bool header_;
    Document document_;
    Output& output_;
    std::vector<Heading> headings_;
};

}  // namespace cli

#endif
