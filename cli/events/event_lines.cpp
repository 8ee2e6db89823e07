// SPDX-License-Identifier: MIT
#include "cli/events/event_lines.h"

#include <fmt/format.h>
#include <sys/random.h>
#include <sys/utsname.h>

#include <array>
#include <chrono>
#include <cstdio>

#include "cli/failure.h"
#include "cli/text/json_text.h"
#include "cli/text/number_text.h"
#include "support/read_file.h"
#include "support/text.h"

namespace cli {
namespace {

constexpr Moment kSecond = 1000000;

std::string RandomId() {
    std::array<unsigned char, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw Failure("the kernel gives no random numbers");
    }
    std::string id;
    for (const unsigned char byte : bytes) {
        id += fmt::format("{:02x}", byte);
    }
    return id;
}

/** A text, or null for an empty one. */
void AppendKnown(std::string& out, std::string_view key, std::string_view text) {
    AppendJsonOptional(out, key, text.empty() ? "-" : text);
}

/** The same of a name, which may well be "-". */
void AppendName(std::string& out, std::string_view key, std::string_view name) {
    if (name.empty()) {
        return AppendJsonOptional(out, key, "-");
    }
    AppendJsonMember(out, key, name);
}

void AppendList(std::string& out, std::string_view key, const std::vector<std::string>& texts) {
    out += fmt::format(",\"{}\":[", key);
    const char* separator = "";
    for (const std::string& text : texts) {
        out += separator;
        AppendJsonText(out, text);
        separator = ",";
    }
    out += ']';
}

std::string NumberOrNull(std::uint64_t number) {
    return number == 0 ? "null" : std::to_string(number);
}

void AppendFile(std::string& out, const ToldFile& file) {
    static const ProcessAnswer kUnknown;
    const ProcessAnswer& process = file.process != nullptr ? *file.process : kUnknown;
    out += '{';
    AppendKnown(out, "service", process.texts.service);
    out += fmt::format(",\"pid\":{},", NumberOrNull(static_cast<std::uint64_t>(file.pid)));
    AppendKnown(out, "user", process.texts.user);
    out += ',';
    AppendKnown(out, "host", process.texts.host);
    out += ',';
    AppendName(out, "command", process.command);
    out += ',';
    AppendName(out, "full_path", file.path.value_or(""));
    out += ',';
    AppendName(out, "filename", file.name);
    out += fmt::format(",\"deleted\":{}}}", !file.path ? "null" : file.deleted ? "true" : "false");
}

}  // namespace

Moment MomentNow() {
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(since).count();
}

Origin NewOrigin() {
    struct utsname names {};
    uname(&names);
    const std::string machine = support::ReadFile("/etc/machine-id");
    return {names.nodename, std::string(support::Trim(machine)), RandomId()};
}

EventLines::EventLines(const Origin& origin, std::string& out)
    : head_("{\"schema\":2,"), out_(out) {
    AppendJsonMember(head_, "node", origin.node);
    head_ += ',';
    AppendKnown(head_, "machine_id", origin.machine);
    head_ += fmt::format(",\"run\":\"{}\",\"seq\":", origin.run);
}

void EventLines::Begin(std::string_view event, Moment at) {
    // Many events have the second in common.
    if (second_ != at / kSecond) {
        second_ = at / kSecond;
        secondText_ = UtcTime(second_);
        secondText_.pop_back();
    }
    out_ += head_;
    out_ += fmt::format("{},\"at\":\"{}.{:06}Z\",\"event\":\"{}\"", ++number_, secondText_,
                        at % kSecond, event);
}

void EventLines::Started(Moment at, const std::vector<std::string>& volumes,
                         const std::vector<std::string>& unwatched) {
    Begin("started", at);
    AppendList(out_, "volumes", volumes);
    AppendList(out_, "unwatched", unwatched);
    out_ += "}\n";
}

void EventLines::File(std::string_view event, Moment at, const ToldFile& file) {
    Begin(event, at);
    out_ += ',';
    AppendKnown(out_, "volume", file.volume);
    out_ += fmt::format(",\"process_start\":{},\"file\":",
                        NumberOrNull(file.process != nullptr ? file.process->start : 0));
    AppendFile(out_, file);
    out_ += "}\n";
}

void EventLines::Plain(std::string_view event, Moment at) {
    Begin(event, at);
    out_ += "}\n";
}

}  // namespace cli
