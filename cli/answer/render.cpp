#include <algorithm>
#include <unordered_set>

#include "cli/answer/render.h"
#include "cli/answer/table.h"
#include "cli/text/csv_text.h"
#include "cli/text/json_text.h"

namespace cli {
namespace {

/** Calls visit(file, deleted) for each record up to the limit. */
template <typename Visit>
void ForEachShown(Snapshot& snapshot, const Options& options, const Visit& visit) {
    size_t left = options.limit.value_or(snapshot.files.size());
    for (auto file = snapshot.files.begin(); file != snapshot.files.end() && left > 0; ++file) {
        visit(*file, snapshot.IsDeleted(*file));
        --left;
    }
}

void AddHeading(Table& table, const std::vector<Column>& columns, bool marked) {
    table.BeginRow(Table::Style::kHeading);
    if (marked) {
        table.Add("");
    }
    for (const Column column : columns) {
        table.Add(ColumnHeading(column));
    }
}

void RenderTable(Snapshot& snapshot, const Options& options, const Terminal& terminal,
                 Output& output) {
    const Table table = FileTable(snapshot, options, terminal, {});
    for (size_t row = 0; row < table.Rows() && !output.IsClosed(); ++row) {
        table.AppendRow(output.Text(), row);
        output.EndRecord();
    }
}

void RenderJson(Snapshot& snapshot, const Options& options, Output& output) {
    std::string& text = output.Text();
    text += '{';
    AppendJsonPreamble(text, ByName(options), snapshot.incompleteReason);
    text += "\"files\":[";
    const char* separator = "\n";
    ForEachShown(snapshot, options, [&](OpenedFile& file, bool deleted) {
        text += separator;
        separator = ",\n";
        AppendJsonFile(text, file, deleted, options.time);
        output.EndRecord();
    });
    text += "\n]}\n";
}

void RenderCsv(Snapshot& snapshot, const Options& options, Output& output) {
    const std::vector<Column> columns = ShownColumns(options);
    std::string& text = output.Text();
    const auto appendLine = [&](const auto& field) {
        for (size_t i = 0; i < columns.size(); ++i) {
            if (i > 0) {
                text += ',';
            }
            AppendCsvField(text, field(columns[i]));
        }
        text += kCsvEnd;
        output.EndRecord();
    };
    if (options.header) {
        appendLine(ColumnName);
    }
    ForEachShown(snapshot, options, [&](OpenedFile& file, bool deleted) {
        appendLine([&](Column column) { return ColumnText(file, column, deleted); });
    });
}

void RenderJsonl(Snapshot& snapshot, const Options& options, Output& output) {
    ForEachShown(snapshot, options, [&](OpenedFile& file, bool deleted) {
        AppendJsonFile(output.Text(), file, deleted, options.time);
        output.Text() += '\n';
        output.EndRecord();
    });
}

void RenderPrint0(Snapshot& snapshot, const Options& options, Output& output) {
    ForEachShown(snapshot, options, [&](OpenedFile& file, bool deleted) {
        output.Text() += ColumnText(file, options.print0Column, deleted);
        output.Text() += '\0';
        output.EndRecord();
    });
}

/** Each process once. */
void RenderPids(Snapshot& snapshot, const Options& options, Output& output) {
    std::unordered_set<std::string> seen;
    ForEachShown(snapshot, options, [&](OpenedFile& file, bool) {
        const std::string pid = file.getPidStr();
        if (seen.insert(pid).second) {
            output.Text() += pid;
            output.Text() += '\n';
            output.EndRecord();
        }
    });
}

}  // namespace

std::vector<Column> ShownColumns(const Options& options) {
    if (!options.columns.empty()) {
        return options.columns;
    }
    std::vector<Column> columns = {Column::kService, Column::kPid, Column::kUser, Column::kHost};
    if (options.format == Format::kCsv) {
        columns.insert(columns.end(), {Column::kPath, Column::kFilename, Column::kFullPath,
                                       Column::kHidden, Column::kFolder, Column::kDeleted});
    }
    if (options.time) {
        columns.push_back(Column::kTime);
    }
    if (options.format == Format::kTable) {
        columns.push_back(Column::kPath);
    }
    return columns;
}

Table FileTable(Snapshot& snapshot, const Options& options, const Terminal& terminal,
                const std::function<bool(const OpenedFile&)>& isNew) {
    const std::vector<Column> columns = ShownColumns(options);
    const bool marked = static_cast<bool>(isNew);
    Table table(columns.size() + (marked ? 1 : 0), terminal);
    for (size_t i = 0; i < columns.size(); ++i) {
        if (columns[i] == Column::kPid) {
            table.AlignRight(i + (marked ? 1 : 0));
        }
    }
    if (options.header && !snapshot.files.empty()) {
        AddHeading(table, columns, marked);
    }
    ForEachShown(snapshot, options, [&](OpenedFile& file, bool deleted) {
        const bool fresh = marked && isNew(file);
        const bool faint = deleted || file.isHidden();
        table.BeginRow(fresh   ? Table::Style::kNew
                       : faint ? Table::Style::kFaint
                               : Table::Style::kPlain);
        if (marked) {
            table.Add(fresh ? "+" : "");
        }
        for (const Column column : columns) {
            table.Add(ColumnText(file, column, deleted));
        }
    });
    table.Fit();
    return table;
}

void RenderFiles(Snapshot& snapshot, const Options& options, const Terminal& terminal,
                 Output& output) {
    switch (options.format) {
        case Format::kTable:
            RenderTable(snapshot, options, terminal, output);
            break;
        case Format::kJson:
            RenderJson(snapshot, options, output);
            break;
        case Format::kJsonl:
            RenderJsonl(snapshot, options, output);
            break;
        case Format::kCsv:
            RenderCsv(snapshot, options, output);
            break;
        case Format::kPrint0:
            RenderPrint0(snapshot, options, output);
            break;
        case Format::kPids:
            RenderPids(snapshot, options, output);
            break;
    }
}

}  // namespace cli
