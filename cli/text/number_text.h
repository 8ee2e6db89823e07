// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_TEXT_NUMBER_TEXT_H
#define VORN_CLI_TEXT_NUMBER_TEXT_H

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace cli {

/** Numbers in ascending order, those behind one another as a range: "3,5-9". */
std::string NumberRanges(std::vector<int> numbers);

/** Bytes in three digits at most before the unit, 1024 of each in the next: "999", "1.5K", "12G".
 */
std::string ShortSize(std::uint64_t bytes);

/** Local time, as the column of access times has it: "2024/03/07 14:05:09". */
std::string LocalTime(std::time_t moment);

/** "2024-03-07T14:05:09Z" */
std::string UtcTime(std::time_t moment);

}  // namespace cli

#endif
