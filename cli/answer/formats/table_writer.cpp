// SPDX-License-Identifier: MIT
#include "cli/answer/formats/table_writer.h"

#include <algorithm>

#include "cli/text/number_text.h"
#include "support/numbers.h"

namespace cli {
namespace {

/** Letters of ASCII alone: names are the command's own. */
std::string UpperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return text;
}

std::string SizeText(const std::string& cell) {
    const auto bytes = support::ParseNumber<std::uint64_t>(cell);
    return bytes ? ShortSize(*bytes) : cell;
}

}  // namespace

Terminal ForTable(Terminal terminal, const Presentation& presentation) {
    terminal.width = presentation.wide ? Terminal::kUnlimited : terminal.width;
    return terminal;
}

void TableWriter::Begin(std::vector<Heading> headings) {
    headings_ = std::move(headings);
    table_.emplace(headings_.size(), terminal_);
    for (size_t i = 0; i < headings_.size(); ++i) {
        if (headings_[i].alignedRight) {
            table_->AlignRight(i);
        }
    }
}

void TableWriter::AddHeading() {
    table_->BeginRow(Style::kHeading);
    for (const Heading& heading : headings_) {
        table_->Add(UpperCase(heading.name));
    }
}

void TableWriter::Record(const Row& row) {
    if (header_ && table_->Rows() == 0) {
        AddHeading();
    }
    table_->BeginRow(row.style);
    for (size_t i = 0; i < row.cells.size(); ++i) {
        if (headings_[i].kind == Kind::kSize) {
            table_->Add(SizeText(row.cells[i]));
        } else {
            table_->Add(row.cells[i]);
        }
    }
}

void TableWriter::Section(const std::string& title) {
    if (header_ && table_->Rows() == 0) {
        AddHeading();
    }
    table_->AddLine(title, Style::kHeading);
}

void TableWriter::End() {
    table_->Fit();
    for (size_t row = 0; row < table_->Rows() && !output_.IsClosed(); ++row) {
        table_->AppendRow(output_.Text(), row);
        output_.EndRecord();
    }
}

}  // namespace cli
