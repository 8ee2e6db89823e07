// SPDX-License-Identifier: MIT
#include "cli/answer/counts.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/answer/files.h"

namespace cli {
namespace {

constexpr size_t kBarWidth = 30;

/** The bar takes what a narrow terminal leaves beside the counts and a few letters a column. */
size_t BarWidth(const Terminal& terminal, size_t columns) {
    const size_t needed = 10 + 12 * columns;
    return terminal.width < needed + kBarWidth
               ? std::max<size_t>(terminal.width, needed + 1) - needed
               : kBarWidth;
}

/** Where a format has the numbers, and whether it draws them. */
struct Layout {
    explicit Layout(Format format)
        : numbersFirst(format == Format::kTable || format == Format::kCsv),
          bar(format == Format::kTable) {}

    bool numbersFirst;
    bool bar;
};

std::vector<Heading> CountHeadings(const Presentation& presentation, Layout layout) {
    std::vector<Heading> headings = HeadingsOf(presentation.countBy, presentation.schema);
    for (Heading& heading : headings) {
        // A value that several records have in common is a text, but in schema 2.
        heading = {heading.name, presentation.schema > 1 ? heading.kind : Kind::kText, false};
    }
    std::vector<Heading> numbers = {{"files", Kind::kNumber, true}};
    for (const Column column : presentation.summed) {
        numbers.push_back({"total_" + std::string(ColumnName(column)), Kind::kSize, true});
    }
    headings.insert(layout.numbersFirst ? headings.begin() : headings.end(), numbers.begin(),
                    numbers.end());
    if (layout.bar) {
        headings.push_back({"", Kind::kText, false});
    }
    return headings;
}

std::uint64_t Biggest(const std::vector<Count>& counts) {
    std::uint64_t biggest = 0;
    for (const Count& count : counts) {
        biggest = std::max(biggest, count.Rank());
    }
    return biggest;
}

/** So what differs in a list is counted apart. */
CountQuestion::Fill CellsOf(int schema) {
    return [schema](std::string& cell, const FileRecord& file, Column column) {
        FillCell(cell, file, column, schema);
    };
}

Row CountRow(Count count, Layout layout) {
    std::vector<std::string> numbers = {fmt::to_string(count.files)};
    for (const std::uint64_t sum : count.sums) {
        numbers.push_back(fmt::to_string(sum));
    }
    Row row;
    row.cells = std::move(count.values);
    row.cells.insert(layout.numbersFirst ? row.cells.begin() : row.cells.end(), numbers.begin(),
                     numbers.end());
    return row;
}

}  // namespace

std::string Bar(std::uint64_t part, std::uint64_t biggest, size_t width, bool utf8) {
    // Sizes are too large to be multiplied as integers.
    const double share =
        static_cast<double>(part) / static_cast<double>(std::max<std::uint64_t>(1, biggest));
    const auto length =
        std::max<size_t>(1, static_cast<size_t>(share * static_cast<double>(width)));
    std::string bar;
    for (size_t i = 0; i < length; ++i) {
        bar += utf8 ? "\xE2\x96\x87" : "#";
    }
    return bar;
}

void WriteCounts(const Snapshot& snapshot, const Question& question,
                 const Presentation& presentation, const Terminal& terminal, Output& output) {
    std::vector<Count> counts =
        CountBy(snapshot, {presentation.countBy, presentation.summed, CellsOf(presentation.schema)},
                question.reverse);
    counts.resize(std::min(counts.size(), presentation.limit.value_or(counts.size())));
    const Layout layout(presentation.format);
    const size_t width =
        BarWidth(terminal, presentation.countBy.size() + presentation.summed.size());
    const std::uint64_t biggest = Biggest(counts);
    const Document document = {ByName(snapshot.by), snapshot.incompleteReason, "counts"};
    const auto writer = MakeWriter(presentation, document, terminal, output);
    writer->Begin(CountHeadings(presentation, layout));
    for (Count& count : counts) {
        const std::uint64_t rank = count.Rank();
        Row row = CountRow(std::move(count), layout);
        if (layout.bar) {
            row.cells.push_back(Bar(rank, biggest, width, terminal.utf8));
        }
        writer->Record(row);
    }
    writer->End();
}

}  // namespace cli
