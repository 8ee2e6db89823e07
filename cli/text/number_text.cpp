// SPDX-License-Identifier: MIT
#include "cli/text/number_text.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace cli {
namespace {

/** Finds no parts of a moment whose year is beyond all numbers. */
using Convert = std::tm* (*)(const std::time_t*, std::tm*);

std::string TimeText(const char* form, Convert convert, std::time_t moment) {
    std::tm parts{};
    return convert(&moment, &parts) == nullptr ? "-" : fmt::format(fmt::runtime(form), parts);
}

}  // namespace

std::string NumberRanges(std::vector<int> numbers) {
    std::sort(numbers.begin(), numbers.end());
    std::string text;
    for (size_t first = 0; first < numbers.size();) {
        size_t last = first;
        while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) {
            ++last;
        }
        text += text.empty() ? "" : ",";
        text += last == first       ? fmt::format("{}", numbers[first])
                : last == first + 1 ? fmt::format("{},{}", numbers[first], numbers[last])
                                    : fmt::format("{}-{}", numbers[first], numbers[last]);
        first = last + 1;
    }
    return text;
}

std::string ShortSize(std::uint64_t bytes) {
    constexpr std::string_view kUnits = "KMGTPE";
    if (bytes < 1000) {
        return std::to_string(bytes);
    }
    // Tenths of the unit, rounded up: what is there is never shown as less.
    const auto tenths = [&](unsigned shift) {
        const std::uint64_t whole = bytes >> shift;
        const std::uint64_t rest = bytes & ((std::uint64_t{1} << shift) - 1);
        const double part =
            static_cast<double>(rest) / static_cast<double>(std::uint64_t{1} << shift);
        const auto of = static_cast<std::uint64_t>(part * 10);
        return whole * 10 + of + (static_cast<double>(of) < part * 10 ? 1 : 0);
    };
    size_t unit = 0;
    std::uint64_t shown = tenths(10);
    while (shown > 9990 && unit + 1 < kUnits.size()) {
        ++unit;
        shown = tenths(10 * (static_cast<unsigned>(unit) + 1));
    }
    return shown < 100 ? fmt::format("{}.{}{}", shown / 10, shown % 10, kUnits[unit])
                       : fmt::format("{}{}", (shown + 9) / 10, kUnits[unit]);
}

std::string LocalTime(std::time_t moment) {
    return TimeText("{:%Y/%m/%d %H:%M:%S}", localtime_r, moment);
}

std::string UtcTime(std::time_t moment) {
    return TimeText("{:%Y-%m-%dT%H:%M:%SZ}", gmtime_r, moment);
}

}  // namespace cli
