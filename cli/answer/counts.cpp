#include "cli/answer/counts.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>

#include "cli/answer/table.h"
#include "cli/text/csv_text.h"
#include "cli/text/json_text.h"

namespace cli {
namespace {

constexpr size_t kBarWidth = 30;

using Counts = std::vector<Count>;

/** The bar takes what a narrow terminal leaves beside the counts and a few letters a column. */
size_t BarWidth(const Terminal& terminal, size_t columns) {
    const size_t needed = 10 + 12 * columns;
    return terminal.width < needed + kBarWidth
               ? std::max<size_t>(terminal.width, needed + 1) - needed
               : kBarWidth;
}

void CountsTable(const Counts& counts, const Options& options, const Terminal& terminal,
                 Output& output) {
    Table table(options.countBy.size() + 2, terminal);
    table.AlignRight(0);
    if (options.header && !counts.empty()) {
        table.BeginRow(Table::Style::kHeading);
        table.Add("FILES");
        for (const Column column : options.countBy) {
            table.Add(ColumnHeading(column));
        }
        table.Add("");
    }
    const size_t width = BarWidth(terminal, options.countBy.size());
    size_t biggest = 0;
    for (const Count& count : counts) {
        biggest = std::max(biggest, count.files);
    }
    for (const Count& count : counts) {
        table.BeginRow();
        table.Add(fmt::to_string(count.files));
        for (const std::string& value : count.values) {
            table.Add(value);
        }
        table.Add(Bar(count.files, biggest, width, terminal.utf8));
    }
    table.Fit();
    for (size_t row = 0; row < table.Rows(); ++row) {
        table.AppendRow(output.Text(), row);
        output.EndRecord();
    }
}

void AppendCountObject(std::string& out, const Count& count, const Options& options) {
    out += '{';
    for (size_t i = 0; i < count.values.size(); ++i) {
        AppendJsonMember(out, ColumnName(options.countBy[i]), count.values[i]);
        out += ',';
    }
    fmt::format_to(std::back_inserter(out), "\"files\":{}}}", count.files);
}

void CountsJson(const Counts& counts, const Snapshot& snapshot, const Options& options,
                Output& output) {
    output.Text() += '{';
    AppendJsonPreamble(output.Text(), ByName(options), snapshot.incompleteReason);
    output.Text() += "\"counts\":[";
    const char* separator = "\n";
    for (const Count& count : counts) {
        output.Text() += separator;
        separator = ",\n";
        AppendCountObject(output.Text(), count, options);
        output.EndRecord();
    }
    output.Text() += "\n]}\n";
}

void CountsJsonl(const Counts& counts, const Options& options, Output& output) {
    for (const Count& count : counts) {
        AppendCountObject(output.Text(), count, options);
        output.Text() += '\n';
        output.EndRecord();
    }
}

void CountsCsv(const Counts& counts, const Options& options, Output& output) {
    if (options.header) {
        output.Text() += "files";
        for (const Column column : options.countBy) {
            output.Text() += ',';
            AppendCsvField(output.Text(), ColumnName(column));
        }
        output.Text() += kCsvEnd;
    }
    for (const Count& count : counts) {
        output.Text() += fmt::to_string(count.files);
        for (const std::string& value : count.values) {
            output.Text() += ',';
            AppendCsvField(output.Text(), value);
        }
        output.Text() += kCsvEnd;
        output.EndRecord();
    }
}

}  // namespace

std::vector<Count> CountBy(Snapshot& snapshot, const std::vector<Column>& columns, bool reversed) {
    std::map<std::vector<std::string>, size_t> counts;
    std::vector<std::string> values(columns.size());
    for (OpenedFile& file : snapshot.files) {
        std::transform(columns.begin(), columns.end(), values.begin(), [&](Column column) {
            return ColumnText(file, column, snapshot.IsDeleted(file));
        });
        ++counts[values];
    }
    std::vector<Count> ordered;
    for (const auto& [key, files] : counts) {
        ordered.push_back({key, files});
    }
    std::stable_sort(ordered.begin(), ordered.end(), [&](const Count& a, const Count& b) {
        return reversed ? a.files < b.files : a.files > b.files;
    });
    return ordered;
}

std::string Bar(size_t part, size_t biggest, size_t width, bool utf8) {
    const size_t length = std::max<size_t>(1, part * width / std::max<size_t>(1, biggest));
    std::string bar;
    for (size_t i = 0; i < length; ++i) {
        bar += utf8 ? "\xE2\x96\x87" : "#";
    }
    return bar;
}

void RenderCounts(Snapshot& snapshot, const Options& options, const Terminal& terminal,
                  Output& output) {
    Counts counts = CountBy(snapshot, options.countBy, options.reverse);
    counts.resize(std::min(counts.size(), options.limit.value_or(counts.size())));
    switch (options.format) {
        case Format::kJson:
            return CountsJson(counts, snapshot, options, output);
        case Format::kJsonl:
            return CountsJsonl(counts, options, output);
        case Format::kCsv:
            return CountsCsv(counts, options, output);
        default:
            return CountsTable(counts, options, terminal, output);
    }
}

}  // namespace cli
