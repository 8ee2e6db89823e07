#include "cli/options/common_options.h"

#include "cli/failure.h"
#include "cli/options/values.h"

namespace cli {

void AddCommonOptions(Parser& parser, Options& options) {
    parser.AddFlag("-h,--help", options.help);
    parser.AddFlag("-V,--version", options.version);
}

void AddBy(Parser& parser, Options& options) {
    parser.AddValue("--by", "'share' or 'volume'",
                    [&options](const auto& text) { options.question.by = ParseBy(text); });
}

void AddTimeout(Parser& parser, Options& options) {
    parser.AddValue("--timeout", "a number of seconds", [&options](const auto& text) {
        options.timeoutSeconds = ParseSeconds("--timeout", text);
    });
}

void AddJson(Parser& parser, Options& options) {
    parser.AddFlag("--json", [&options] { TakeFormat(options, Format::kJson); });
}

void TakeFormat(Options& options, Format format) {
    if (options.formatGiven && format != options.presentation.format) {
        throw UsageError("only one of --format, --json, --print0 and --pids can be given");
    }
    options.formatGiven = true;
    options.presentation.format = format;
}

}  // namespace cli
