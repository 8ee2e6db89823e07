// SPDX-License-Identifier: MIT
#include "cli/text/json_text.h"

#include <fmt/format.h>
#include <sys/utsname.h>

#include <array>
#include <ctime>

#include "cli/text/escape.h"
#include "cli/text/number_text.h"

namespace cli {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/** Bytes that stand for themselves: most texts have no others. */
constexpr std::array<bool, 256> PlainBytes() {
    std::array<bool, 256> plain{};
    for (size_t byte = ' '; byte < 0x7F; ++byte) {
        plain[byte] = byte != '"' && byte != '\\';
    }
    return plain;
}

bool IsPlain(char byte) {
    static constexpr std::array<bool, 256> kPlain = PlainBytes();
    return kPlain[static_cast<unsigned char>(byte)];
}

void AppendCodeUnit(std::string& out, int32_t unit) {
    out += fmt::format("\\u{:04x}", unit);
}

void AppendCharacter(std::string& out, int32_t codepoint, std::string_view bytes) {
    if (codepoint == '"' || codepoint == '\\') {
        out += '\\';
        out += bytes;
    } else if (!IsTreacherous(codepoint)) {
        out += bytes;
    } else if (codepoint < 0x10000) {
        AppendCodeUnit(out, codepoint);
    } else {
        AppendCodeUnit(out, 0xD800 + ((codepoint - 0x10000) >> 10));
        AppendCodeUnit(out, 0xDC00 + ((codepoint - 0x10000) & 0x3FF));
    }
}

}  // namespace

std::string Base64(std::string_view bytes) {
    constexpr std::string_view kAlphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view group = bytes.substr(at, 3);
        uint32_t bits = 0;
        for (size_t i = 0; i < 3; ++i) {
            bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0);
        }
        for (size_t i = 0; i < 4; ++i) {
            out += i <= group.size() ? kAlphabet[bits >> (18 - 6 * i) & 0x3F] : '=';
        }
    }
    return out;
}

bool AppendJsonText(std::string& out, std::string_view text) {
    bool valid = true;
    out += '"';
    for (size_t at = 0; at < text.size();) {
        size_t end = at;
        while (end < text.size() && IsPlain(text[end])) {
            ++end;
        }
        out.append(text, at, end - at);
        at = end;
        if (at == text.size()) {
            break;
        }
        const Utf8Character next = DecodeFirst(text.substr(at));
        if (next.codepoint < 0) {
            out += kReplacement;
            valid = false;
        } else {
            AppendCharacter(out, next.codepoint, text.substr(at, next.length));
        }
        at += next.length;
    }
    out += '"';
    return valid;
}

void AppendJsonMember(std::string& out, std::string_view key, std::string_view text) {
    out += '"';
    out += key;
    out += "\":";
    if (!AppendJsonText(out, text)) {
        out += ",\"";
        out += key;
        out += "_b64\":\"";
        out += Base64(text);
        out += '"';
    }
}

void AppendJsonOptional(std::string& out, std::string_view key, std::string_view text) {
    if (text != "-") {
        return AppendJsonMember(out, key, text);
    }
    out += fmt::format("\"{}\":null", key);
}

JsonHead HeadOf(int schema) {
    JsonHead head;
    head.schema = schema;
    if (schema > 1) {
        struct utsname names {};
        uname(&names);
        head.machine = names.nodename;
        head.at = UtcTime(std::time(nullptr));
    }
    return head;
}

void AppendJsonHead(std::string& out, const JsonHead& head) {
    out += fmt::format("\"schema\":{},", head.schema);
    if (head.schema > 1) {
        AppendJsonMember(out, "machine", head.machine);
        out += fmt::format(",\"at\":\"{}\",", head.at);
    }
}

void AppendJsonPreamble(std::string& out, const JsonHead& head, std::string_view by,
                        std::string_view incompleteReason) {
    AppendJsonHead(out, head);
    out += fmt::format("\"by\":\"{}\",\"complete\":{},", by, incompleteReason.empty());
    if (!incompleteReason.empty()) {
        AppendJsonMember(out, "reason", incompleteReason);
        out += ',';
    }
}

}  // namespace cli
