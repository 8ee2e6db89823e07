// SPDX-License-Identifier: MIT
#include "cli/events/event_lines.h"

#include <fmt/format.h>

#include "cli/text/json_text.h"
#include "cli/text/number_text.h"

namespace cli {
namespace {

constexpr Moment kSecond = 1000000;

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
    const ProcessAnswer& process = file.Process();
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

EventLines::EventLines(const Origin& origin, std::string& out, int schema)
    : head_(fmt::format("{{\"schema\":{},", schema)), out_(out) {
    AppendJsonMember(head_, "node", origin.node);
    head_ += ',';
    AppendKnown(head_, "machine_id", origin.machine);
    head_ += fmt::format(",\"run\":\"{}\",\"seq\":", origin.run);
}

void EventLines::Begin(const Event& event) {
    // Many events have the second in common.
    if (second_ != event.at / kSecond) {
        second_ = event.at / kSecond;
        secondText_ = UtcTime(second_);
        secondText_.pop_back();
    }
    out_ += head_;
    out_ += fmt::format("{},\"at\":\"{}.{:06}Z\",\"event\":\"{}\"", event.number, secondText_,
                        event.at % kSecond, event.name);
}

/** Up to the file itself. */
void EventLines::BeginFile(std::string_view volume, std::uint64_t start, bool initial) {
    out_ += ',';
    AppendKnown(out_, "volume", volume);
    out_ +=
        fmt::format(",\"process_start\":{},\"initial\":{},\"file\":", NumberOrNull(start), initial);
}

void EventLines::BeginListed(std::string_view event, Moment at, const Listed& file) {
    Begin(Next(event, at));
    BeginFile(file.volume, file.start, file.initial);
}

void EventLines::Tell(const Event& event) {
    Begin(event);
    if (event.coverage != nullptr) {
        AppendList(out_, "volumes", event.coverage->watched);
        AppendList(out_, "looked_at", event.coverage->lookedAt);
        AppendList(out_, "unwatched", event.coverage->unwatched);
    }
    if (event.reasons != nullptr) {
        AppendList(out_, "reasons", *event.reasons);
    }
    if (event.file != nullptr) {
        BeginFile(event.file->volume, event.file->Process().start, event.file->initial);
        AppendFile(out_, *event.file);
    }
    out_ += "}\n";
}

}  // namespace cli
