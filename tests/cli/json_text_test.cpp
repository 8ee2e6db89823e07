#include "cli/text/json_text.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <memory>

#include "tests/cli/records.h"

namespace {

Json::Value Parse(const std::string& text) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    Json::Value value;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &value, &errors)) << errors;
    return value;
}

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

TEST(JsonFile, HasWhatTheRecordItselfRenders) {
    auto file = Record("/volume1/photo/a.jpg");
    file.setIsHidden();
    file.setTime("2024/03/07 14:05:09");
    Json::Value expected;
    file.toJson(expected);
    file.timeToJson(expected);
    expected["full_path"] = "/volume1/photo/a.jpg";
    expected["folder"] = false;
    expected["deleted"] = true;

    std::string text;
    cli::AppendJsonFile(text, file, true, true);
    EXPECT_EQ(Parse(text), expected);
}

TEST(JsonFile, GivesBytesThatAreNoUtf8AsBase64Beside) {
    auto file = Record("/volume1/\xFF");
    std::string text;
    cli::AppendJsonFile(text, file, false, false);
    const Json::Value value = Parse(text);
    EXPECT_EQ(value["filename"].asString(), "\xEF\xBF\xBD");
    EXPECT_EQ(value["filename_b64"].asString(), "/w==");
    EXPECT_EQ(value["full_path_b64"].asString(), "L3ZvbHVtZTEv/w==");
    EXPECT_FALSE(value.isMember("user_b64"));
    EXPECT_FALSE(value.isMember("time"));
}

TEST(JsonPreamble, SaysWhyItIsIncomplete) {
    std::string complete = "{";
    cli::AppendJsonPreamble(complete, "share", "");
    EXPECT_EQ(complete, R"({"schema":1,"by":"share","complete":true,)");
    std::string incomplete = "{";
    cli::AppendJsonPreamble(incomplete, "volume", "no rights");
    EXPECT_EQ(incomplete, R"({"schema":1,"by":"volume","complete":false,"reason":"no rights",)");
}

}  // namespace
