#include "cli/answer/watch.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <iterator>

#include "cli/answer/render.h"
#include "cli/answer/table.h"
#include "cli/text/escape.h"
#include "cli/text/json_text.h"

namespace cli {
namespace {

void AppendEvent(Output& output, std::string_view event, Remembered& what, bool initial,
                 const Options& options) {
    std::string& text = output.Text();
    fmt::format_to(std::back_inserter(text),
                   "{{\"event\":\"{}\",\"at\":\"{:%Y-%m-%dT%H:%M:%SZ}\",\"initial\":{},\"file\":",
                   event, fmt::gmtime(std::time(nullptr)), initial);
    AppendJsonFile(text, what.file, what.deleted, options.time);
    text += "}\n";
    output.Flush();
}

}  // namespace

Changes Watch::Compare(Snapshot& snapshot) {
    Changes changes;
    changes.first = first_;
    std::map<Key, Remembered> now;
    for (OpenedFile& file : snapshot.files) {
        Key key(file.getFullPath(), file.getPidStr());
        const Remembered remembered{file, snapshot.IsDeleted(file)};
        if (known_.erase(key) == 0) {
            changes.opened.push_back(remembered);
            changes.fresh.insert(&file);
        }
        now.insert_or_assign(std::move(key), remembered);
    }
    for (auto& [key, remembered] : known_) {
        changes.closed.push_back(std::move(remembered));
    }
    known_ = std::move(now);
    first_ = false;
    return changes;
}

void AppendEvents(Output& output, Changes changes, const Options& options) {
    for (Remembered& closed : changes.closed) {
        AppendEvent(output, "closed", closed, false, options);
    }
    for (Remembered& opened : changes.opened) {
        AppendEvent(output, "opened", opened, changes.first, options);
    }
}

Screen::Screen(Output& output) : output_(output) {
    // The alternate screen, the cursor hidden.
    output_.Text() += "\x1B[?1049h\x1B[?25l";
}

Screen::~Screen() {
    try {
        output_.Text() += "\x1B[?25h\x1B[?1049l";
        output_.Flush();
    } catch (const Failure&) {
        // The terminal has gone; there is nothing to restore.
    }
}

void Screen::Draw(Snapshot& snapshot, const Changes& changes, const Options& options,
                  const Terminal& terminal) {
    constexpr std::string_view kLineEnd = "\x1B[K\n";
    // The last line stays empty, else its end would scroll the first one away.
    const size_t rows = terminal.height > 3 ? terminal.height - 3 : 1;
    const size_t fresh = changes.first ? 0 : changes.fresh.size();
    Options shown = options;
    shown.limit = std::min(rows, options.limit.value_or(rows));
    const Table table = FileTable(snapshot, shown, terminal, [&](const OpenedFile& file) {
        return !changes.first && changes.fresh.count(&file) != 0;
    });
    const std::string status = fmt::format(
        "{:%H:%M:%S}  {} open, {} new, {} closed  (every {} s){}{}",
        fmt::localtime(std::time(nullptr)), snapshot.files.size(), fresh, changes.closed.size(),
        *options.watchSeconds, snapshot.notice.empty() ? "" : "  ", snapshot.notice);
    std::string& text = output_.Text();
    text += "\x1B[H";
    text += Shortened(status, terminal.width, terminal.utf8);
    text += kLineEnd;
    for (size_t row = 0; row < table.Rows(); ++row) {
        table.AppendRow(text, row);
        text.pop_back();
        text += kLineEnd;
    }
    text += "\x1B[J";
    output_.Flush();
}

}  // namespace cli
