// SPDX-License-Identifier: MIT
#include "cli/answer/files.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>

#include "cli/answer/typed_values.h"
#include "cli/process/workers.h"

namespace cli {
namespace {

Kind KindOf(Column column) {
    switch (column) {
        case Column::kHidden:
            return Kind::kBit;
        case Column::kFolder:
        case Column::kDeleted:
            return Kind::kFlag;
        case Column::kSize:
        case Column::kSpace:
            return Kind::kSize;
        default:
            return Kind::kText;
    }
}

bool IsAlignedRight(Column column) {
    const Measure measure = MeasureOf(column);
    return measure == Measure::kSize || (measure == Measure::kNumber && column != Column::kFd);
}

std::vector<Column> TableColumns(bool withTime) {
    std::vector<Column> columns = {Column::kService, Column::kPid, Column::kUser, Column::kHost};
    if (withTime) {
        columns.push_back(Column::kTime);
    }
    columns.push_back(Column::kPath);
    return columns;
}

}  // namespace

std::vector<Column> AllColumns(bool withTime, int schema) {
    std::vector<Column> columns = {
        Column::kService,  Column::kPid,      Column::kUser,   Column::kHost,   Column::kPath,
        Column::kFilename, Column::kFullPath, Column::kHidden, Column::kFolder, Column::kDeleted};
    if (withTime) {
        columns.push_back(Column::kTime);
    }
    for (size_t fact = static_cast<size_t>(Column::kShare); schema > 1 && fact < kColumns; ++fact) {
        columns.push_back(static_cast<Column>(fact));
    }
    return columns;
}

namespace {

std::vector<Column> BaseColumns(const Presentation& presentation, bool withTime) {
    if (!presentation.columns.empty()) {
        return presentation.columns;
    }
    switch (presentation.format) {
        case Format::kTable:
            return TableColumns(withTime);
        case Format::kPrint0:
            return {presentation.print0Column};
        case Format::kPids:
            return {Column::kPid};
        default:
            return AllColumns(withTime, presentation.schema);
    }
}

}  // namespace

std::vector<Column> ShownColumns(const Presentation& presentation, bool withTime) {
    std::vector<Column> columns = BaseColumns(presentation, withTime);
    for (const Column column : presentation.added) {
        if (std::find(columns.begin(), columns.end(), column) == columns.end()) {
            columns.push_back(column);
        }
    }
    if (presentation.group && columns.size() > 1) {
        // The section says it.
        columns.erase(std::remove(columns.begin(), columns.end(), *presentation.group),
                      columns.end());
    }
    return columns;
}

std::vector<Heading> HeadingsOf(const std::vector<Column>& columns, int schema) {
    std::vector<Heading> headings;
    for (const Column column : columns) {
        headings.push_back({std::string(ColumnName(column)),
                            schema > 1 ? TypedKind(column) : KindOf(column),
                            IsAlignedRight(column)});
    }
    return headings;
}

void FillCell(std::string& cell, const FileRecord& file, Column column, int schema) {
    if (schema > 1 && TypedKind(column) == Kind::kJson) {
        cell = TypedValue(file, column);
    } else {
        AssignColumnText(cell, file, column);
    }
}

void FillRow(Row& row, const FileRecord& file, const std::vector<Column>& columns, int schema) {
    row.cells.resize(columns.size());
    for (size_t i = 0; i < columns.size(); ++i) {
        FillCell(row.cells[i], file, columns[i], schema);
    }
    row.style = file.deleted || file.hidden ? Style::kFaint : Style::kPlain;
}

bool Sections::Enter(const FileRecord& file) {
    if (!group_) {
        return false;
    }
    std::string text = ColumnText(file, *group_);
    if (text == text_) {
        return false;
    }
    writer_.Section(std::string(ColumnName(*group_)) + ' ' + text);
    text_ = std::move(text);
    return true;
}

namespace {

using Shown = Files::const_iterator;

/** Some records that follow each other, written on one thread. */
struct Slice {
    Shown begin;
    Shown end;
    std::string text;
};

/** The next slices, from a place up to an end; the place goes on. */
std::vector<Slice> TakeSlices(Shown& place, Shown end, size_t count) {
    constexpr std::ptrdiff_t kRecords = 2000;
    std::vector<Slice> slices;
    while (slices.size() < count && place != end) {
        const Shown begin = place;
        place += std::min(end - place, kRecords);
        slices.push_back({begin, place, ""});
    }
    return slices;
}

/** Writes records one after the other, or slices of them side by side where that can be had. */
class FilesOnTheirWay {
public:
    FilesOnTheirWay(size_t jobs, const std::vector<Column>& columns, int schema,
                    RecordWriter& writer, Output& output)
        : jobs_(jobs), columns_(columns), schema_(schema), writer_(writer), output_(output) {}

    void Write(Shown begin, Shown end) const {
        // The first differs from the others in some formats.
        const Shown second = begin == end ? end : std::next(begin);
        WriteRange(writer_, begin, second);
        Output nowhere(Output::kNowhere);
        if (jobs_ == 1 || writer_.Part(nowhere) == nullptr) {
            WriteRange(writer_, second, end);
        } else {
            WriteSlices(second, end);
        }
    }

private:
    void WriteRange(RecordWriter& writer, Shown begin, Shown end) const {
        Row row;
        for (; begin != end; ++begin) {
            FillRow(row, *begin, columns_, schema_);
            writer.Record(row);
        }
    }

    /** No more at a time than is soon written: the whole answer may be larger than the records. */
    void WriteSlices(Shown place, Shown end) const {
        const Workers workers(jobs_);
        while (place != end && !output_.IsClosed()) {
            std::vector<Slice> slices = TakeSlices(place, end, 8 * jobs_);
            workers.ForEach(slices.size(), [&](size_t i) {
                Output text(Output::kNowhere);
                WriteRange(*writer_.Part(text), slices[i].begin, slices[i].end);
                slices[i].text = std::move(text.Text());
            });
            for (const Slice& slice : slices) {
                output_.Text() += slice.text;
                output_.EndRecord();
            }
        }
    }

    size_t jobs_;
    const std::vector<Column>& columns_;
    int schema_;
    RecordWriter& writer_;
    Output& output_;
};

void WriteSections(Shown begin, Shown end, const std::vector<Column>& columns, Column group,
                   RecordWriter& writer) {
    Sections sections(group, writer);
    Row row;
    for (; begin != end; ++begin) {
        sections.Enter(*begin);
        FillRow(row, *begin, columns);
        writer.Record(row);
    }
}

}  // namespace

void WriteFiles(const Snapshot& snapshot, const Question& question,
                const Presentation& presentation, const Terminal& terminal, Output& output) {
    const Document document = {ByName(snapshot.by), snapshot.incompleteReason, "files"};
    const auto writer = MakeWriter(presentation, document, terminal, output);
    const std::vector<Column> columns = ShownColumns(presentation, question.time);
    writer->Begin(HeadingsOf(columns, presentation.schema));
    const Shown begin = snapshot.files.begin();
    const size_t shown = presentation.limit.value_or(snapshot.files.size());
    const Shown end = begin + static_cast<std::ptrdiff_t>(std::min(shown, snapshot.files.size()));
    if (presentation.group) {
        WriteSections(begin, end, columns, *presentation.group, *writer);
    } else {
        FilesOnTheirWay(snapshot.jobs, columns, presentation.schema, *writer, output)
            .Write(begin, end);
    }
    writer->End();
}

}  // namespace cli
