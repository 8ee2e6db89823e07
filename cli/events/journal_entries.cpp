// SPDX-License-Identifier: MIT
#include "cli/events/journal_entries.h"

#include <endian.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "cli/text/escape.h"

namespace cli {
namespace {

/** What all entries have in common: the id of the message, the priority "info". */
constexpr std::string_view kSame =
    "MESSAGE_ID=f1b3b7a0c56d4f0f9a0a7a4c8f2e6d15\n"
    "PRIORITY=6\n"
    "SYSLOG_IDENTIFIER=vorn-openfiles\n"
    "VORN_SCHEMA=2\n";

void AppendField(std::string& out, std::string_view name, std::string_view value) {
    out += name;
    if (value.find('\n') == std::string_view::npos) {
        out += '=';
    } else {
        const std::uint64_t size = htole64(value.size());
        std::array<char, sizeof(size)> bytes{};
        std::memcpy(bytes.data(), &size, sizeof(size));
        out += '\n';
        out.append(bytes.data(), bytes.size());
    }
    out += value;
    out += '\n';
}

void AppendKnown(std::string& out, std::string_view name, std::string_view value) {
    if (!value.empty()) {
        AppendField(out, name, value);
    }
}

/** The library has "-" for what it doesn't know. */
void AppendAnswer(std::string& out, std::string_view name, std::string_view value) {
    AppendKnown(out, name, value == "-" ? "" : value);
}

void AppendNumber(std::string& out, std::string_view name, std::uint64_t number) {
    if (number != 0) {
        AppendField(out, name, std::to_string(number));
    }
}

void AppendList(std::string& out, std::string_view name, const std::vector<std::string>& values) {
    for (const std::string& value : values) {
        AppendField(out, name, value);
    }
}

void AppendFile(std::string& out, const ToldFile& file) {
    const ProcessAnswer& process = file.Process();
    AppendKnown(out, "VORN_VOLUME", file.volume);
    AppendNumber(out, "VORN_PROCESS_START", process.start);
    AppendNumber(out, "VORN_PID", static_cast<std::uint64_t>(file.pid));
    AppendAnswer(out, "VORN_SERVICE", process.texts.service);
    AppendAnswer(out, "VORN_USER", process.texts.user);
    AppendAnswer(out, "VORN_HOST", process.texts.host);
    AppendKnown(out, "VORN_COMMAND", process.command);
    AppendKnown(out, "VORN_PATH", file.path.value_or(""));
    AppendKnown(out, "VORN_FILENAME", file.name);
    if (file.path) {
        AppendField(out, "VORN_DELETED", file.deleted ? "yes" : "no");
    }
    if (file.initial) {
        AppendField(out, "VORN_INITIAL", "yes");
    }
}

/** Such as "opened /volume1/a: alice from 192.0.2.10, SMB, smbd 4711". */
std::string Sentence(std::string_view event, const ToldFile& file) {
    const auto known = [](const std::string& text) { return !text.empty() && text != "-"; };
    const ProcessAnswer& process = file.Process();
    const std::string path = file.path ? *file.path : std::string(file.name);
    std::string text = fmt::format("{} {}:", event, path.empty() ? "a file" : Escaped(path, true));
    const std::string& user = process.texts.user;
    const std::string& host = process.texts.host;
    if (known(user) || known(host)) {
        text += known(user) ? " " + Escaped(user, true) : "";
        text += known(host) ? " from " + Escaped(host, true) : "";
        text += ',';
    }
    if (known(process.texts.service)) {
        text += ' ' + Escaped(process.texts.service, true) + ',';
    }
    text += ' ' + (process.command.empty() ? "process" : Escaped(process.command, true));
    return text + (file.pid != 0 ? fmt::format(" {}", file.pid) : " elsewhere");
}

/** For people; the fields have it all, byte for byte. */
std::string Message(const Event& event) {
    if (event.file != nullptr) {
        return Sentence(event.name, *event.file);
    }
    if (event.coverage != nullptr) {
        const auto named = [](std::string_view how, const std::vector<std::string>& volumes) {
            return volumes.empty() ? "" : fmt::format(" {} {};", how, fmt::join(volumes, ", "));
        };
        std::string text = "started:" + named("watches", event.coverage->watched) +
                           named("looks at", event.coverage->lookedAt) +
                           named("not", event.coverage->unwatched);
        text.pop_back();
        return Escaped(text, true);
    }
    if (event.reasons != nullptr) {
        return Escaped(fmt::format("incomplete: {}", fmt::join(*event.reasons, "; ")), true);
    }
    return std::string(event.name);
}

}  // namespace

JournalEntries::JournalEntries(const Origin& origin, std::string& out, std::function<void()> ended)
    : head_(kSame), out_(out), ended_(std::move(ended)) {
    AppendField(head_, "VORN_NODE", origin.node);
    AppendKnown(head_, "VORN_MACHINE_ID", origin.machine);
    AppendField(head_, "VORN_RUN", origin.run);
}

void JournalEntries::Tell(const Event& event) {
    AppendField(out_, "MESSAGE", Message(event));
    out_ += head_;
    AppendNumber(out_, "VORN_SEQ", event.number);
    AppendField(out_, "VORN_AT", std::to_string(event.at));
    AppendField(out_, "VORN_EVENT", event.name);
    if (event.coverage != nullptr) {
        AppendList(out_, "VORN_VOLUMES", event.coverage->watched);
        AppendList(out_, "VORN_LOOKED_AT", event.coverage->lookedAt);
        AppendList(out_, "VORN_UNWATCHED", event.coverage->unwatched);
    }
    if (event.reasons != nullptr) {
        AppendList(out_, "VORN_REASON", *event.reasons);
    }
    if (event.file != nullptr) {
        AppendFile(out_, *event.file);
    }
    ended_();
}

}  // namespace cli
