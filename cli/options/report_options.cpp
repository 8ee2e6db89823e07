#include "cli/options/report_options.h"

#include "cli/options/common_options.h"

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
    AddTimeout(parser, options);
    parser.AddValue("--output", "the name of a file",
                    [&options](const auto& text) { options.outputFile = text; });
}

}  // namespace cli
