// SPDX-License-Identifier: MIT
// The command line: one argument a line; its PATHs are looked for on a volume.

#include <string>
#include <vector>

#include "cli/failure.h"
#include "cli/host/volumes.h"
#include "cli/options/arguments.h"
#include "cli/question/selection.h"
#include "fuzz/text_input.h"
#include "support/text.h"

namespace {

bool IsOneLine(std::string_view text) {
    return text.find_first_of("\n\r\x1b\t") == std::string_view::npos;
}

/** Each PATH is at or below the volume, or there is one line that says why not. */
void ResolvePaths(const cli::Options& options) {
    const std::vector<std::string> volumes = {"/volume1"};
    try {
        const std::vector<std::string> paths =
            cli::ResolvedPaths(options.question.selection.paths, volumes);
        Must(paths.size() == options.question.selection.paths.size());
        for (const std::string& path : paths) {
            Must(support::IsAtOrBelow(path, volumes.front()));
        }
    } catch (const cli::Failure& failure) {
        Must(IsOneLine(failure.what()));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text = TextOf(data, size);
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::string_view line = support::TakeLine(text);
        words.emplace_back(line.substr(0, line.find('\0')));
    }
    try {
        const cli::Options options = cli::ParseArguments(words);
        Must(!options.presentation.limit || *options.presentation.limit > 0);
        Must(!options.timeoutSeconds || *options.timeoutSeconds > 0);
        for (const cli::Condition& condition : options.question.selection.conditions) {
            Must(!condition.text.empty() && condition.column <= cli::Column::kTime);
        }
        ResolvePaths(options);
    } catch (const cli::UsageError& error) {
        Must(IsOneLine(error.what()));
    }
    return 0;
}
