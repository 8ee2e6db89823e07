#include "cli/question/snapshot.h"

#include <fmt/format.h>

#include "cli/failure.h"
#include "cli/host/bare_volume_guard.h"
#include "cli/host/deleted.h"
#include "cli/host/rights.h"
#include "cli/host/volumes.h"
#include "cli/question/enumeration.h"
#include "vorn/platform/error.h"

namespace cli {
namespace {

/** What --time and the time column show where there is no time to be had. */
constexpr const char* kNoTime = "-";

void Enumerate(Snapshot& snapshot, VORN::FileHandle::ENUM_BY by) {
    const BareVolumeGuard guard;
    // The identities are those of the caller: raising them is for set-user-id programs.
    if (EnumerateFiles(snapshot.files, by) < 0) {
        throw Failure(
            fmt::format("can't list the open files (error 0x{:04X}); the system log says why, and "
                        "'vorn-openfiles check' tells what this host lacks",
                        KLIBCErrGet()));
    }
    snapshot.notice = guard.Notice();
}

bool IsSameRecord(OpenedFile& a, OpenedFile& b) {
    return a.getFullPath() == b.getFullPath() && a.getPidStr() == b.getPidStr();
}

/** The library erases what can't be examined any more, deleted files among it; here they stay. */
void AddTimes(std::list<OpenedFile>& files) {
    std::list<OpenedFile> timed = files;
    if (VORN::FileHandle::VORNGetLastAccessTime(timed) < 0) {
        throw Failure(fmt::format("can't tell the access times (error 0x{:04X})", KLIBCErrGet()));
    }
    auto next = timed.begin();
    for (OpenedFile& file : files) {
        if (next != timed.end() && IsSameRecord(file, *next)) {
            file.setTime(next->getTime());
            ++next;
        } else {
            file.setTime(kNoTime);
        }
    }
}

void Order(std::list<OpenedFile>& files, const Question& question) {
    if (question.sort || question.reverse) {
        const Column column = question.sort.value_or(Column::kPath);
        VORN::FileHandle::VORNSortOpenedFile(files, std::string(ColumnName(column)),
                                             !question.reverse);
    }
}

/** Also leaves only the deleted records in the snapshot's set that are still listed. */
void Select(Snapshot& snapshot, const Question& question, const Selection& selection) {
    DeletedFiles deletedFiles;
    for (auto file = snapshot.files.begin(); file != snapshot.files.end();) {
        const bool deleted = deletedFiles.Contains(file->getFullPath(), file->getPidStr());
        if (deleted && question.time) {
            // A time would be that of another file, one that is really named so.
            file->setTime(kNoTime);
        }
        if (!IsSelected(selection, *file, deleted)) {
            file = snapshot.files.erase(file);
            continue;
        }
        if (deleted) {
            snapshot.deleted.insert(&*file);
        }
        ++file;
    }
}

}  // namespace

Snapshot TakeSnapshot(const Question& question, Gate& gate) {
    const Gate::Inside inside(gate);
    const std::vector<std::string> volumes = MountedVolumes();
    if (volumes.empty()) {
        throw Failure(
            "no data volume is mounted: volumes are file systems on /volume1, /volume2 and so on");
    }
    Selection selection = question.selection;
    selection.paths = ResolvedPaths(selection.paths, volumes);
    Snapshot snapshot;
    snapshot.incompleteReason = MissingRights(OwnRights());
    Enumerate(snapshot, question.by);
    if (question.time) {
        AddTimes(snapshot.files);
    }
    Order(snapshot.files, question);
    Select(snapshot, question, selection);
    return snapshot;
}

}  // namespace cli
