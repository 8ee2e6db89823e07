// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_FORMATS_TABLE_H
#define VORN_CLI_ANSWER_FORMATS_TABLE_H

/**
 * @file
 * Aligned columns, one line a row.
 */

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cli/answer/formats/writer.h"

namespace cli {

/**
 * Collects cells, then prints them two blanks apart, in no more columns than the terminal has.
 *
 * Cells are escaped on their way in and hold no two blanks in a row. A text that doesn't fit loses
 * its middle: long columns first, and down to a column each on a terminal that is too narrow for
 * anything else.
 */
class Table {
public:
    Table(size_t columns, const Terminal& terminal);

    /** Marks a column as one of numbers. */
    void AlignRight(size_t column) { rightAligned_[column] = true; }
    void BeginRow(Style style = Style::kPlain) { styles_.push_back(style); }
    /** Adds a cell to the row; each row needs all of them. */
    void Add(std::string_view text);

    /** A row that is one text, whatever the widths of columns. */
    void AddLine(std::string_view text, Style style);

    size_t Rows() const { return styles_.size(); }
    /** Appends a row, with its newline; blanks that nothing follows are left out. */
    void AppendRow(std::string& out, size_t row) const;
    /** To be called between the last cell and the first AppendRow. */
    void Fit();

private:
    struct Cell {
        size_t end; /**< in text_; it begins where the cell before it ends */
        size_t width;
    };

    std::string_view CellText(size_t index) const;
    void AppendCell(std::string& out, size_t index) const;

    Terminal terminal_;
    std::vector<bool> rightAligned_;
    std::string text_; /**< all cells, one behind the other */
    std::vector<Cell> cells_;
    std::vector<Style> styles_;
    std::vector<size_t> widths_;
    std::set<size_t> lines_; /**< rows whose first cell is all that they have */
};

/** Widths of at most total columns, gaps of two included, that shorten the widest first. */
std::vector<size_t> FittedWidths(std::vector<size_t> widths, size_t total);

}  // namespace cli

#endif
