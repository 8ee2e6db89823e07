#ifndef VORN_CLI_ANSWER_WATCH_H
#define VORN_CLI_ANSWER_WATCH_H

/**
 * @file
 * What has changed since the last look, as events and as a screen.
 */

#include <map>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "cli/options/options.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/question/snapshot.h"

namespace cli {

/** A record that outlives its snapshot. */
struct Remembered {
    OpenedFile file;
    bool deleted;
};

struct Changes {
    std::vector<Remembered> opened;
    std::vector<Remembered> closed;
    std::unordered_set<const OpenedFile*> fresh; /**< nodes of the snapshot that are opened */
    bool first = false;                          /**< nothing to compare with: all are opened */
};

/** Remembers a look until the next. A record is known by its pid and its full path. */
class Watch {
public:
    Changes Compare(Snapshot& snapshot);

private:
    using Key = std::pair<std::string, std::string>;

    std::map<Key, Remembered> known_;
    bool first_ = true;
};

/**
 * Writes {"event":"opened","at":"2024-03-07T14:05:09Z","initial":false,"file":{...}} and the like,
 * a line an event, each flushed.
 */
void AppendEvents(Output& output, Changes changes, const Options& options);

/** A screen of its own that is redrawn in place; the terminal is as before when it is destroyed. */
class Screen {
public:
    explicit Screen(Output& output);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /** New records are marked with "+", in green where there is colour. */
    void Draw(Snapshot& snapshot, const Changes& changes, const Options& options,
              const Terminal& terminal);

private:
    Output& output_;
};

}  // namespace cli

#endif
