// SPDX-License-Identifier: MIT
#include "tests/flood/churners.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <random>

namespace flood {
namespace {

// Slots of each churner.
constexpr std::size_t kHolders = 20, kHeldFiles = 20;
constexpr std::size_t kProcessSlot = 400, kProcessSlots = 64;
constexpr std::size_t kFileSlot = 500, kFileSlots = 256;
constexpr std::size_t kMountSlot = 800, kMountSlots = 4;
constexpr std::size_t kFolderSlot = 850, kFolderSlots = 8;
constexpr std::size_t kSharedSlot = 900;

constexpr char kExports[] = "/etc/exports.d/flood.exports";
constexpr char kExportedFolder[] = "/volume2/exported";

void Must(bool done, const std::string& step) {
    if (done)
        return;
    perror(step.c_str());
    _exit(1);
}

void Pause(long milliseconds) {
    const timespec time{milliseconds / 1000, milliseconds % 1000 * 1000000};
    nanosleep(&time, nullptr);
}

/** Regular times, caught up with where the machine is too busy to keep one. */
class Beat {
public:
    explicit Beat(long nanoseconds) : step_(nanoseconds) { clock_gettime(CLOCK_MONOTONIC, &next_); }
    void Wait() {
        next_.tv_nsec += step_;
        if (next_.tv_nsec >= kSecond) {
            next_.tv_nsec -= kSecond;
            ++next_.tv_sec;
        }
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &next_, nullptr);
    }

private:
    static constexpr long kSecond = 1000000000;

    long step_;
    timespec next_{};
};

/** A process that does nothing but its work and ends with its parent. */
pid_t Start(const std::function<void()>& work) {
    const pid_t parent = getpid();
    const pid_t pid = fork();
    Must(pid >= 0, "fork");
    if (pid > 0)
        return pid;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent)
        work();
    _exit(0);
}

/** Opens the next generation of a slot; the name is left in path. */
int Open(Slot& slot, std::size_t number, const std::string& folder, std::string& path) {
    const std::uint32_t generation = ++slot.begun;
    path = NameOf(folder, number, generation, getpid());
    // Never descriptor 0, which the enumeration passes over.
    const int file = open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0644);
    Must(file > 0, path);
    slot.opened = generation;
    return file;
}

void Close(Slot& slot, int file) {
    slot.closing = slot.opened.load();
    close(file);
    slot.closed = slot.opened.load();
}

void HoldFiles(Truth& truth, std::size_t first) {
    std::string path;
    for (std::size_t i = first; i < first + kHeldFiles; ++i)
        Open(truth.At(i), i, kShareFolder, path);
    for (;;)
        pause();
}

void LiveShortly(Truth& truth, std::size_t number) {
    Slot& slot = truth.At(number);
    std::string path;
    Open(slot, number, kShareFolder, path);
    Pause(25);
    unlink(path.c_str());
    slot.closing = slot.opened.load();
}

void ChurnProcesses(Truth& truth) {
    pid_t children[kProcessSlots] = {};
    Beat beat(2500000);
    for (std::size_t i = 0;; i = (i + 1) % kProcessSlots) {
        const std::size_t number = kProcessSlot + i;
        if (children[i] > 0) {
            int status = 0;
            waitpid(children[i], &status, 0);
            Must(status == 0, "a process that lives shortly");
            truth.At(number).closed = truth.At(number).closing.load();
        }
        children[i] = Start([&] { LiveShortly(truth, number); });
        ++truth.done.processes;
        beat.Wait();
    }
}

struct OpenFile {
    int file = -1;
    std::string path;
};

/** How many files it deletes: none where it was deleted before. */
unsigned Delete(const std::string& path) {
    return unlink(path.c_str()) == 0 ? 1 : 0;
}

void ChurnOneFile(Truth& truth, std::size_t number, OpenFile& open, unsigned step) {
    if (open.file < 0) {
        open.file = Open(truth.At(number), number, kShareFolder, open.path);
        ++truth.done.opens;
    } else if (step == 0 && open.path.find(".renamed") == std::string::npos) {
        const std::string renamed = open.path + ".renamed";
        if (rename(open.path.c_str(), renamed.c_str()) != 0)
            return;  // deleted before
        open.path = renamed;
        ++truth.done.renames;
    } else if (step == 1) {
        truth.done.deletions += Delete(open.path);
    } else if (step == 2) {
        truth.done.deletions += Delete(open.path);
        Close(truth.At(number), open.file);
        open.file = -1;
    }
}

void ChurnFiles(Truth& truth) {
    OpenFile files[kFileSlots];
    std::mt19937 random(1);
    for (unsigned steps = 0;; ++steps) {
        const std::size_t i = random() % kFileSlots;
        ChurnOneFile(truth, kFileSlot + i, files[i], random() % 3);
        if (steps % 8 == 0)
            Pause(8);
    }
}

void ChurnMounts(Truth& truth) {
    for (std::size_t i = 0;; i = (i + 1) % kMountSlots) {
        Slot& slot = truth.At(kMountSlot + i);
        const std::string volume = "/volume" + std::to_string(10 + i);
        Must(mkdir(volume.c_str(), 0755) == 0 || errno == EEXIST, volume);
        Must(mount("tmpfs", volume.c_str(), "tmpfs", 0, nullptr) == 0, "mount " + volume);
        Must(mkdir((volume + "/data").c_str(), 0755) == 0, volume);
        std::string path;
        const int file = Open(slot, kMountSlot + i, volume + "/data", path);
        ++truth.done.mounts;
        Pause(60);
        slot.closing = slot.opened.load();
        close(file);
        // Lazily, as the enumeration may just have the volume's folder open.
        Must(umount2(volume.c_str(), MNT_DETACH) == 0, "umount " + volume);
        slot.closed = slot.opened.load();
    }
}

void ChurnFolders(Truth& truth) {
    for (std::size_t i = 0;; i = (i + 1) % kFolderSlots) {
        const std::string folder = "/volume1/share" + std::to_string(i);
        Must(mkdir(folder.c_str(), 0755) == 0, folder);
        std::string path;
        const int file = Open(truth.At(kFolderSlot + i), kFolderSlot + i, folder, path);
        ++truth.done.folders;
        Pause(40);
        Close(truth.At(kFolderSlot + i), file);
        unlink(path.c_str());
        Must(rmdir(folder.c_str()) == 0, folder);
    }
}

/** All that the other churners open files in. */
std::string AlwaysExported() {
    std::string folders = kShareFolder;
    for (std::size_t i = 0; i < kFolderSlots; ++i)
        folders += " *\n/volume1/share" + std::to_string(i);
    for (std::size_t i = 0; i < kMountSlots; ++i)
        folders += " *\n/volume" + std::to_string(10 + i) + "/data";
    return folders + " *\n";
}

/** At once, as an editor saves a file: nobody reads half of it. */
void Export(const std::string& lines) {
    const std::string written = "/etc/exports.d/.flood";
    Must(static_cast<bool>(std::ofstream(written) << lines << std::flush), written);
    Must(rename(written.c_str(), kExports) == 0, kExports);
}

void HoldExportedFile(Truth& truth, std::size_t number) {
    std::string path;
    const int file = Open(truth.At(number), number, kExportedFolder, path);
    Pause(250);
    truth.At(number).closing = truth.At(number).opened.load();
    Must(unlink(path.c_str()) == 0 && close(file) == 0, path);
}

void ChurnExports(Truth& truth) {
    const std::string always = AlwaysExported();
    Must(mkdir("/etc/exports.d", 0755) == 0 || errno == EEXIST, "/etc/exports.d");
    Must(mkdir(kExportedFolder, 0755) == 0, kExportedFolder);
    for (;;) {
        Export(always + kExportedFolder + " *\n");
        HoldExportedFile(truth, kSharedSlot);
        Export(always);
        truth.At(kSharedSlot).closed = truth.At(kSharedSlot).closing.load();
        HoldExportedFile(truth, kUnsharedSlot);
        Must(unlink(kExports) == 0, kExports);
        truth.At(kUnsharedSlot).closed = truth.At(kUnsharedSlot).closing.load();
        Pause(100);
        truth.done.exports += 3;
    }
}

void ChurnSessions(Truth& truth, const std::string& command) {
    for (;;) {
        if (std::system(command.c_str()) == 0)
            ++truth.done.sessions;
        Pause(20);
    }
}

}  // namespace

void StartHolders(Truth& truth) {
    for (std::size_t i = 0; i < kHolders; ++i)
        Start([&] { HoldFiles(truth, i * kHeldFiles); });
}

void StartProcessChurner(Truth& truth) {
    Start([&] { ChurnProcesses(truth); });
}

void StartFileChurner(Truth& truth) {
    Start([&] { ChurnFiles(truth); });
}

void StartMountChurner(Truth& truth) {
    Start([&] { ChurnMounts(truth); });
}

void StartFolderChurner(Truth& truth) {
    Start([&] { ChurnFolders(truth); });
}

void StartExportChurner(Truth& truth) {
    Start([&] { ChurnExports(truth); });
}

void StartSessionChurner(Truth& truth, const std::string& sshCommand) {
    Start([&] { ChurnSessions(truth, sshCommand); });
}

}  // namespace flood
