// SPDX-License-Identifier: MIT
#include <stdio.h>
#include <string.h>
#include <syslog.h>
#include <unistd.h>

#include "src/filehandle_internal.h"
#include "vorn/platform/error.h"
#include "vorn/platform/file.h"

namespace VORN {
namespace FileHandle {

namespace {

constexpr char kSource[] = "filehandle_get_proc_opened_file";
constexpr size_t kPathSize = 4096;

/** Reads the descriptor links of one process after the other, always into the same buffers. */
class LinkReader {
public:
    /** Goes on to a process and returns its descriptor directory. */
    const char* Enter(const std::string& pid) {
        snprintf(directory_, sizeof(directory_), "/proc/%s/fd/", pid.c_str());
        nameAt_ = strlen(directory_);
        memcpy(link_, directory_, nameAt_);
        return directory_;
    }
    /** False when there is nothing to read, as for a descriptor that was closed meanwhile. */
    bool Read(const char* descriptor) {
        const size_t nameLength = strnlen(descriptor, sizeof(link_) - 1 - nameAt_);
        memcpy(link_ + nameAt_, descriptor, nameLength);
        link_[nameAt_ + nameLength] = '\0';
        // All zero before each read: what the last one left is all that isn't.
        memset(target_, 0, path_.size());
        const ssize_t length = readlink(link_, target_, sizeof(target_) - 1);
        path_.assign(target_, length > 0 ? static_cast<size_t>(length) : 0);
        return !path_.empty();
    }
    const std::string& Target() const { return path_; }

private:
    char directory_[kPathSize];
    size_t nameAt_ = 0;
    char link_[kPathSize];
    char target_[kPathSize] = {};
    std::string path_;
};

/** Appends a record for each descriptor of one process that points into a volume. */
int AppendDescriptors(const StringList& descriptors, const std::string& pid, LinkReader& link,
                      OpenedFile& file, std::list<OpenedFile>& list) {
    for (int i = 0; i < descriptors.Count(); ++i) {
        // Descriptor 0 is passed over: the test takes numbers other than 0 only.
        const char* descriptor = descriptors.Get(i);
        if (!IsNumericalDir(descriptor) || !link.Read(descriptor) ||
            !PathBeginWithVolume(link.Target())) {
            continue;
        }
        if (file.setFullPath(link.Target()) < 0) {
            syslog(LOG_ERR, "%s:%d Failed to set full path of opened file", kSource, 92);
            return -1;
        }
        if (file.setPid(pid) < 0) {
            syslog(LOG_ERR, "%s:%d Faile to set PID of opened file", kSource, 96);
            return -1;
        }
        list.push_back(file);
    }
    return 0;
}

/** Walks the processes, reusing the descriptor list. */
int ScanProcesses(const StringList& processes, StringList& descriptors,
                  std::list<OpenedFile>& list) {
    LinkReader link;
    OpenedFile file;
    for (int i = 0; i < processes.Count(); ++i) {
        const std::string pid = processes.Get(i);
        if (!IsNumericalDir(pid)) {
            continue;
        }
        const char* directory = link.Enter(pid);
        if (KLIBCFileEnumDir(directory, nullptr, descriptors.Handle(), 0) < 0) {
            // Processes end all the time: worth a line for debugging, never a failure.
            syslog(LOG_DEBUG, "%s:%d Fail to enum %s, vornerr=[0x%04X]", kSource, 64, directory,
                   KLIBCErrGet());
            continue;
        }
        if (AppendDescriptors(descriptors, pid, link, file, list) < 0) {
            return -1;
        }
        descriptors.RemoveAll();
    }
    return 0;
}

}  // namespace

int GetProcOpenedFileInVolume(std::list<OpenedFile>& list) {
    StringList descriptors;
    if (!descriptors) {
        syslog(LOG_ERR, "%s:%d Out of Memory", kSource, 30);
        return -1;
    }
    StringList processes;
    if (!processes) {
        syslog(LOG_ERR, "%s:%d Out of Memory", kSource, 39);
        return -1;
    }
    if (KLIBCFileEnumDir("/proc", nullptr, processes.Handle(), KLIBC_ENUM_DIRECTORIES) < 0) {
        syslog(LOG_ERR, "%s:%d Fail to enum /proc, vornerr=[0x%04X]", kSource, 48, KLIBCErrGet());
        return -1;
    }
    return ScanProcesses(processes, descriptors, list);
}

}  // namespace FileHandle
}  // namespace VORN
