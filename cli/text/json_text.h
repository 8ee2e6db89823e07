// SPDX-License-Identifier: MIT
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

/** What a document begins with. */
struct JsonHead {
    int schema = 1;
    std::string machine; /**< told by schema 2 */
    std::string at;      /**< told by schema 2: when the document was made */
};

/** Of this machine, now. */
JsonHead HeadOf(int schema);

/** Appends "schema" and, of schema 2, "machine" and "at"; each followed by a comma. */
void AppendJsonHead(std::string& out, const JsonHead& head);

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

/** The same, but null for "-", which is nobody's name. */
void AppendJsonOptional(std::string& out, std::string_view key, std::string_view text);

/**
 * Appends the members that every list begins with, behind its opening brace: those of the head,
 * "by", "complete" and, where that is false, "reason"; each followed by a comma.
 */
void AppendJsonPreamble(std::string& out, const JsonHead& head, std::string_view by,
                        std::string_view incompleteReason);

}  // namespace cli

#endif
