// The command line: one argument a line.

#include <string>
#include <vector>

#include "arguments.h"
#include "support/lines.h"
#include "text_input.h"

namespace {

bool IsOneLine(std::string_view text) {
    return text.find_first_of("\n\r\x1b\t") == std::string_view::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text = TextOf(data, size);
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::string_view line = vornplatform::TakeLine(text);
        words.emplace_back(line.substr(0, line.find('\0')));
    }
    try {
        const cli::Options options = cli::ParseArguments(words);
        Must(!options.limit || *options.limit > 0);
        Must(!options.timeoutSeconds || *options.timeoutSeconds > 0);
        for (const cli::Condition& condition : options.selection.conditions)
            Must(!condition.text.empty() && cli::IsMember(condition.column));
    } catch (const cli::UsageError& error) {
        Must(IsOneLine(error.what()));
    }
    return 0;
}
