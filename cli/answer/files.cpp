#include "cli/answer/files.h"

namespace cli {
namespace {

Kind KindOf(Column column) {
    switch (column) {
        case Column::kHidden:
            return Kind::kBit;
        case Column::kFolder:
        case Column::kDeleted:
            return Kind::kFlag;
        default:
            return Kind::kText;
    }
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

std::vector<Column> AllColumns(bool withTime) {
    std::vector<Column> columns = {
        Column::kService,  Column::kPid,      Column::kUser,   Column::kHost,   Column::kPath,
        Column::kFilename, Column::kFullPath, Column::kHidden, Column::kFolder, Column::kDeleted};
    if (withTime) {
        columns.push_back(Column::kTime);
    }
    return columns;
}

std::vector<Column> ShownColumns(const Presentation& presentation, bool withTime) {
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
            return AllColumns(withTime);
    }
}

std::vector<Heading> HeadingsOf(const std::vector<Column>& columns) {
    std::vector<Heading> headings;
    for (const Column column : columns) {
        headings.push_back(
            {std::string(ColumnName(column)), KindOf(column), column == Column::kPid});
    }
    return headings;
}

void FillRow(Row& row, OpenedFile& file, const std::vector<Column>& columns, bool deleted) {
    row.cells.resize(columns.size());
    for (size_t i = 0; i < columns.size(); ++i) {
        row.cells[i] = ColumnText(file, columns[i], deleted);
    }
    row.style = deleted || file.isHidden() ? Style::kFaint : Style::kPlain;
}

void WriteFiles(Snapshot& snapshot, const Question& question, const Presentation& presentation,
                const Terminal& terminal, Output& output) {
    const Document document = {ByName(question), snapshot.incompleteReason, "files"};
    const auto writer = MakeWriter(presentation, document, terminal, output);
    const std::vector<Column> columns = ShownColumns(presentation, question.time);
    writer->Begin(HeadingsOf(columns));
    Row row;
    ForEachShown(snapshot, presentation.limit, [&](OpenedFile& file, bool deleted) {
        FillRow(row, file, columns, deleted);
        writer->Record(row);
    });
    writer->End();
}

}  // namespace cli
