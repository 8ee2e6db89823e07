// SPDX-License-Identifier: MIT
#include "cli/answer/screen.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>

#include "cli/answer/files.h"
#include "cli/answer/formats/table_writer.h"
#include "cli/text/escape.h"
#include "support/text.h"

namespace cli {
namespace {

/** Records that there is room for, and how many are left over. */
struct Room {
    size_t shown;
    size_t more;
};

/** Lines below the status. Those of headings and sections are no records. */
struct Block {
    std::vector<std::string> lines;
    std::vector<bool> isRecord; /**< one a line */
};

/**
 * Where each record takes a row: the status has one; so have the heading, and what is left over
 * where something is.
 */
Room RoomFor(size_t records, const Presentation& presentation, size_t height) {
    const size_t taken = presentation.header ? 2 : 1;
    const size_t wanted = std::min(records, presentation.limit.value_or(records));
    const size_t lines = height > taken ? height - taken : 0;
    const size_t shown = wanted <= lines ? wanted : std::max<size_t>(lines, 1) - 1;
    return {shown, wanted - shown};
}

std::string StatusLine(const Snapshot& snapshot, const Changes& changes, double seconds) {
    return fmt::format("{:%H:%M:%S}  {} open, {} new, {} closed  (every {} s){}{}{}",
                       fmt::localtime(std::time(nullptr)), snapshot.files.size(),
                       changes.first ? 0 : changes.opened.size(), changes.closed.size(), seconds,
                       snapshot.incompleteReason.empty() ? "" : "  incomplete",
                       snapshot.notice.empty() ? "" : "  ", snapshot.notice);
}

std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        lines.emplace_back(support::TakeLine(text));
    }
    return lines;
}

/** The records as lines, with a first column for the mark of new ones. */
Block BlockOf(const Snapshot& snapshot, const Changes& changes, const Question& question,
              const Presentation& presentation, size_t shown, const Terminal& terminal) {
    const std::vector<Column> columns = ShownColumns(presentation, question.time);
    std::vector<Heading> headings = HeadingsOf(columns);
    headings.insert(headings.begin(), Heading());
    Block block;
    Output lines(Output::kNowhere);
    TableWriter writer(presentation.header, ForTable(terminal, presentation), lines);
    Sections sections(presentation.group, writer);
    writer.Begin(std::move(headings));
    std::for_each_n(snapshot.files.begin(), shown, [&](const FileRecord& file) {
        if (block.isRecord.empty() && presentation.header) {
            block.isRecord.push_back(false);
        }
        if (sections.Enter(file)) {
            block.isRecord.push_back(false);
        }
        block.isRecord.push_back(true);
        Row row;
        FillRow(row, file, columns);
        const bool isNew = changes.IsNew(file);
        row.cells.insert(row.cells.begin(), isNew ? "+" : "");
        row.style = isNew ? Style::kNew : row.style;
        writer.Record(row);
    });
    writer.End();
    block.lines = LinesOf(lines.Text());
    return block;
}

/** Rows of the terminal that a line takes: a wide one goes on in the next. */
size_t RowsOf(std::string_view line, const Terminal& terminal) {
    std::string seen;
    while (!line.empty()) {
        // All that begins so is a style, as texts are escaped.
        const size_t style = std::min(line.find('\x1B'), line.size());
        seen += line.substr(0, style);
        line.remove_prefix(style);
        line.remove_prefix(line.empty() ? 0 : std::min(line.find('m'), line.size() - 1) + 1);
    }
    const size_t width = DisplayWidth(seen);
    return width == 0 ? 1 : (width - 1) / terminal.width + 1;
}

/**
 * Takes away from the end what there is no room for.
 *
 * @param rows       that there are
 * @param leavesOut  some records are left out already, which has a row
 * @return how many records are left out more
 */
size_t Fit(Block& block, size_t rows, bool leavesOut, const Terminal& terminal) {
    size_t taken = 0;
    for (const std::string& line : block.lines) {
        taken += RowsOf(line, terminal);
    }
    size_t left = 0;
    if (taken + (leavesOut ? 1 : 0) > rows) {
        // Nor is a section shown of which nothing is.
        while (!block.lines.empty() && (taken + 1 > rows || !block.isRecord.back())) {
            taken -= RowsOf(block.lines.back(), terminal);
            left += block.isRecord.back() ? 1 : 0;
            block.lines.pop_back();
            block.isRecord.pop_back();
        }
    }
    return left;
}

}  // namespace

void Frame::Draw(const std::string& lines, Output& output) {
    constexpr std::string_view kHome = "\x1B[H";
    constexpr std::string_view kClearLine = "\x1B[K";
    constexpr std::string_view kClearBelow = "\x1B[J";
    std::string_view left = lines;
    std::string_view drawn = drawn_;
    const std::string_view status = support::TakeLine(left);
    const bool statusStays = support::TakeLine(drawn) == status;
    const bool restStays = !drawn_.empty() && drawn == left;
    if (statusStays && restStays) {
        return;
    }
    std::string& text = output.Text();
    text += kHome;
    text += status;
    text += kClearLine;
    while (!restStays && !left.empty()) {
        // No newline at the end, which would scroll.
        text += '\n';
        text += support::TakeLine(left);
        text += kClearLine;
    }
    text += restStays ? "" : kClearBelow;
    drawn_ = lines;
}

void DrawLook(const Snapshot& snapshot, const Changes& changes, const Question& question,
              const Presentation& presentation, double seconds, const Terminal& terminal,
              Frame& frame, Output& output) {
    if (!terminal.addressable && !changes.first && !changes.Any()) {
        return;
    }
    const size_t height = terminal.addressable ? terminal.height : Terminal::kUnlimited;
    Room room = RoomFor(snapshot.files.size(), presentation, height);
    Block block = BlockOf(snapshot, changes, question, presentation, room.shown, terminal);
    if (height != Terminal::kUnlimited) {
        room.more += Fit(block, height - 1, room.more > 0, terminal);
    }
    std::string lines =
        Shortened(StatusLine(snapshot, changes, seconds), terminal.width, terminal.utf8);
    lines += '\n';
    for (const std::string& line : block.lines) {
        lines += line + '\n';
    }
    if (room.more > 0) {
        lines += Shortened(fmt::format("{} more", room.more), terminal.width, terminal.utf8);
        lines += '\n';
    }
    if (terminal.addressable) {
        frame.Draw(lines, output);
        return output.Flush();
    }
    output.Text() += lines;
    output.Flush();
}

}  // namespace cli
