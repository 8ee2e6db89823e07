// SPDX-License-Identifier: MIT
#ifndef VORN_SRC_FILEHANDLE_INTERNAL_H
#define VORN_SRC_FILEHANDLE_INTERNAL_H

/**
 * @file
 * What the stages share.
 *
 * Each stage defines kSource, the source name that its log lines and error codes carry. The line
 * numbers beside it are part of the interface as well: they are written out as numbers next to
 * the text they belong to, they are not __LINE__, and they stay when code moves.
 */

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "vorn/filehandle.h"
#include "vorn/platform/string_list.h"

namespace VORN {
namespace FileHandle {

/** The texts of a record in place: the getters of the public class return copies. */
struct RecordTexts {
    static const std::string& FullPath(const OpenedFile& file) { return file.fullPath_; }
    static const std::string& Column(const OpenedFile& file, MEMBER member) {
        return file.columns_[member];
    }
};

/** Owner of a platform string list. */
class StringList {
public:
    /** Tests false when memory is short. */
    StringList() : list_(KLIBCSzListAlloc(kInitialSize)) {}
    ~StringList() {
        if (list_ != nullptr) {
            KLIBCSzListFree(list_);
        }
    }
    StringList(const StringList&) = delete;
    StringList& operator=(const StringList&) = delete;

    explicit operator bool() const { return list_ != nullptr; }
    /** For operations that fill the list and may move it. */
    KLIBC_SZLIST** Handle() { return &list_; }
    int Count() const { return list_ != nullptr ? list_->nItem : 0; }
    /** Valid while the list lives; empty where the platform has no text. */
    const char* Get(int index) const {
        const char* text = KLIBCSzListGet(list_, index);
        return text != nullptr ? text : "";
    }
    /** All texts that there are; the bytes stay the list's. */
    std::vector<std::string_view> Views() const {
        std::vector<std::string_view> views;
        views.reserve(static_cast<size_t>(Count()));
        for (int i = 0; i < Count(); ++i) {
            if (const char* text = KLIBCSzListGet(list_, i)) {
                views.emplace_back(text);
            }
        }
        return views;
    }
    void RemoveAll() { KLIBCSzListRemoveAll(list_); }

private:
    static constexpr int kInitialSize = 512;

    KLIBC_SZLIST* list_;
};

/**
 * The last element of a path: "." where it ends in a separator, and roots, "/" and "//name", as
 * they are. The same as path::filename of Boost.Filesystem 3, whose next version answers otherwise
 * and which as a library has another name in each release of a distribution.
 */
std::string_view FileName(std::string_view path);

/** @name Inside filehandle_get_service_name. @{ */

/**
 * Trims a text of the global locale's white space and splits it at each of the separators,
 * keeping empty fields. An empty text leaves the fields as they were.
 *
 * @return false, with the error code 0x2A00, when the split raised a boost::exception
 */
bool SplitString(const std::string& text, std::vector<std::string>& fields,
                 const std::string& separators);

/** The path of a line of `/proc/<pid>/cgroup`, if it is the one of the systemd hierarchy. */
bool ControlGroupLineParse(std::string_view line, std::string& path);

/** The unit that stands first in the systemd path of a whole `/proc/<pid>/cgroup`. */
bool ControlGroupUnitGet(std::string_view text, std::string& unit);

/** Name of a unit's file: the unit itself, with ".service" where it names no unit type. */
std::string UnitFileName(const std::string& unit);

/**
 * A value of a unit's file, empty when it has none. No exception of the standard library leaves
 * it, and none reports the missing file: it is an everyday case, asked for once a record.
 *
 * @return false, with the error code 0x0700, when there is no such file
 */
bool UnitFileValueGet(const std::string& unit, const char* section, const char* key,
                      std::string& value);

/** The text that a reference "bundle:key" names, empty when it is no reference. */
std::string I18nTextGet(const std::string& reference);

/** @} */

/** @name Inside filehandle_get_connnection_info. @{ */

/** A decimal process id; -1, with a log line, for a text that is no int. */
int StringToPid(const std::string& text);

/** @} */

}  // namespace FileHandle
}  // namespace VORN

#endif
