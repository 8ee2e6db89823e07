// SPDX-License-Identifier: MIT
#include "cli/answer/formats/table.h"

#include <algorithm>
#include <numeric>

#include "cli/text/escape.h"

namespace cli {
namespace {

constexpr size_t kGap = 2;

const char* StyleBegin(Style style) {
    switch (style) {
        case Style::kHeading:
            return "\x1B[1m";
        case Style::kNew:
            return "\x1B[32m";
        case Style::kFaint:
            return "\x1B[2m";
        case Style::kPlain:
            break;
    }
    return "";
}

}  // namespace

std::vector<size_t> FittedWidths(std::vector<size_t> widths, size_t total) {
    if (widths.empty()) {
        return widths;
    }
    size_t sum = std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
    while (sum > total) {
        // Cuts the widest back to the next widest, or as far as it takes.
        const auto widest = std::max_element(widths.begin(), widths.end());
        size_t next = 1;
        for (const size_t& width : widths) {
            if (&width != &*widest) {
                next = std::max(next, width);
            }
        }
        const size_t least = *widest > next ? next : *widest - 1;
        const size_t cut = std::min(*widest - least, sum - total);
        if (*widest <= 1) {
            break;
        }
        *widest -= cut;
        sum -= cut;
    }
    return widths;
}

Table::Table(size_t columns, const Terminal& terminal)
    : terminal_(terminal), rightAligned_(columns), widths_(columns) {}

void Table::Add(std::string_view text) {
    const size_t begin = text_.size();
    AppendEscaped(text_, text, terminal_.utf8);
    const size_t width = DisplayWidth(std::string_view(text_).substr(begin));
    size_t& columnWidth = widths_[cells_.size() % widths_.size()];
    columnWidth = std::max(columnWidth, width);
    cells_.push_back({text_.size(), width});
}

void Table::AddLine(std::string_view text, Style style) {
    BeginRow(style);
    lines_.insert(Rows() - 1);
    AppendEscaped(text_, text, terminal_.utf8);
    cells_.resize(cells_.size() + widths_.size(), {text_.size(), 0});
}

void Table::Fit() {
    widths_ = FittedWidths(std::move(widths_), terminal_.width);
}

std::string_view Table::CellText(size_t index) const {
    const size_t begin = index == 0 ? 0 : cells_[index - 1].end;
    return std::string_view(text_).substr(begin, cells_[index].end - begin);
}

void Table::AppendCell(std::string& out, size_t index) const {
    const size_t column = index % widths_.size();
    size_t width = cells_[index].width;
    std::string shortened;
    std::string_view text = CellText(index);
    if (width > widths_[column]) {
        shortened = Shortened(text, widths_[column], terminal_.utf8);
        text = shortened;
        width = DisplayWidth(text);
    }
    const size_t padding = widths_[column] - std::min(width, widths_[column]);
    out.append(rightAligned_[column] ? padding : 0, ' ');
    out += text;
    out.append((rightAligned_[column] ? 0 : padding) + kGap, ' ');
}

void Table::AppendRow(std::string& out, size_t row) const {
    const bool styled = terminal_.colour && styles_[row] != Style::kPlain;
    if (styled) {
        out += StyleBegin(styles_[row]);
    }
    const size_t columns = widths_.size();
    if (!lines_.empty() && lines_.count(row) != 0) {
        out += Shortened(CellText(row * columns), terminal_.width, terminal_.utf8);
    } else {
        for (size_t column = 0; column < columns; ++column) {
            AppendCell(out, row * columns + column);
        }
    }
    // A cell's own blanks are escaped where they would be last.
    out.resize(out.find_last_not_of(' ') + 1);
    if (styled) {
        out += "\x1B[0m";
    }
    out += '\n';
}

}  // namespace cli
