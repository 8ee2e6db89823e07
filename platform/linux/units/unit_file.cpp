#include <new>
#include <string>

#include "platform/linux/files/whole_file.h"
#include "platform/linux/support/fault.h"
#include "platform/linux/units/section_value.h"
#include "vorn/platform/file.h"

namespace {

bool IsGiven(const char* text) {
    return text != nullptr && *text != '\0';
}

// Returns an error code of the platform, 0 when the value is in the buffer.
int CopyValue(const char* path, const char* section, const char* key, char* buffer,
              std::size_t size) {
    std::string text;
    if (const int error = vornplatform::ReadTextFile(path, text)) {
        return error;
    }
    const auto value = vornplatform::SectionValue(text, section, key);
    if (!value) {
        return KLIBC_ERR_NOT_FOUND;
    }
    const std::string_view part = vornplatform::CutUtf8(*value, size - 1);
    buffer[part.copy(buffer, size - 1)] = '\0';
    return 0;
}

int GetSectionValue(const char* path, const char* section, const char* key, char* buffer,
                    int size) {
    if (buffer == nullptr || size <= 0) {
        return KLIBC_ERR_BAD_PARAM;
    }
    buffer[0] = '\0';
    if (!IsGiven(path) || !IsGiven(section) || !IsGiven(key)) {
        return KLIBC_ERR_BAD_PARAM;
    }
    try {
        return CopyValue(path, section, key, buffer, static_cast<std::size_t>(size));
    } catch (const std::bad_alloc&) {
        return KLIBC_ERR_RESOURCE;
    }
}

}  // namespace

int KLIBCFileGetSectionValue(const char* path, const char* section, const char* key, char* buffer,
                             int size) {
    const int error = GetSectionValue(path, section, key, buffer, size);
    return error == 0 ? 0 : vornplatform::Fail(error, "unit_file", __LINE__);
}
