// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_SCREEN_H
#define VORN_CLI_ANSWER_SCREEN_H

#include <string>

#include "cli/answer/presentation.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/question/changes.h"

namespace cli {

/** What a terminal that can be addressed shows. */
class Frame {
public:
    /** Draws lines over what is there: nothing where they are the same, the first alone if only it
     * has changed. */
    void Draw(const std::string& lines, Output& output);
    /** The terminal may show anything. */
    void Forget() { drawn_.clear(); }

private:
    std::string drawn_;
};

/**
 * Draws a look for people: a line of status, then the records, new ones marked with "+". What
 * doesn't fit is counted in the last line.
 *
 * On a terminal that can be addressed the drawing takes the place of the last one; on a "dumb"
 * one it follows, without any escape sequence, and only when something has changed.
 *
 * @param seconds  between two looks
 */
void DrawLook(const Snapshot& snapshot, const Changes& changes, const Question& question,
              const Presentation& presentation, double seconds, const Terminal& terminal,
              Frame& frame, Output& output);

}  // namespace cli

#endif
