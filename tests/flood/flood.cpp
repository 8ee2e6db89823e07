// SPDX-License-Identifier: MIT
/*
 * Enumerates open files, by share and by volume, by the library's call and by the command's threads
 * in turn, while the host changes as fast as it can, and holds each result against what was really
 * open. Run it in a sample host: it mounts volumes.
 *
 *     vorn_flood ENUMERATIONS [SECONDS FIGURES]
 *
 * With SECONDS it goes on for that long, ENUMERATIONS notwithstanding, and writes a line a second
 * to the file FIGURES: seconds, enumerations, resident KiB, descriptors. SSH_COMMAND in the
 * environment is a shell command that runs one SSH session; host.sh sets it.
 *
 * Prints figures; ends with 1 when anything was wrong or grew, or when a part of the flood stood
 * still.
 */

#include <dirent.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>

#include "cli/failure.h"
#include "cli/question/enumeration.h"
#include "tests/flood/churners.h"
#include "tests/support/library_record.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Size {
    long residentKib = 0;
    long descriptors = 0;
};

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};

Size OwnSize() {
    Size size;
    std::ifstream statm("/proc/self/statm");
    long total = 0;
    statm >> total >> size.residentKib;
    size.residentKib *= sysconf(_SC_PAGESIZE) / 1024;
    const std::unique_ptr<DIR, FolderCloser> folder(opendir("/proc/self/fd"));
    while (readdir(folder.get()) != nullptr)
        ++size.descriptors;
    return size;
}

struct Plan {
    long enumerations;
    double seconds;
    const char* figures;
};

class Run {
public:
    Run(flood::Truth& truth, const Plan& plan)
        : truth_(truth), plan_(plan), noteEvery_(plan.seconds > 0 ? 1 : 0.01) {
        if (plan.figures != nullptr)
            figures_.emplace(plan.figures);
    }

    void Go() {
        while (!IsOver()) {
            EnumerateOnce(static_cast<int>(enumerations_ % 2));
            ++enumerations_;
            if (Elapsed() >= noteEvery_ * static_cast<double>(sizes_.size()))
                NoteSize();
            if (verdict_.wrong.size() > 20)
                return;
        }
    }

    int Report() const {
        const flood::Done& done = truth_.done;
        const double seconds = Elapsed();
        printf("%ld enumerations in %.1f s, %ld failed\n", enumerations_, seconds, failed_);
        printf("%ju records checked, %ju of them stable during the call, %zu wrong\n",
               verdict_.checked, verdict_.stable, verdict_.wrong.size());
        printf("meanwhile: %ju processes (%.0f/s), %ju files opened, %ju renamed, %ju deleted, ",
               done.processes.load(), static_cast<double>(done.processes) / seconds,
               done.opens.load(), done.renames.load(), done.deletions.load());
        printf("%ju mounts, %ju shared folders made, %ju changes of the exports, ",
               done.mounts.load(), done.folders.load(), done.exports.load());
        printf("%ju SSH sessions\n", done.sessions.load());
        for (const std::string& wrong : verdict_.wrong)
            fprintf(stderr, "wrong: %s\n", wrong.c_str());
        const bool flat = ReportSize();
        const bool flooded = ReportFlood();
        return failed_ == 0 && verdict_.wrong.empty() && verdict_.stable > 0 && flat && flooded ? 0
                                                                                                : 1;
    }

private:
    double Elapsed() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

    bool IsOver() const {
        return plan_.seconds > 0 ? Elapsed() >= plan_.seconds : enumerations_ >= plan_.enumerations;
    }

    void EnumerateOnce(int enumby) {
        std::list<VORN::FileHandle::OpenedFile> list;
        const auto before = truth_.Read();
        const int result = Enumerate(list, enumby);
        const auto after = truth_.Read();
        if (result == 0)
            flood::Check(list, enumby, before, after, verdict_);
        else
            ++failed_;
    }

    /** By the library's call and by the command's threads in turn. */
    int Enumerate(std::list<VORN::FileHandle::OpenedFile>& list, int enumby) const {
        if (enumerations_ / 2 % 2 == 0)
            return VORN::FileHandle::VORNEnumOpenedFile(list, enumby);
        cli::Question question;
        question.by = static_cast<VORN::FileHandle::ENUM_BY>(enumby);
        const auto source = cli::MakeSource(question.source);
        try {
            cli::TextsOfThreads texts;
            for (const cli::FileRecord& file :
                 cli::EnumerateFiles(question, *source, cli::Workers(3), texts)) {
                list.push_back(OfLibrary(file));
            }
        } catch (const cli::Failure&) {
            return -1;
        }
        return VORN::FileHandle::LabelFolder(list);
    }

    /** Once a second in a long run: what is noted must not be what grows. */
    void NoteSize() {
        const Size size = OwnSize();
        sizes_.push_back(size);
        if (figures_)
            *figures_ << Elapsed() << ' ' << enumerations_ << ' ' << size.residentKib << ' '
                      << size.descriptors << std::endl;
    }

    /** The most of each kind in the second quarter and in the last: memory settles at first. */
    bool ReportSize() const {
        const auto most = [this](std::size_t quarter) {
            const std::size_t count = sizes_.size() / 4;
            Size size;
            for (std::size_t i = quarter * count; i < (quarter + 1) * count; ++i) {
                size.residentKib = std::max(size.residentKib, sizes_[i].residentKib);
                size.descriptors = std::max(size.descriptors, sizes_[i].descriptors);
            }
            return size;
        };
        constexpr long kAllowedKib = 512;
        const Size early = most(1);
        const Size late = most(3);
        printf("resident KiB: %ld in the second quarter, %ld in the last; descriptors: %ld, %ld\n",
               early.residentKib, late.residentKib, early.descriptors, late.descriptors);
        return late.residentKib <= early.residentKib + kAllowedKib &&
               late.descriptors <= early.descriptors;
    }

    /** Whether every churner did its work to the end; what stood still is told. */
    bool ReportFlood() const {
        const flood::Done& done = truth_.done;
        bool all = true;
        for (const auto& [count, what] : {std::pair(&done.processes, "processes"),
                                          {&done.opens, "opened files"},
                                          {&done.renames, "renamed files"},
                                          {&done.deletions, "deleted files"},
                                          {&done.mounts, "mounts"},
                                          {&done.folders, "shared folders"},
                                          {&done.exports, "changes of the exports"},
                                          {&done.sessions, "SSH sessions"}}) {
            if (*count != 0)
                continue;
            fprintf(stderr, "wrong: there were no %s\n", what);
            all = false;
        }
        for (pid_t ended = waitpid(-1, nullptr, WNOHANG); ended > 0;
             ended = waitpid(-1, nullptr, WNOHANG)) {
            fprintf(stderr, "wrong: process %d of the flood ended early\n", ended);
            all = false;
        }
        return all;
    }

    flood::Truth& truth_;
    Plan plan_;
    double noteEvery_; /**< seconds */
    Clock::time_point start_ = Clock::now();
    std::optional<std::ofstream> figures_;
    long enumerations_ = 0;
    long failed_ = 0;
    flood::Verdict verdict_;
    std::vector<Size> sizes_;
};

void StartChurners(flood::Truth& truth, const char* sshCommand) {
    mkdir(flood::kShareFolder, 0777);
    flood::StartHolders(truth);
    flood::StartProcessChurner(truth);
    flood::StartFileChurner(truth);
    flood::StartMountChurner(truth);
    flood::StartFolderChurner(truth);
    flood::StartExportChurner(truth);
    flood::StartSessionChurner(truth, sshCommand);
}

}  // namespace

int main(int argc, char** argv) {
    const Plan plan{argc > 1 ? std::strtol(argv[1], nullptr, 10) : 0,
                    argc > 3 ? std::strtod(argv[2], nullptr) : 0, argc > 3 ? argv[3] : nullptr};
    const char* sshCommand = getenv("SSH_COMMAND");
    if (sshCommand == nullptr || (plan.enumerations < 20 && plan.seconds <= 0)) {
        fprintf(stderr, "usage: SSH_COMMAND=... vorn_flood ENUMERATIONS [SECONDS FIGURES]\n");
        return 2;
    }
    flood::Truth& truth = *flood::Truth::Make();
    StartChurners(truth, sshCommand);
    Run run(truth, plan);
    run.Go();
    return run.Report();
}
