// SPDX-License-Identifier: MIT
#include <cstring>
#include <exception>
#include <optional>
#include <string>

#include "platform/linux/files/whole_file.h"
#include "platform/linux/support/fault.h"
#include "platform/linux/units/section_value.h"
#include "vorn/platform/file.h"

namespace {

constexpr char kSource[] = "unit_file";

bool IsGiven(const char* text) {
    return text != nullptr && *text != '\0';
}

/** The value, cut to what fits into a buffer of some size; nothing without file, section or key. */
std::optional<std::string> ReadValue(const char* path, const char* section, const char* key,
                                     std::size_t size) {
    const auto text = vornplatform::ReadWholeFile(path);
    auto value = text ? vornplatform::SectionValue(*text, section, key) : std::nullopt;
    if (value) {
        value->resize(vornplatform::CutUtf8(*value, size - 1).size());
    }
    return value;
}

}  // namespace

int KLIBCFileGetSectionValue(const char* path, const char* section, const char* key, char* buffer,
                             int size) try {
    if (buffer == nullptr || size <= 0) {
        return vornplatform::Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    buffer[0] = '\0';
    if (!IsGiven(path) || !IsGiven(section) || !IsGiven(key)) {
        return vornplatform::Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    const auto value = ReadValue(path, section, key, static_cast<std::size_t>(size));
    if (!value) {
        return vornplatform::Fail(KLIBC_ERR_NOT_FOUND, kSource, __LINE__);
    }
    std::memcpy(buffer, value->c_str(), value->size() + 1);
    return 0;
} catch (const std::exception& exception) {
    return vornplatform::FailCaught(exception, kSource, __LINE__);
}
