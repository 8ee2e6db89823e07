// SPDX-License-Identifier: MIT
#include "cli/text/json_text.h"

#include <gtest/gtest.h>

namespace {

std::string Quoted(std::string_view text) {
    std::string out;
    cli::AppendJsonText(out, text);
    return out;
}

TEST(JsonText, IsValidWhateverTheBytes) {
    const std::pair<std::string, std::string> kCases[] = {
        {"", R"("")"},
        {"abc", R"("abc")"},
        {"a\"b\\c", R"("a\"b\\c")"},
        {"a\nb\x1B", R"("a\u000ab\u001b")"},
        {"\x7F", R"("\u007f")"},
        {"\xC2\x9B", R"("\u009b")"},
        {"\xE2\x80\xAE", R"("\u202e")"},
        {"\xF3\xA0\x80\x81", R"("\udb40\udc01")"},
        {"caf\xC3\xA9", "\"caf\xC3\xA9\""},
        {"a\xFFz", "\"a\xEF\xBF\xBDz\""},
        {"\xED\xA0\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},
    };
    for (const auto& [bytes, json] : kCases) {
        EXPECT_EQ(Quoted(bytes), json);
    }
}

TEST(Base64, EncodesTheVectorsOfItsDefinition) {
    const std::pair<std::string, std::string> kCases[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {"\xFF\xFE", "//4="},
    };
    for (const auto& [bytes, base64] : kCases) {
        EXPECT_EQ(cli::Base64(bytes), base64);
    }
}

TEST(JsonPreamble, SaysWhyItIsIncomplete) {
    std::string complete = "{";
    cli::AppendJsonPreamble(complete, {}, "share", "");
    EXPECT_EQ(complete, R"({"schema":1,"by":"share","complete":true,)");
    std::string incomplete = "{";
    cli::AppendJsonPreamble(incomplete, {2, "nas", "2024-03-07T14:05:09Z"}, "volume", "no rights");
    EXPECT_EQ(incomplete,
              R"({"schema":2,"machine":"nas","at":"2024-03-07T14:05:09Z","by":"volume",)"
              R"("complete":false,"reason":"no rights",)");
}

}  // namespace
