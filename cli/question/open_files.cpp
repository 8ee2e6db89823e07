// SPDX-License-Identifier: MIT
#include "cli/question/open_files.h"

#include <map>
#include <utility>

#include "cli/host/deleted.h"
#include "cli/host/facts/held_paths.h"

namespace cli {
namespace {

using Key = std::pair<std::string_view, std::string_view>;
using Index = std::map<Key, const FileRecord*>;

Key KeyOf(const FileRecord& file) {
    return {file.fullPath, file.process->pid};
}

void AddTo(Index& index, const Files& files) {
    for (const FileRecord& file : files) {
        index.emplace(KeyOf(file), &file);
    }
}

/** The same file and process in another look, or null. One that has ended may have no start. */
const FileRecord* Find(const Index& index, const FileRecord& file) {
    const auto found = index.find(KeyOf(file));
    if (found == index.end()) {
        return nullptr;
    }
    const BootTicks a = StartOf(file);
    const BootTicks b = StartOf(*found->second);
    return a == b || a == 0 || b == 0 ? found->second : nullptr;
}

/** What was known of a process that has ended meanwhile still holds. */
void TakeOver(const FileRecord& old, FileRecord& file, FactsOfProcesses& facts) {
    if (StartOf(file) == 0 && StartOf(old) != 0) {
        facts.push_back({*old.facts});
        file.facts = &facts.back().front();
    }
}

}  // namespace

BootTicks StartOf(const FileRecord& file) {
    return file.facts != nullptr && file.facts->process ? file.facts->process->start : 0;
}

void OpenFiles::Kept::Add(const FileRecord& file) {
    FileRecord& copy = files.emplace_back(file);
    for (std::string_view FileRecord::*const text :
         {&FileRecord::fullPath, &FileRecord::path, &FileRecord::filename, &FileRecord::time}) {
        copy.*text = texts.Keep(file.*text);
    }
    copy.process = &texts.AddProcess(*file.process);
    if (file.facts != nullptr) {
        copy.facts = &facts.emplace_back(*file.facts);
    }
}

void OpenFiles::Take(Snapshot look) {
    last_ = std::exchange(look_, std::make_unique<Snapshot>(std::move(look)));
    lastKept_ = std::exchange(kept_, std::make_unique<Kept>());
    changes_ = {};
    changes_.first = !std::exchange(looked_, true);
    Index before;
    Index now;
    AddTo(before, last_->files);
    AddTo(before, lastKept_->files);
    AddTo(now, look_->files);
    for (FileRecord& file : look_->files) {
        const FileRecord* const old = Find(before, file);
        if (old == nullptr) {
            changes_.opened.push_back(&file);
        } else {
            TakeOver(*old, file, look_->facts);
        }
    }
    for (const auto& [key, file] : before) {
        if (Find(now, *file) == nullptr) {
            changes_.closed.push_back(file);
        }
    }
    if (!look_->incompleteReason.empty()) {
        KeepUnsure();
    }
}

/** Takes those that may be open still out of the closed ones. */
void OpenFiles::KeepUnsure() {
    HeldPaths held;
    const auto isUnsure = [&](const FileRecord* file) {
        const std::string path(file->fullPath);
        const auto mayHold = [&](const std::string& link) {
            return held.MayHold(file->process->pid, StartOf(*file), link);
        };
        return mayHold(path) || (file->deleted && mayHold(path + std::string(kDeletedMark)));
    };
    std::vector<const FileRecord*> closed;
    for (const FileRecord* const file : changes_.closed) {
        if (isUnsure(file)) {
            kept_->Add(*file);
        } else {
            closed.push_back(file);
        }
    }
    changes_.closed = std::move(closed);
}

}  // namespace cli
