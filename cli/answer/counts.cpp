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

/** Where a format has the number of files, and whether it draws them. */
struct Layout {
    explicit Layout(Format format)
        : filesFirst(format == Format::kTable || format == Format::kCsv),
          bar(format == Format::kTable) {}

    bool filesFirst;
    bool bar;
};

std::vector<Heading> CountHeadings(const std::vector<Column>& columns, Layout layout) {
    std::vector<Heading> headings = HeadingsOf(columns);
    for (Heading& heading : headings) {
        heading = {heading.name, Kind::kText, false};
    }
    headings.insert(layout.filesFirst ? headings.begin() : headings.end(),
                    {"files", Kind::kNumber, true});
    if (layout.bar) {
        headings.push_back({"", Kind::kText, false});
    }
    return headings;
}

size_t Biggest(const std::vector<Count>& counts) {
    size_t biggest = 0;
    for (const Count& count : counts) {
        biggest = std::max(biggest, count.files);
    }
    return biggest;
}

}  // namespace

std::string Bar(size_t part, size_t biggest, size_t width, bool utf8) {
    const size_t length = std::max<size_t>(1, part * width / std::max<size_t>(1, biggest));
    std::string bar;
    for (size_t i = 0; i < length; ++i) {
        bar += utf8 ? "\xE2\x96\x87" : "#";
    }
    return bar;
}

void WriteCounts(Snapshot& snapshot, const Question& question, const Presentation& presentation,
                 const Terminal& terminal, Output& output) {
    std::vector<Count> counts = CountBy(snapshot, presentation.countBy, question.reverse);
    counts.resize(std::min(counts.size(), presentation.limit.value_or(counts.size())));
    const Layout layout(presentation.format);
    const size_t width = BarWidth(terminal, presentation.countBy.size());
    const size_t biggest = Biggest(counts);
    const Document document = {ByName(question), snapshot.incompleteReason, "counts"};
    const auto writer = MakeWriter(presentation, document, terminal, output);
    writer->Begin(CountHeadings(presentation.countBy, layout));
    for (Count& count : counts) {
        Row row;
        row.cells = std::move(count.values);
        row.cells.insert(layout.filesFirst ? row.cells.begin() : row.cells.end(),
                         fmt::to_string(count.files));
        if (layout.bar) {
            row.cells.push_back(Bar(count.files, biggest, width, terminal.utf8));
        }
        writer->Record(row);
    }
    writer->End();
}

}  // namespace cli
