// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_OPTIONS_MEASURES_H
#define VORN_CLI_OPTIONS_MEASURES_H

/**
 * @file
 * Sizes, durations and moments as people write them.
 */

#include <cstdint>
#include <optional>
#include <string>

namespace cli {

/** Bytes: "4096", "1.5G"; units of 1024 up to E, also as "GB" or "GiB", in any case. */
std::optional<std::int64_t> ParseSize(const std::string& text);

/** Seconds: "90", "90s", "1.5h"; s, m, h, d and w. */
std::optional<std::int64_t> ParseDuration(const std::string& text);

/** Seconds since 1970 of a local time such as "2024/03/07 14:05:09", or "2024-03-07". */
std::optional<std::int64_t> ParseMoment(std::string text);

}  // namespace cli

#endif
