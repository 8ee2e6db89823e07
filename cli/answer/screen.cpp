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

/** The status has a line; so have the heading, and what is left over where something is. */
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
                       changes.first ? 0 : changes.fresh.size(), changes.closed.size(), seconds,
                       snapshot.incompleteReason.empty() ? "" : "  incomplete",
                       snapshot.notice.empty() ? "" : "  ", snapshot.notice);
}

/** The records as lines, with a first column for the mark of new ones. */
std::string Lines(Snapshot& snapshot, const Changes& changes, const Question& question,
                  const Presentation& presentation, size_t shown, const Terminal& terminal) {
    const std::vector<Column> columns = ShownColumns(presentation, question.time);
    std::vector<Heading> headings = HeadingsOf(columns);
    headings.insert(headings.begin(), Heading());
    Output lines(Output::kNowhere);
    TableWriter writer(presentation.header, terminal, lines);
    writer.Begin(std::move(headings));
    ForEachShown(snapshot, shown, [&](OpenedFile& file, const Known& known) {
        Row row;
        FillRow(row, file, columns, known);
        const bool isNew = changes.IsNew(file);
        row.cells.insert(row.cells.begin(), isNew ? "+" : "");
        row.style = isNew ? Style::kNew : row.style;
        writer.Record(row);
    });
    writer.End();
    return std::move(lines.Text());
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

void DrawLook(Snapshot& snapshot, const Changes& changes, const Question& question,
              const Presentation& presentation, double seconds, const Terminal& terminal,
              Frame& frame, Output& output) {
    if (!terminal.addressable && !changes.first && !changes.Any()) {
        return;
    }
    const size_t height = terminal.addressable ? terminal.height : Terminal::kUnlimited;
    const Room room = RoomFor(snapshot.files.size(), presentation, height);
    std::string lines =
        Shortened(StatusLine(snapshot, changes, seconds), terminal.width, terminal.utf8);
    lines += '\n';
    lines += Lines(snapshot, changes, question, presentation, room.shown, terminal);
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
