// SPDX-License-Identifier: MIT
#include "cli/options/common_options.h"

#include "cli/failure.h"
#include "cli/options/values.h"

namespace cli {

void AddCommonOptions(Parser& parser, Options& options) {
    parser.AddFlag("-h,--help", options.help);
    parser.AddFlag("-V,--version", options.version);
}

void AddBy(Parser& parser, Options& options) {
    parser.AddValue("--by", "'share' or 'volume'", [&options](const auto& text) {
        options.question.by = ParseBy(text);
        options.question.byGiven = true;
    });
}

void AddSource(Parser& parser, Options& options) {
    parser.AddValue("--source", "'auto', 'iterator' or 'walk'",
                    [&options](const auto& text) { options.question.source = ParseSource(text); });
}

void AddWork(Parser& parser, Options& options) {
    AddSource(parser, options);
    parser.AddValue("--jobs", "a number",
                    [&options](const auto& text) { options.question.jobs = ParseJobs(text); });
}

void AddTimeout(Parser& parser, Options& options) {
    parser.AddValue("--timeout", "a number of seconds", [&options](const auto& text) {
        options.timeoutSeconds = ParseSeconds("--timeout", text);
    });
}

void AddSum(Parser& parser, Presentation& presentation) {
    parser.AddValue("--sum", "'size', 'space' or both",
                    [&presentation](const auto& text) { presentation.summed = ParseSummed(text); });
}

void AddJson(Parser& parser, Options& options) {
    parser.AddFlag("--json", [&options] { TakeFormat(options, Format::kJson); });
    parser.AddValue("--schema", "1 or 2", [&options](const auto& text) {
        options.presentation.schema = ParseSchema(text);
    });
}

void CheckSchema(const Options& options) {
    const Format format = options.presentation.format;
    if (options.presentation.schema > 1 && format != Format::kJson && format != Format::kJsonl) {
        throw UsageError("--schema 2 is for JSON");
    }
}

void TakeFormat(Options& options, Format format) {
    if (options.formatGiven && format != options.presentation.format) {
        throw UsageError("only one of --format, --json, --print0 and --pids can be given");
    }
    options.formatGiven = true;
    options.presentation.format = format;
}

}  // namespace cli
