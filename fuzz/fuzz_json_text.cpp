// SPDX-License-Identifier: MIT
// Any bytes as JSON: valid whatever they are, the same bytes where they are UTF-8, and the bytes
// themselves in base64 where they are not. JsonCpp reads it back.

#include <json/json.h>

#include <memory>
#include <string>

#include "cli/text/escape.h"
#include "cli/text/json_text.h"
#include "fuzz/text_input.h"

namespace {

Json::Value Read(const std::string& document) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    std::string errors;
    Must(reader->parse(document.data(), document.data() + document.size(), &value, &errors));
    return value;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const cli::Utf8Character first = cli::DecodeFirst(text);
        if (first.codepoint < 0) {
            return false;
        }
        text.remove_prefix(first.length);
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(TextOf(data, size));
    std::string document = "{";
    cli::AppendJsonMember(document, "key", text);
    document += "}";
    Must(IsUtf8(document) && document.find_first_of("\n\x1b") == std::string::npos);
    const Json::Value value = Read(document);
    Must(value.isMember("key_b64") != IsUtf8(text));
    if (IsUtf8(text)) {
        Must(value["key"].asString() == text);
    } else {
        Must(value["key_b64"].asString() == cli::Base64(text));
    }
    return 0;
}
