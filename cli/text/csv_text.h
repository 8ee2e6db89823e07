#ifndef VORN_CLI_TEXT_CSV_TEXT_H
#define VORN_CLI_TEXT_CSV_TEXT_H

#include <string>
#include <string_view>

namespace cli {

/** Appends a field as RFC 4180 has it, its bytes as they are. */
void AppendCsvField(std::string& out, std::string_view text);

/** What ends a CSV line. */
constexpr std::string_view kCsvEnd = "\r\n";

}  // namespace cli

#endif
