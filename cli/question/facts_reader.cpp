// SPDX-License-Identifier: MIT
#include "cli/question/facts_reader.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>

#include "cli/host/facts/user_names.h"

namespace cli {
namespace {

/** What is asked for, by the source that tells it. */
struct Wanted {
    explicit Wanted(const ColumnSet& columns)
        : columns_(columns),
          state(Has(Column::kMode) || Has(Column::kLocks)),
          file(Has(Column::kSize) || Has(Column::kSpace) || Has(Column::kModified) ||
               Has(Column::kInode) || Has(Column::kDevice)),
          descriptors(state || file || Has(Column::kFd)) {}

    bool Has(Column column) const { return columns_.test(static_cast<size_t>(column)); }

private:
    ColumnSet columns_;

public:
    bool state;
    bool file;
    bool descriptors;
};

/** What several threads ask for: users, and locks, each once. */
class Shared {
public:
    explicit Shared(bool locks) : locks_(locks ? LockTable::Read() : LockTable("", 0)) {}

    std::string NameOf(std::optional<uid_t> user) {
        const std::lock_guard<std::mutex> lock(mutex_);
        return user ? users_.Of(*user) : std::string();
    }
    const LockTable& Locks() const { return locks_; }

private:
    std::mutex mutex_;
    UserNames users_;
    const LockTable locks_;
};

bool IsSame(const FileFacts& a, const FileFacts& b) {
    return a.inode == b.inode && a.device == b.device;
}

bool IsSame(const KernelLock& a, const KernelLock& b) {
    return a.kind == b.kind && a.access == b.access && a.pid == b.pid && a.begin == b.begin &&
           a.end == b.end;
}

/** One process and what it says of the files that it holds. */
class AskedProcess {
public:
    AskedProcess(const std::string& pid, const Wanted& wanted, Shared& shared, BootTicks lookBegan)
        : wanted_(wanted),
          shared_(shared),
          lookBegan_(lookBegan),
          process_(ProcessFacts::Of(pid)) {}

    Facts Of(const std::string& fullPath) {
        Facts facts;
        if (!process_ || !process_->IsHolder(fullPath, lookBegan_)) {
            return facts;
        }
        facts.process = About();
        if (!wanted_.descriptors) {
            return facts;
        }
        facts.descriptors = process_->DescriptorsOf(fullPath);
        for (const int descriptor : facts.descriptors) {
            AddState(facts, descriptor, fullPath);
            AddFile(facts, descriptor, fullPath);
        }
        std::sort(facts.modes.begin(), facts.modes.end());
        return facts;
    }

private:
    const std::shared_ptr<const HolderFacts>& About() {
        if (!about_) {
            auto about = std::make_shared<HolderFacts>();
            about->command = Text(Column::kCommand, &ProcessFacts::Command);
            about->unit = Text(Column::kUnit, &ProcessFacts::Unit);
            about->owner = User(Column::kOwner, &ProcessFacts::Owner);
            about->login = User(Column::kLogin, &ProcessFacts::Login);
            about->started = process_->Started();
            about->start = process_->Start();
            about_ = std::move(about);
        }
        return about_;
    }
    std::string Text(Column column,
                     std::optional<std::string> (ProcessFacts::*tell)() const) const {
        return wanted_.Has(column) ? ((*process_).*tell)().value_or("") : "";
    }
    std::string User(Column column, std::optional<uid_t> (ProcessFacts::*tell)() const) const {
        return wanted_.Has(column) ? shared_.NameOf(((*process_).*tell)()) : "";
    }

    void AddState(Facts& facts, int descriptor, const std::string& fullPath) const {
        const auto state = wanted_.state ? process_->StateOf(descriptor, fullPath) : std::nullopt;
        if (!state) {
            return;
        }
        const std::string mode = ModeName(*state);
        if (std::find(facts.modes.begin(), facts.modes.end(), mode) == facts.modes.end()) {
            facts.modes.push_back(mode);
        }
        for (const KernelLock& lock : state->locks) {
            // Each descriptor of the file tells of the process's locks.
            const bool isKnown =
                std::any_of(facts.locks.begin(), facts.locks.end(),
                            [&](const HeldLock& held) { return IsSame(held.lock, lock); });
            if (!isKnown) {
                facts.locks.push_back({lock, shared_.Locks().WaitersFor(lock)});
            }
        }
    }
    void AddFile(Facts& facts, int descriptor, const std::string& fullPath) const {
        const auto file = wanted_.file ? process_->FileOf(descriptor, fullPath) : std::nullopt;
        if (file && std::none_of(facts.files.begin(), facts.files.end(),
                                 [&](const FileFacts& each) { return IsSame(each, *file); })) {
            facts.files.push_back(*file);
        }
    }

    const Wanted& wanted_;
    Shared& shared_;
    BootTicks lookBegan_;
    std::optional<ProcessFacts> process_;
    std::shared_ptr<const HolderFacts> about_;
};

using OfOneProcess = std::vector<FileRecord*>;

std::vector<OfOneProcess> ByProcess(const std::vector<FileRecord*>& files) {
    std::unordered_map<std::string_view, size_t> known;
    std::vector<OfOneProcess> processes;
    for (FileRecord* file : files) {
        const auto [place, isNew] = known.try_emplace(file->process->pid, processes.size());
        if (isNew) {
            processes.emplace_back();
        }
        processes[place->second].push_back(file);
    }
    return processes;
}

}  // namespace

FactsOfProcesses ReadFacts(const std::vector<FileRecord*>& files, const ColumnSet& columns,
                           BootTicks lookBegan, const Workers& workers) {
    const Wanted wanted(columns);
    Shared shared(wanted.Has(Column::kLocks));
    const std::vector<OfOneProcess> processes = ByProcess(files);
    FactsOfProcesses facts(processes.size());
    // A process a task: each has one descriptor open while it is asked, and no more.
    workers.ForEach(processes.size(), [&](size_t i) {
        AskedProcess process(processes[i].front()->process->pid, wanted, shared, lookBegan);
        facts[i].reserve(processes[i].size());
        for (FileRecord* file : processes[i]) {
            file->facts = &facts[i].emplace_back(process.Of(std::string(file->fullPath)));
        }
    });
    return facts;
}

}  // namespace cli
