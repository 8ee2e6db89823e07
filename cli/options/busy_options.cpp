// SPDX-License-Identifier: MIT
#include "cli/options/busy_options.h"

#include <limits>

#include "cli/options/common_options.h"
#include "cli/options/values.h"

namespace cli {
namespace {

constexpr const char* kForever = "forever";

}  // namespace

void AddBusyOptions(Parser& parser, Options& options) {
    AddTimeout(parser, options);
    AddSource(parser, options);
    AddJson(parser, options);
    parser.AddFlag("--pids", [&options] { TakeFormat(options, Format::kPids); });
    parser.AddValue("--wait", "a number of seconds", [&options](const auto& text) {
        options.waitSeconds = text == kForever ? std::numeric_limits<double>::infinity()
                                               : ParseSeconds("--wait", text);
    });
    parser.AddFlag("--inside", options.inside);
    parser.AddFlag("-q,--quiet", options.quiet);
}

void GiveWaitItsValue(std::vector<std::string>& arguments) {
    for (std::string& argument : arguments) {
        if (argument == "--") {
            return;
        }
        if (argument == "--wait") {
            argument = std::string("--wait=") + kForever;
        }
    }
}

}  // namespace cli
