#ifndef VORN_CLI_TEXT_JSON_TEXT_H
#define VORN_CLI_TEXT_JSON_TEXT_H

/**
 * @file
 * JSON, written straight into text: a JSON tree for each of 100,000 records would cost more than
 * finding them. Always valid UTF-8, whatever the bytes.
 */

#include <string>
#include <string_view>

namespace cli {

constexpr int kJsonSchema = 1;

/** Base64 (RFC 4648, padded). */
std::string Base64(std::string_view bytes);

/**
 * Appends a text in quotes: each byte that isn't UTF-8 becomes U+FFFD.
 *
 * @return whether it was UTF-8 throughout
 */
bool AppendJsonText(std::string& out, std::string_view text);

/** Appends "key":"text" and, for a text that isn't UTF-8, a comma and "key_b64":"base64". */
void AppendJsonMember(std::string& out, std::string_view key, std::string_view text);

/**
 * Appends the members that every document begins with, behind its opening brace:
 * "schema", "by", "complete" and, where that is false, "reason"; each followed by a comma.
 */
void AppendJsonPreamble(std::string& out, std::string_view by, std::string_view incompleteReason);

}  // namespace cli

#endif
