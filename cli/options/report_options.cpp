// SPDX-License-Identifier: MIT
#include "cli/options/report_options.h"

#include "cli/options/common_options.h"
#include "cli/options/values.h"

namespace cli {

void AddServicesOptions(Parser& parser, Options& options) {
    AddJson(parser, options);
}

void AddCheckOptions(Parser& parser, Options& options) {
    AddTimeout(parser, options);
    AddJson(parser, options);
}

void AddMetricsOptions(Parser& parser, Options& options) {
    AddBy(parser, options);
    AddWork(parser, options);
    AddTimeout(parser, options);
    AddSum(parser, options.presentation);
    options.question.asked.folder = false;
    parser.AddFlag("--no-user", [&options] { options.question.asked.connection = false; });
    parser.AddValue("--output", "the name of a file",
                    [&options](const auto& text) { options.outputFile = text; });
}

void AddEventsOptions(Parser& parser, Options& options) {
    parser.AddValue("--heartbeat", "a number of seconds", [&options](const auto& text) {
        options.heartbeatSeconds = ParseSeconds("--heartbeat", text);
    });
    parser.AddFlag("--journal", options.journal);
    parser.AddValue("--interval", "a number of seconds or 'never'", [&options](const auto& text) {
        options.intervalSeconds =
            text == "never" ? std::nullopt : std::optional(ParseSeconds("--interval", text));
    });
}

void CompleteMetricsOptions(Options& options) {
    Asked& asked = options.question.asked;
    asked.facts.set(static_cast<size_t>(Column::kSpace));
    // To look at all files takes its time.
    asked.factsOfDeleted = options.presentation.summed.empty();
}

}  // namespace cli
