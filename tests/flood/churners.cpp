#include "churners.h"

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
#include <functional>
#include <random>

namespace flood {
namespace {

// Slots of each churner.
constexpr std::size_t kHolders = 20, kHeldFiles = 20;
constexpr std::size_t kProcessSlot = 400, kProcessSlots = 64;
constexpr std::size_t kFileSlot = 500, kFileSlots = 256;
constexpr std::size_t kMountSlot = 800, kMountSlots = 4;
constexpr std::size_t kShareSlot = 850, kShareSlots = 8;

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
            waitpid(children[i], nullptr, 0);
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

void ChurnOneFile(Truth& truth, std::size_t number, OpenFile& open, unsigned step) {
    if (open.file < 0) {
        open.file = Open(truth.At(number), number, kShareFolder, open.path);
        ++truth.done.opens;
    } else if (step == 0 && open.path.find(".renamed") == std::string::npos) {
        const std::string renamed = open.path + ".renamed";
        rename(open.path.c_str(), renamed.c_str());
        open.path = renamed;
        ++truth.done.renames;
    } else if (step == 1) {
        unlink(open.path.c_str());
        ++truth.done.deletions;
    } else if (step == 2) {
        unlink(open.path.c_str());
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

void ChurnShares(Truth& truth) {
    for (std::size_t i = 0;; i = (i + 1) % kShareSlots) {
        const std::string folder = "/volume1/share" + std::to_string(i);
        Must(mkdir(folder.c_str(), 0755) == 0, folder);
        std::string path;
        const int file = Open(truth.At(kShareSlot + i), kShareSlot + i, folder, path);
        ++truth.done.shares;
        Pause(40);
        Close(truth.At(kShareSlot + i), file);
        unlink(path.c_str());
        Must(rmdir(folder.c_str()) == 0, folder);
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

void StartShareChurner(Truth& truth) {
    Start([&] { ChurnShares(truth); });
}

void StartSessionChurner(Truth& truth, const char* sshCommand) {
    if (sshCommand != nullptr)
        Start([&] { ChurnSessions(truth, sshCommand); });
}

}  // namespace flood
