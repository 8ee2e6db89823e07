// SPDX-License-Identifier: MIT
#include "cli/options/measures.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <string_view>

#include "support/numbers.h"
#include "support/text.h"

namespace cli {
namespace {

/** A number from 0 up that a text begins with, digits alone but for a point. */
std::optional<double> TakeAmount(std::string_view& text) {
    if (text.empty() || text[0] < '0' || text[0] > '9') {
        return std::nullopt;
    }
    return support::TakeNumber<double>(text);
}

std::optional<std::int64_t> Whole(double number) {
    constexpr double kBeyond = 9.2e18;
    return number < kBeyond ? std::optional(static_cast<std::int64_t>(std::llround(number)))
                            : std::nullopt;
}

void ConsumeEither(std::string_view& text, std::string_view upper, std::string_view lower) {
    if (!support::ConsumePrefix(text, upper)) {
        support::ConsumePrefix(text, lower);
    }
}

}  // namespace

std::optional<std::int64_t> ParseSize(const std::string& text) {
    if (const auto bytes = support::ParseNumber<std::int64_t>(text)) {
        return *bytes >= 0 ? bytes : std::nullopt;
    }
    std::string_view rest = text;
    const auto amount = TakeAmount(rest);
    constexpr std::string_view kUnits = "KMGTPEkmgtpe";
    constexpr size_t kPowers = kUnits.size() / 2;
    const size_t unit = rest.empty() ? std::string_view::npos : kUnits.find(rest[0]);
    if (unit != std::string_view::npos) {
        rest.remove_prefix(1);
        ConsumeEither(rest, "I", "i");
    }
    ConsumeEither(rest, "B", "b");
    if (!amount || !rest.empty()) {
        return std::nullopt;
    }
    return Whole(*amount * (unit == std::string_view::npos
                                ? 1
                                : std::exp2(10 * (static_cast<double>(unit % kPowers) + 1))));
}

std::optional<std::int64_t> ParseDuration(const std::string& text) {
    std::string_view rest = text;
    const auto amount = TakeAmount(rest);
    const std::pair<std::string_view, int> kUnits[] = {{"", 1},     {"s", 1},     {"m", 60},
                                                       {"h", 3600}, {"d", 86400}, {"w", 7 * 86400}};
    for (const auto& [name, seconds] : kUnits) {
        if (amount && rest == name) {
            return Whole(*amount * seconds);
        }
    }
    return std::nullopt;
}

std::optional<std::int64_t> ParseMoment(std::string text) {
    std::replace(text.begin(), text.end(), '/', '-');
    for (const char* form :
         {"%Y-%m-%d", "%Y-%m-%d %H:%M", "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S"}) {
        std::tm parts{};
        const char* const end = strptime(text.c_str(), form, &parts);
        if (end != nullptr && *end == '\0') {
            parts.tm_isdst = -1;
            return std::mktime(&parts);
        }
    }
    return std::nullopt;
}

}  // namespace cli
