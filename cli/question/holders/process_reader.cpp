// SPDX-License-Identifier: MIT
#include "cli/question/holders/process_reader.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/kcmp.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <set>

#include "cli/question/holders/memory_map.h"
#include "cli/question/holders/process_facts.h"
#include "support/folder.h"
#include "support/mount_info.h"
#include "support/numbers.h"
#include "support/text.h"

namespace cli {
namespace {

/** What descriptors of io_uring instances are called. */
constexpr std::string_view kRing = "anon_inode:[io_uring]";

/** Whether two threads share something; where the kernel doesn't tell they are taken for apart. */
bool Share(pid_t one, pid_t other, int type) {
    return syscall(SYS_kcmp, one, other, type, 0, 0) == 0;
}

/** Without a look at the name where there is none to be had. */
AskText TextAt(int folder, const char* name) {
    return [folder, name] { return LinkText(folder, name); };
}

}  // namespace

int ProcessReader::Read(Holders& holders, std::unordered_set<ino_t>& seenSockets) {
    seenSockets_ = &seenSockets;
    const std::string path = fmt::format("/proc/{}", pid_);
    folder_ = support::Descriptor(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (folder_) {
        ReadAll();
    } else {
        Miss(errno);
    }
    rows_.MoveTo(holders);
    return error_;
}

void ProcessReader::ReadAll() {
    ReadTask({"", pid_, true, true});
    if (error_ != 0 || Enough()) {
        return;
    }
    for (const Task& task : OtherTasks()) {
        if (!Enough()) {
            ReadTask(task);
        }
    }
}

/** Those that share no descriptors or no folders with the first thread, which may have ended. */
std::vector<ProcessReader::Task> ProcessReader::OtherTasks() {
    // Each thread is a link to the folder, beside its own two.
    constexpr nlink_t kLinksOfOne = 3;
    struct stat info {};
    std::vector<Task> tasks;
    if (fstatat(folder_.Get(), "task", &info, 0) != 0 || info.st_nlink <= kLinksOfOne) {
        return tasks;
    }
    const support::Descriptor folder(
        openat(folder_.Get(), "task", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        Miss(errno);
        return tasks;
    }
    const int error = support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
        const auto thread = support::ParseNumber<pid_t>(entry.d_name);
        if (thread && *thread != pid_) {
            const auto& told = reading_.kernel.descriptors;
            const bool files =
                told ? told->HasOwn(pid_, *thread) : !Share(pid_, *thread, KCMP_FILES);
            const bool folders = !Share(pid_, *thread, KCMP_FS);
            if (files || folders) {
                tasks.push_back({fmt::format("task/{}/", *thread), *thread, files, folders});
            }
        }
        return true;
    });
    Miss(error);
    return tasks;
}

void ProcessReader::ReadTask(const Task& task) {
    if (task.folders) {
        if (!ReadLink(task.folder + "cwd", Reason::kFolder) ||
            !ReadLink(task.folder + "root", Reason::kRoot)) {
            return;
        }
    }
    if (task.files && !Enough()) {
        reading_.kernel.descriptors ? TakeDescriptors(task) : ReadDescriptors(task.folder);
    }
    if (!memoryRead_ && !Enough()) {
        // The first thread may have ended, and given its memory up: then it is another's to show.
        ReadMemory(task);
    }
}

/** @return whether it makes sense to go on */
bool ProcessReader::ReadLink(const std::string& name, Reason reason) {
    const auto identity = IdentityAt(folder_.Get(), name.c_str());
    if (!identity) {
        Miss(errno);
        return error_ == 0;
    }
    rows_.Take(reason, -1, *identity, TextAt(folder_.Get(), name.c_str()));
    return true;
}

void ProcessReader::ReadMemory(const Task& task) {
    const std::string name = task.folder + "exe";
    const auto program = IdentityAt(folder_.Get(), name.c_str());
    if (!program) {
        Miss(errno);
        return;
    }
    memoryRead_ = true;
    rows_.Take(Reason::kProgram, -1, *program, TextAt(folder_.Get(), name.c_str()));
    if (!Enough()) {
        reading_.kernel.mappings ? TakeMappings(task, *program) : ReadMappings(task, *program);
    }
}

/** Each file once, as the kernel tells of every part of its that is mapped. */
void ProcessReader::TakeMappings(const Task& task, const Identity& program) {
    std::set<std::pair<dev_t, ino_t>> seen;
    for (const HeldFile& file : reading_.kernel.mappings->Of(pid_)) {
        if (Enough()) {
            return;
        }
        if (file.thread == task.thread && !file.isInnerPath &&
            reading_.targets.MayConcern(file.device) &&
            seen.emplace(file.device, file.inode).second) {
            TakeMapping(task.folder, {file.begin, file.end, file.device, file.inode, {}}, program,
                        [&] { return std::string(file.path); });
        }
    }
}

void ProcessReader::ReadMappings(const Task& task, const Identity& program) {
    const std::string path = fmt::format("/proc/{}/{}maps", pid_, task.folder);
    const auto text = ReadKernelFile(path);
    if (!text) {
        Miss(errno);
        return;
    }
    const bool overlay = reading_.targets.AnyOverlay();
    std::set<std::pair<dev_t, ino_t>> seen;
    std::string_view rest = *text;
    while (!rest.empty() && !Enough()) {
        const auto mapped = ParseMapped(support::TakeLine(rest));
        if (mapped && (overlay || reading_.targets.MayConcern(mapped->device)) &&
            seen.emplace(mapped->device, mapped->inode).second) {
            TakeMapping(task.folder, *mapped, program,
                        [&] { return support::UnescapedOctal(mapped->path); });
        }
    }
}

void ProcessReader::TakeMapping(const std::string& folder, const Mapped& mapped,
                                const Identity& program, const std::function<std::string()>& path) {
    // Of the process alone: its threads have the same.
    const std::string link = "map_files/" + mapped.LinkName();
    auto identity = folder.empty() ? IdentityAt(folder_.Get(), link.c_str()) : std::nullopt;
    const bool linked = identity.has_value();
    if (!linked) {
        // The right to read these links is a rare one. What maps tells will do for a volume.
        identity.emplace();
        identity->device = mapped.device;
        identity->inode = mapped.inode;
    }
    if (identity->inode == program.inode && (identity->device == program.device || !linked)) {
        return;
    }
    rows_.Take(Reason::kMapping, -1, *identity, [&]() -> std::optional<std::string> {
        return linked ? LinkText(folder_.Get(), link.c_str()) : std::optional<std::string>(path());
    });
}

void ProcessReader::ReadDescriptors(const std::string& folder) {
    const support::Descriptor descriptors(
        openat(folder_.Get(), (folder + "fd").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptors) {
        Miss(errno);
        return;
    }
    Miss(support::VisitFolder(descriptors.Get(), [&](const dirent64& entry) {
        TakeDescriptor(descriptors.Get(), folder, entry.d_name);
        return error_ == 0 && !Enough();
    }));
}

void ProcessReader::TakeDescriptors(const Task& task) {
    const std::vector<HeldFile>& files = reading_.kernel.descriptors->Of(pid_);
    if (files.empty()) {
        return;
    }
    const support::Descriptor descriptors(
        openat(folder_.Get(), (task.folder + "fd").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!descriptors) {
        Miss(errno);
        return;
    }
    for (const HeldFile& file : files) {
        if (error_ != 0 || Enough()) {
            return;
        }
        if (file.thread == task.thread) {
            TakeHeld(descriptors.Get(), task.folder, file);
        }
    }
}

void ProcessReader::TakeHeld(int folder, const std::string& taskFolder, const HeldFile& file) {
    const std::string name = std::to_string(file.descriptor);
    if (S_ISSOCK(file.mode) && !reading_.targets.MayConcern(file.device)) {
        TakeSocket(file.descriptor, file.inode);
        return;
    }
    if (file.path == kRing) {
        TakeRing(taskFolder, name.c_str());
        return;
    }
    if (!reading_.targets.IsToldByMount(static_cast<MountId>(file.mount), file.inode)) {
        TakeDescriptor(folder, taskFolder, name.c_str());
        return;
    }
    rows_.Take(Reason::kFile, file.descriptor, IdentityOf(file), [&] {
        return file.path.empty() ? LinkText(folder, name.c_str())
                                 : std::optional<std::string>(file.path);
    });
}

void ProcessReader::TakeDescriptor(int folder, const std::string& taskFolder, const char* name) {
    const auto identity = IdentityAt(folder, name);
    if (!identity) {
        Miss(errno);
        return;
    }
    const auto number = [&] { return support::ParseNumber<int>(name).value_or(-1); };
    if (S_ISSOCK(identity->mode) && !reading_.boundSockets.empty()) {
        TakeSocket(number(), identity->inode);
    }
    // What is no file of any kind has a name that says what it is.
    if (identity->mode != 0 && (identity->mode & S_IFMT) == 0 && LinkText(folder, name) == kRing) {
        TakeRing(taskFolder, name);
    }
    rows_.Take(Reason::kFile, number(), *identity, TextAt(folder, name));
}

void ProcessReader::TakeSocket(int descriptor, ino_t socket) {
    const auto bound = reading_.boundSockets.find(socket);
    if (bound == reading_.boundSockets.end()) {
        return;
    }
    seenSockets_->insert(socket);
    UsedFile file = bound->second;
    file.descriptor = descriptor;
    rows_.Add(Reason::kSocket, std::move(file));
}

void ProcessReader::TakeRing(const std::string& taskFolder, const char* name) {
    const auto text = ReadKernelFile(fmt::format("/proc/{}/{}fdinfo/{}", pid_, taskFolder, name));
    if (text && HasRegisteredFiles(*text)) {
        rows_.Lose(
            fmt::format("process {} has files registered with io_uring (descriptor {}), of "
                        "which nothing tells what they are",
                        pid_, name));
    }
}

void ProcessReader::Miss(int error) {
    if (error == ENOMEM) {
        throw std::bad_alloc();
    }
    if (error != 0 && error != ENOENT && error != ESRCH && error_ == 0) {
        error_ = error;
    }
}

}  // namespace cli
