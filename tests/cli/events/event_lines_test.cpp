// SPDX-License-Identifier: MIT
#include "cli/events/event_lines.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr std::string_view kHead =
    R"({"schema":2,"node":"nas","machine_id":null,"run":"0f","seq":)";
constexpr cli::Moment kMoment = 1709820309000042;
constexpr std::string_view kAt = R"(,"at":"2024-03-07T14:05:09.000042Z","event":)";

class Lines : public testing::Test {
protected:
    static std::string Line(int number, std::string_view rest) {
        return std::string(kHead) + std::to_string(number) + std::string(kAt) + std::string(rest) +
               '\n';
    }

    std::string out_;
    cli::EventLines lines_{{"nas", "", "0f"}, out_};
};

TEST_F(Lines, AreNumberedWithoutGaps) {
    lines_.Started(kMoment, {{"/volume1", "/volume2"}, {"/volume4"}, {"/volume3"}});
    lines_.Plain("lost", kMoment);
    lines_.Plain("stopped", kMoment);
    EXPECT_EQ(
        out_,
        Line(
            1,
            R"("started","volumes":["/volume1","/volume2"],"looked_at":["/volume4"],"unwatched":["/volume3"]})") +
            Line(2, R"("lost"})") + Line(3, R"("stopped"})"));
}

TEST_F(Lines, TellTheProcessAndTheBytesOfNames) {
    const cli::ProcessAnswer process{{"7", "SMB", "10.0.0.1", "alice"}, 99, "-"};
    lines_.File("opened", kMoment, {"/volume1", "/volume1/\xFF", "\xFF", true, 7, &process});
    EXPECT_EQ(out_,
              Line(1, R"("opened","volume":"/volume1","process_start":99,"initial":false,"file":{)"
                      R"("service":"SMB","pid":7,"user":"alice","host":"10.0.0.1",)"
                      R"("command":"-","full_path":"/volume1/�",)"
                      R"("full_path_b64":"L3ZvbHVtZTEv/w==","filename":"�",)"
                      R"("filename_b64":"/w==","deleted":true}})"));
}

TEST_F(Lines, TellWhatWasOpenBeforeAndWhatALookLacks) {
    cli::ToldFile file{"/volume1", "/volume1/a", "a"};
    file.initial = true;
    lines_.File("opened", kMoment, file);
    lines_.Incomplete(kMoment, {"b", "\xFF"});
    EXPECT_NE(out_.find(R"("process_start":null,"initial":true,"file":)"), std::string::npos);
    EXPECT_EQ(out_.substr(out_.find('\n') + 1), Line(2, R"("incomplete","reasons":["b","�"]})"));
}

TEST_F(Lines, HaveNullForWhatIsNotKnown) {
    const cli::ProcessAnswer local{{"7", "Internal service", "-", "-"}, 99, "sh"};
    lines_.File("closed", kMoment, {"/volume1", {}, "-", false, 7, &local});
    lines_.File("closed", kMoment, {"", {}, "", false, 0, nullptr});
    EXPECT_EQ(
        out_,
        Line(1, R"("closed","volume":"/volume1","process_start":99,"initial":false,"file":{)"
                R"("service":"Internal service","pid":7,"user":null,"host":null,)"
                R"("command":"sh","full_path":null,"filename":"-","deleted":null}})") +
            Line(
                2,
                R"("closed","volume":null,"process_start":null,"initial":false,"file":{"service":null,)"
                R"("pid":null,"user":null,"host":null,"command":null,)"
                R"("full_path":null,"filename":null,"deleted":null}})"));
}

}  // namespace
