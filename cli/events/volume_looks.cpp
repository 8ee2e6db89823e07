// SPDX-License-Identifier: MIT
#include "cli/events/volume_looks.h"

#include <unistd.h>

#include <algorithm>
#include <set>

#include "cli/failure.h"
#include "cli/host/deleted.h"
#include "cli/host/volumes.h"
#include "support/numbers.h"
#include "support/text.h"

namespace cli {
namespace {

/** Every file that is open on a volume, by its own path; of folders nothing is told. */
Question EverythingOpen() {
    Question question;
    question.by = VORN::FileHandle::ENUM_BY_VOLUME;
    question.byGiven = true;
    question.selection.folders = Flagged::kNo;
    question.asked.facts.set(static_cast<size_t>(Column::kCommand));
    question.asked.facts.set(static_cast<size_t>(Column::kStarted));
    return question;
}

bool IsAtOrBelowOne(std::string_view path, const std::vector<std::string>& places) {
    return std::any_of(places.begin(), places.end(),
                       [&](const std::string& place) { return support::IsAtOrBelow(path, place); });
}

}  // namespace

VolumeLooks::VolumeLooks(std::vector<std::string> paths, const Coverage& coverage,
                         EventTeller& teller, Flush flush)
    : paths_(std::move(paths)), coverage_(coverage), teller_(teller), flush_(std::move(flush)) {}

bool VolumeLooks::Look() {
    Gate gate;
    try {
        Snapshot look = TakeSnapshot(EverythingOpen(), gate);
        at_ = MomentNow();
        KeepWanted(look);
        std::vector<std::string> lacks = look.incompleteReasons;
        if (!TellAll(std::move(look))) {
            return false;
        }
        TellLacks(std::move(lacks));
    } catch (const Failure& failure) {
        // No answer ends no file.
        at_ = MomentNow();
        TellLacks({failure.what()});
    }
    return true;
}

bool VolumeLooks::TellAll(Snapshot look) {
    if (!toldFirst_ && !TellWatched(look)) {
        return false;
    }
    toldFirst_ = true;
    files_.Take(std::move(look));
    return TellChanges();
}

/** A deleted file is the one that it was: its path is that without the kernel's remark. */
void VolumeLooks::KeepWanted(Snapshot& look) const {
    const std::string own = std::to_string(getpid());
    std::set<std::pair<std::string_view, std::string_view>> known;
    const auto isUnwanted = [&](FileRecord& file) {
        if (file.deleted) {
            file.fullPath = WithoutDeletedMark(file.fullPath);
        }
        return file.process->pid == own || !IsAtOrBelowOne(file.fullPath, paths_) ||
               (toldFirst_ && !IsAtOrBelowOne(file.fullPath, coverage_.lookedAt)) ||
               !known.emplace(file.fullPath, file.process->pid).second;
    };
    look.files.erase(std::remove_if(look.files.begin(), look.files.end(), isUnwanted),
                     look.files.end());
}

/** Tells what is open where the kernel tells the rest, and takes it out of the look. */
bool VolumeLooks::TellWatched(Snapshot& look) {
    const auto watched = std::stable_partition(
        look.files.begin(), look.files.end(),
        [&](const FileRecord& file) { return IsAtOrBelowOne(file.fullPath, coverage_.lookedAt); });
    for (auto file = watched; file != look.files.end(); ++file) {
        if (!Tell("opened", *file, true)) {
            return false;
        }
    }
    look.files.erase(watched, look.files.end());
    return true;
}

bool VolumeLooks::TellChanges() {
    const Changes& news = files_.News();
    for (const FileRecord* const file : news.closed) {
        if (!Tell("closed", *file, false)) {
            return false;
        }
    }
    for (const FileRecord* const file : news.opened) {
        if (!Tell("opened", *file, news.first)) {
            return false;
        }
    }
    return true;
}

bool VolumeLooks::Tell(std::string_view event, const FileRecord& file, bool initial) {
    constexpr size_t kMany = 256;
    ProcessAnswer process{*file.process, StartOf(file), ""};
    if (file.facts != nullptr && file.facts->process) {
        process.command = file.facts->process->command;
    }
    const std::string_view path = file.fullPath;
    ToldFile told;
    told.volume = VolumeOf(path);
    told.path = path;
    told.name = path.substr(path.rfind('/') + 1);
    told.deleted = file.deleted;
    told.pid = support::ParseNumber<pid_t>(file.process->pid).value_or(0);
    told.process = &process;
    told.initial = initial;
    teller_.File(event, at_, told);
    return ++told_ % kMany != 0 || flush_();
}

/** The same for as long as it is the same. */
void VolumeLooks::TellLacks(std::vector<std::string> reasons) {
    if (!reasons.empty() && reasons != lacks_) {
        teller_.Incomplete(at_, reasons);
    }
    lacks_ = std::move(reasons);
}

std::string_view VolumeLooks::VolumeOf(std::string_view path) const {
    std::string_view found;
    for (const auto* const volumes :
         {&coverage_.watched, &coverage_.lookedAt, &coverage_.unwatched}) {
        const std::string_view volume = LowestVolume(path, *volumes);
        found = volume.size() > found.size() ? volume : found;
    }
    return found;
}

}  // namespace cli
