#ifndef VORN_FILEHANDLE_INTERNAL_H
#define VORN_FILEHANDLE_INTERNAL_H

/**
 * @file
 * What the stages share.
 *
 * Each stage defines kSource, the source name that its log lines and error codes carry. The line
 * numbers beside it are part of the interface as well: they are written out as numbers next to
 * the text they belong to, they are not __LINE__, and they stay when code moves.
 */

#include <memory>
#include <string>
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
    /** Valid while the list lives. */
    const char* Get(int index) const { return KLIBCSzListGet(list_, index); }
    void RemoveAll() { KLIBCSzListRemoveAll(list_); }

private:
    static constexpr int kInitialSize = 512;

    KLIBC_SZLIST* list_;
};

}  // namespace FileHandle
}  // namespace VORN

#endif
