// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <json/json.h>

#include <memory>

#include "cli/answer/counts.h"
#include "cli/answer/files.h"
#include "cli/answer/formats/json_writer.h"
#include "cli/answer/screen.h"
#include "tests/cli/records.h"
#include "tests/support/library_record.h"

namespace {

using cli::Format;

/** What a format makes of two records, one of them with bytes that every format has its way with.
 */
std::string Written(cli::Presentation presentation) {
    cli::Snapshot snapshot;
    snapshot.files = {Record("/volume1/a,\"b\"", "alice"), Record("/volume1/\n\xFF", "bob")};
    snapshot.files.back().hidden = true;
    cli::Output output(cli::Output::kNowhere);
    cli::WriteFiles(snapshot, cli::Question(), presentation, cli::Terminal(), output);
    return output.Text();
}

cli::Presentation In(Format format, std::vector<cli::Column> columns = {}) {
    cli::Presentation presentation;
    presentation.format = format;
    presentation.columns = std::move(columns);
    return presentation;
}

TEST(Writer, WritesTheSameWithSeveralThreads) {
    for (const size_t records : {0, 1, 2, 1999, 2001, 2002, 100001}) {
        for (const Format format : {Format::kTable, Format::kJson, Format::kJsonl, Format::kCsv,
                                    Format::kPrint0, Format::kPids}) {
            std::string texts[2];
            for (const size_t jobs : {1, 3}) {
                cli::Snapshot snapshot;
                for (size_t i = 0; i < records; ++i) {
                    snapshot.files.push_back(Record("/volume1/\n" + std::to_string(i)));
                    snapshot.files.back().deleted = i % 7 == 0;
                }
                snapshot.jobs = jobs;
                cli::Output output(cli::Output::kNowhere);
                cli::Presentation presentation = In(format);
                presentation.limit = 60000;
                cli::WriteFiles(snapshot, cli::Question(), presentation, cli::Terminal(), output);
                texts[jobs == 1 ? 0 : 1] = output.Text();
            }
            EXPECT_EQ(texts[0] == texts[1], true) << records << ' ' << static_cast<int>(format);
        }
    }
}

TEST(Frame, IsWrittenAsFarAsItChanges) {
    cli::Frame frame;
    const auto drawn = [&](const std::string& lines) {
        cli::Output output(cli::Output::kNowhere);
        frame.Draw(lines, output);
        return output.Text();
    };
    EXPECT_EQ(drawn("1\na\nb\n"), "\x1B[H1\x1B[K\na\x1B[K\nb\x1B[K\x1B[J");
    EXPECT_EQ(drawn("1\na\nb\n"), "");
    EXPECT_EQ(drawn("2\na\nb\n"), "\x1B[H2\x1B[K");
    EXPECT_EQ(drawn("2\na\n"), "\x1B[H2\x1B[K\na\x1B[K\x1B[J");
    frame.Forget();
    EXPECT_EQ(drawn("2\na\n"), "\x1B[H2\x1B[K\na\x1B[K\x1B[J");
    EXPECT_EQ(drawn("2\n"), "\x1B[H2\x1B[K\x1B[J");
    EXPECT_EQ(drawn("2\n"), "");
}

TEST(Writer, WritesEachFormat) {
    const std::vector<cli::Column> kColumns = {cli::Column::kPid, cli::Column::kHidden,
                                               cli::Column::kPath};
    EXPECT_EQ(Written(In(Format::kTable, kColumns)),
              " PID  HIDDEN  PATH\n"
              "4711  no      /volume1/a,\"b\"\n"
              "4711  yes     /volume1/\\n\\xFF\n");
    EXPECT_EQ(Written(In(Format::kCsv, kColumns)),
              "pid,hidden,path\r\n"
              "4711,no,\"/volume1/a,\"\"b\"\"\"\r\n"
              "4711,yes,\"/volume1/\n\xFF\"\r\n");
    EXPECT_EQ(Written(In(Format::kPids)), "4711\n");
    auto print0 = In(Format::kPrint0);
    print0.print0Column = cli::Column::kUser;
    EXPECT_EQ(Written(print0), std::string("alice\0bob\0", 10));
}

TEST(Writer, WritesJsonWithTypes) {
    const std::string first =
        R"({"service":"SMB","pid":"4711","user":"alice","host":"192.0.2.7",)"
        R"("path":"/volume1/a,\"b\"","filename":"a,\"b\"","full_path":"/volume1/a,\"b\"",)"
        R"("hidden":0,"folder":false,"deleted":false})";
    const std::string jsonl = Written(In(Format::kJsonl));
    EXPECT_EQ(jsonl.substr(0, jsonl.find('\n')), first);
    EXPECT_NE(jsonl.find(R"("hidden":1,)"), std::string::npos);
    const std::string json = Written(In(Format::kJson));
    const std::string begin = R"({"schema":1,"by":"share","complete":true,"files":[)";
    EXPECT_EQ(json.substr(0, begin.size() + 1 + first.size()), begin + "\n" + first);
    EXPECT_EQ(json.substr(json.size() - 5), "}\n]}\n");
}

TEST(Writer, WritesTheTypesOfTheSecondSchema) {
    cli::Snapshot snapshot;
    snapshot.files = {Record("/volume1/a", "-"), Record("/volume1/gone", "bob")};
    cli::Facts facts;
    const cli::Facts unknown;
    snapshot.files.front().facts = &facts;
    snapshot.files.back().facts = &unknown;
    auto process = std::make_shared<cli::HolderFacts>();
    process->started = 1709820309;
    facts.process = process;
    facts.descriptors = {3, 4, 5};
    facts.modes = {"r", "rwa"};
    facts.files = {{true, 4097, 8192, 0, 7, 0}};
    facts.locks = {
        {*cli::ParseKernelLock("1: POSIX  ADVISORY  WRITE 7 08:01:1 5 EOF"), {{8, "-"}}}};
    auto presentation =
        In(Format::kJsonl,
           {cli::Column::kPid, cli::Column::kHidden, cli::Column::kUser, cli::Column::kStarted,
            cli::Column::kFd, cli::Column::kMode, cli::Column::kSize, cli::Column::kLocks});
    presentation.schema = 2;
    cli::Output output(cli::Output::kNowhere);
    cli::WriteFiles(snapshot, cli::Question(), presentation, cli::Terminal(), output);
    EXPECT_EQ(output.Text(),
              R"({"pid":4711,"hidden":false,"user":null,"started":"2024-03-07T14:05:09Z",)"
              R"("fd":[3,4,5],"mode":["r","rwa"],"size":4097,"locks":[{"kind":"POSIX",)"
              R"("access":"write","begin":5,"end":null,"awaited_by":[{"pid":8,"command":null}]}]})"
              "\n"
              R"({"pid":4711,"hidden":false,"user":"bob","started":null,"fd":null,"mode":null,)"
              R"("size":null,"locks":null})"
              "\n");
}

TEST(Writer, BeginsLinesWithAHeaderOnRequest) {
    auto presentation = In(Format::kJsonl);
    presentation.jsonHeader = true;
    const std::string lines = Written(presentation);
    EXPECT_EQ(lines.substr(0, lines.find('\n')),
              R"({"schema":1,"by":"share","complete":true,"list":"files"})");
    presentation.jsonHeader = false;
    EXPECT_EQ(lines.substr(lines.find('\n') + 1), Written(presentation));
}

TEST(Writer, EndsAtTheLimitAndLeavesHeadingsOut) {
    auto presentation = In(Format::kCsv, {cli::Column::kUser});
    presentation.limit = 1;
    presentation.header = false;
    EXPECT_EQ(Written(presentation), "alice\r\n");
    presentation.format = Format::kTable;
    EXPECT_EQ(Written(presentation), "alice\n");
}

TEST(Writer, WritesCountsInEachFormat) {
    cli::Snapshot snapshot;
    snapshot.files = {Record("/volume1/a", "bob"), Record("/volume1/b", "bob"),
                      Record("/volume1/c", "eve")};
    const auto written = [&](Format format) {
        auto presentation = In(format);
        presentation.countBy = {cli::Column::kUser, cli::Column::kHidden};
        cli::Output output(cli::Output::kNowhere);
        cli::WriteCounts(snapshot, cli::Question(), presentation, cli::Terminal(), output);
        return output.Text();
    };
    EXPECT_EQ(written(Format::kTable),
              "FILES  USER  HIDDEN\n"
              "    2  bob   no      ##############################\n"
              "    1  eve   no      ###############\n");
    EXPECT_EQ(written(Format::kCsv), "files,user,hidden\r\n2,bob,no\r\n1,eve,no\r\n");
    EXPECT_EQ(written(Format::kJsonl),
              "{\"user\":\"bob\",\"hidden\":\"no\",\"files\":2}\n"
              "{\"user\":\"eve\",\"hidden\":\"no\",\"files\":1}\n");
    EXPECT_EQ(written(Format::kJson),
              "{\"schema\":1,\"by\":\"share\",\"complete\":true,\"counts\":[\n"
              "{\"user\":\"bob\",\"hidden\":\"no\",\"files\":2},\n"
              "{\"user\":\"eve\",\"hidden\":\"no\",\"files\":1}\n]}\n");
}

Json::Value Parse(const std::string& text) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    Json::Value value;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &value, &errors)) << errors;
    return value;
}

/** A record as the JSON formats write it. */
std::string Object(cli::FileRecord file, bool deleted, bool withTime) {
    const std::vector<cli::Column> columns = cli::AllColumns(withTime);
    cli::Row row;
    file.deleted = deleted;
    cli::FillRow(row, file, columns);
    std::string text;
    cli::AppendJsonObject(text, cli::HeadingsOf(columns), row);
    return text;
}

TEST(JsonFile, HasWhatTheRecordItselfRenders) {
    auto file = Record("/volume1/photo/a.jpg");
    file.hidden = true;
    file.time = "2024/03/07 14:05:09";
    Json::Value expected;
    OfLibrary(file).toJson(expected);
    OfLibrary(file).timeToJson(expected);
    expected["full_path"] = "/volume1/photo/a.jpg";
    expected["folder"] = false;
    expected["deleted"] = true;

    EXPECT_EQ(Parse(Object(file, true, true)), expected);
}

TEST(JsonFile, GivesBytesThatAreNoUtf8AsBase64Beside) {
    const Json::Value value = Parse(Object(Record("/volume1/\xFF"), false, false));
    EXPECT_EQ(value["filename"].asString(), "\xEF\xBF\xBD");
    EXPECT_EQ(value["filename_b64"].asString(), "/w==");
    EXPECT_EQ(value["full_path_b64"].asString(), "L3ZvbHVtZTEv/w==");
    EXPECT_FALSE(value.isMember("user_b64"));
    EXPECT_FALSE(value.isMember("time"));
}

}  // namespace
