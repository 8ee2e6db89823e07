// SPDX-License-Identifier: MIT
#include "cli/answer/files.h"

#include <algorithm>
#include <iterator>
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

std::string CellText(OpenedFile& file, Column column, const Known& known, int schema) {
    return schema > 1 && TypedKind(column) == Kind::kJson ? TypedValue(file, column, known)
                                                          : ColumnText(file, column, known);
}

void FillRow(Row& row, OpenedFile& file, const std::vector<Column>& columns, const Known& known,
             int schema) {
    row.cells.resize(columns.size());
    for (size_t i = 0; i < columns.size(); ++i) {
        row.cells[i] = CellText(file, columns[i], known, schema);
    }
    row.style = known.deleted || file.isHidden() ? Style::kFaint : Style::kPlain;
}

bool Sections::Enter(OpenedFile& file, const Known& known) {
    if (!group_) {
        return false;
    }
    std::string text = ColumnText(file, *group_, known);
    if (text == text_) {
        return false;
    }
    writer_.Section(std::string(ColumnName(*group_)) + ' ' + text);
    text_ = std::move(text);
    return true;
}

namespace {

using Place = Files::iterator;

/** Some records that follow each other, written on one thread. */
struct Slice {
    Place begin;
    Place end;
    std::string text;
};

/** The next slices, from a place up to an end; the place goes on. */
std::vector<Slice> TakeSlices(Place& place, size_t& left, size_t count) {
    constexpr size_t kRecords = 2000;
    std::vector<Slice> slices;
    while (slices.size() < count && left > 0) {
        const Place begin = place;
        const size_t taken = std::min(left, kRecords);
        std::advance(place, taken);
        left -= taken;
        slices.push_back({begin, place, ""});
    }
    return slices;
}

/** Writes records one after the other, or slices of them side by side where that can be had. */
class FilesOnTheirWay {
public:
    FilesOnTheirWay(Snapshot& snapshot, const std::vector<Column>& columns, int schema,
                    RecordWriter& writer, Output& output)
        : snapshot_(snapshot),
          columns_(columns),
          schema_(schema),
          writer_(writer),
          output_(output) {}

    void Write(Place place, size_t left) {
        // The first differs from the others in some formats.
        const Place second = left > 0 ? std::next(place) : place;
        WriteRange(writer_, place, second);
        left -= left > 0 ? 1 : 0;
        Output nowhere(Output::kNowhere);
        if (snapshot_.jobs == 1 || writer_.Part(nowhere) == nullptr) {
            WriteRange(writer_, second, std::next(second, static_cast<long>(left)));
        } else {
            WriteSlices(second, left);
        }
    }

private:
    void WriteRange(RecordWriter& writer, Place begin, Place end) const {
        Row row;
        for (; begin != end; ++begin) {
            FillRow(row, *begin, columns_, snapshot_.About(*begin), schema_);
            writer.Record(row);
        }
    }

    /** No more at a time than is soon written: the whole answer may be larger than the records. */
    void WriteSlices(Place place, size_t left) const {
        const Workers workers(snapshot_.jobs);
        while (left > 0 && !output_.IsClosed()) {
            std::vector<Slice> slices = TakeSlices(place, left, 8 * snapshot_.jobs);
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

    Snapshot& snapshot_;
    const std::vector<Column>& columns_;
    int schema_;
    RecordWriter& writer_;
    Output& output_;
};

void WriteSections(Snapshot& snapshot, const std::vector<Column>& columns, Column group,
                   size_t shown, RecordWriter& writer) {
    Sections sections(group, writer);
    ForEachShown(snapshot, shown, [&](OpenedFile& file, const Known& known) {
        sections.Enter(file, known);
        Row row;
        FillRow(row, file, columns, known);
        writer.Record(row);
    });
}

}  // namespace

void WriteFiles(Snapshot& snapshot, const Question& question, const Presentation& presentation,
                const Terminal& terminal, Output& output) {
    const Document document = {ByName(snapshot.by), snapshot.incompleteReason, "files"};
    const auto writer = MakeWriter(presentation, document, terminal, output);
    const std::vector<Column> columns = ShownColumns(presentation, question.time);
    writer->Begin(HeadingsOf(columns, presentation.schema));
    const size_t shown =
        std::min(snapshot.files.size(), presentation.limit.value_or(snapshot.files.size()));
    if (presentation.group) {
        WriteSections(snapshot, columns, *presentation.group, shown, *writer);
    } else {
        FilesOnTheirWay(snapshot, columns, presentation.schema, *writer, output)
            .Write(snapshot.files.begin(), shown);
    }
    writer->End();
}

}  // namespace cli
