// SPDX-License-Identifier: MIT
#include "cli/question/enumeration.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstring>
#include <mutex>
#include <new>
#include <numeric>
#include <random>

#include "cli/failure.h"
#include "support/text.h"
#include "tests/cli/scripted_host.h"
#include "tests/support/syslog_interposer.h"
#include "vorn/platform/connection.h"
#include "vorn/platform/error.h"

/**
 * @file
 * The command's enumeration with one thread and with several, beside the library's own call on the
 * same records, services, connections and failures.
 */

namespace {

std::mutex logMutex;
std::vector<std::string> logLines;
std::atomic<int> openedGroups;

/** Of the process whose control-group file this is; empty for another path. */
std::string Unit(std::string_view path) {
    if (!support::ConsumePrefix(path, "/proc/") || !support::ConsumeSuffix(path, "/cgroup")) {
        return "";
    }
    const auto unit = scriptedHost.units.find(std::string(path));
    return unit == scriptedHost.units.end() ? "none.slice" : unit->second + ".slice";
}

}  // namespace

void TakeLogLine(int /*priority*/, const char* format, va_list arguments) {
    char line[8192];
    vsnprintf(line, sizeof(line), format, arguments);
    const std::lock_guard<std::mutex> lock(logMutex);
    logLines.emplace_back(line);
}

// Control groups and unit files as the script has them.
extern "C" __attribute__((visibility("default"))) int open(const char* path, int flags, ...) {
    const std::string unit = Unit(path);
    if (unit.empty()) {
        return openat(AT_FDCWD, path, flags, 0600);
    }
    openedGroups += std::strstr(path, "self") == nullptr ? 1 : 0;
    const std::string text = "7:cpu:/\n1:name=systemd:/" + unit + "/x.service\n";
    const int file = memfd_create("cgroup", MFD_CLOEXEC);
    EXPECT_EQ(write(file, text.c_str(), text.size()), static_cast<ssize_t>(text.size()));
    lseek(file, 0, SEEK_SET);
    return file;
}

extern "C" __attribute__((visibility("default"))) int access(const char* path, int mode) noexcept {
    if (std::strncmp(path, "/usr/lib/systemd/system/", 24) == 0) {
        return std::strstr(path, "none") == nullptr ? 0 : -1;
    }
    return faccessat(AT_FDCWD, path, mode, 0);
}

namespace {

using cli::LibraryFiles;
using VORN::FileHandle::OpenedFile;
namespace fh = VORN::FileHandle;

/** Hands out the processes of a list of records, as a walk of /proc does. */
class ScriptedSource : public cli::RecordSource {
public:
    explicit ScriptedSource(const LibraryFiles& all) {
        for (OpenedFile file : all) {
            if (processes_.empty() || processes_.back().front().getPidStr() != file.getPidStr()) {
                processes_.emplace_back();
            }
            processes_.back().push_back(file);
        }
    }

    int Next(cli::Files& records, cli::RecordTexts& texts) override {
        const size_t at = next_++;
        if (at == failsAt) {
            KLIBCErrSetEx(0x4321, "scan", 1);
            return -1;
        }
        if (at == throwsAt) {
            throw std::bad_alloc();
        }
        if (at >= processes_.size()) {
            return 0;
        }
        cli::ProcessTexts& process =
            texts.AddProcess({processes_[at].front().getPidStr(), "", "", ""});
        for (OpenedFile& file : processes_[at]) {
            records.push_back({texts.Keep(file.getFullPath()), {}, {}, {}, &process});
        }
        return 1;
    }
    std::string Notice() const override { return ""; }

    size_t failsAt = static_cast<size_t>(-1);
    size_t throwsAt = static_cast<size_t>(-1);

private:
    std::vector<LibraryFiles> processes_;
    std::atomic<size_t> next_ = 0;
};

OpenedFile Raw(const std::string& path, int pid) {
    OpenedFile file;
    file.setFullPath(path);
    file.setPid(std::to_string(pid));
    return file;
}

std::string Joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) {
        text.append(part) += '|';
    }
    return text;
}

std::string Text(OpenedFile& file) {
    return Joined({file.getFullPath(), file.getPidStr(), file.getService(), file.getHost(),
                   file.getUser(), file.getPath(), file.getFilename(),
                   file.isHidden() ? "hidden" : "", file.isFolder() ? "folder" : ""});
}

std::string Text(const cli::FileRecord& file) {
    const cli::ProcessTexts& process = *file.process;
    return Joined({file.fullPath, process.pid, process.service, process.host, process.user,
                   file.path, file.filename, file.hidden ? "hidden" : "",
                   file.folder ? "folder" : ""});
}

struct Outcome {
    std::vector<std::string> records;
    std::string failure;
    std::vector<std::string> log;
};

/** Sorted: threads log in any order. */
std::vector<std::string> TakeLog() {
    std::vector<std::string> lines = std::move(logLines);
    logLines.clear();
    std::sort(lines.begin(), lines.end());
    return lines;
}

Outcome ByLibrary(LibraryFiles files, fh::ENUM_BY by) {
    Outcome outcome;
    logLines.clear();
    if (fh::EnumOpenedFile(files, by) < 0) {
        char code[32];
        snprintf(code, sizeof(code), "(error 0x%04X)", static_cast<unsigned>(KLIBCErrGet()));
        outcome.failure = code;
    } else {
        std::transform(files.begin(), files.end(), std::back_inserter(outcome.records),
                       [](OpenedFile& file) { return Text(file); });
    }
    outcome.log = TakeLog();
    return outcome;
}

Outcome ByCommand(
    const LibraryFiles& files, fh::ENUM_BY by, size_t jobs,
    const std::function<void(ScriptedSource&)>& spoil = [](ScriptedSource&) {}) {
    Outcome outcome;
    logLines.clear();
    ScriptedSource source(files);
    spoil(source);
    cli::Question question;
    question.by = by;
    try {
        cli::TextsOfThreads texts;
        cli::Files all = cli::EnumerateFiles(question, source, cli::Workers(jobs), texts);
        cli::LabelFolders(all.begin(), all.end());
        std::transform(all.begin(), all.end(), std::back_inserter(outcome.records),
                       [](const cli::FileRecord& file) { return Text(file); });
    } catch (const cli::Failure& failure) {
        outcome.failure = failure.what();
        outcome.failure = outcome.failure.substr(outcome.failure.find('('));
        outcome.failure.resize(outcome.failure.find(')') + 1);
    }
    outcome.log = TakeLog();
    return outcome;
}

class Enumeration : public testing::TestWithParam<size_t> {
protected:
    void SetUp() override {
        scriptedHost = ScriptedHost();
        scriptedHost.shares = {"/volume1/photo", "/volume2/docs", "/volume1/p"};
        scriptedHost.hidden = {"/.trash/", "x"};
        scriptedHost.units["self"] = "own";
    }

    /** Ancestors of the processes 100 to 159, in any order of their ids, and sessions of some. */
    static void MakeForest(std::mt19937& random) {
        std::vector<int> pids(60);
        std::iota(pids.begin(), pids.end(), 100);
        std::shuffle(pids.begin(), pids.end(), random);
        for (size_t i = 0; i < pids.size(); ++i) {
            const size_t above = 1 + random() % 3;
            scriptedHost.parents[pids[i]] = above > i ? 1 : pids[i - above];
            if (random() % 15 == 0) {
                const auto pid = static_cast<unsigned>(pids[i]);
                scriptedHost.connections.push_back({pid, "192.0.2.1", std::to_string(pid), 10});
            }
        }
    }

    /** A table of processes whose files, services, sessions and ancestors are drawn by lot. */
    LibraryFiles Draw(unsigned seed, size_t processes, size_t most) {
        std::mt19937 random(seed);
        const auto below = [&](size_t limit) { return static_cast<int>(random() % limit); };
        static const char* const kFolders[] = {"/volume1/photo/", "/volume2/photo/",
                                               "/volume2/docs/", "/volume1/p/.trash/",
                                               "/volume1/other/"};
        static const char* const kUnits[] = {"SSH", "ssh", "SMB", "none", "FTP"};
        LibraryFiles files;
        int pid = 100;
        for (size_t process = 0; process < processes; ++process) {
            pid += 1 + below(3);
            scriptedHost.units[std::to_string(pid)] = kUnits[below(5)];
            // Above the real pids, so that no process is anybody's.
            scriptedHost.parents[pid] =
                below(4) == 0 ? 1 : 100 + below(static_cast<size_t>(pid) - 100);
            if (below(6) == 0) {
                scriptedHost.connections.push_back(
                    {static_cast<unsigned>(pid), "192.0.2." + std::to_string(below(9)),
                     "user" + std::to_string(pid), below(3) == 0 ? 3U : 10U});
            }
            for (size_t i = random() % (most + 1); i > 0; --i) {
                const std::string path = kFolders[below(5)] +
                                         std::string(1, static_cast<char>('a' + below(26))) +
                                         (below(9) == 0 ? " (deleted)" : "");
                scriptedHost.folders.insert(below(9) == 0 ? path : "");
                files.push_back(Raw(path, pid));
            }
        }
        return files;
    }
};

TEST_P(Enumeration, GivesWhatTheLibraryGives) {
    for (const unsigned seed : {1, 2, 3, 4, 5, 6, 7, 8}) {
        for (const size_t most : {2, 12, 700}) {
            SetUp();
            const LibraryFiles files = Draw(seed, most == 700 ? 20 : 150, most);
            const Outcome expected = ByLibrary(files, fh::ENUM_BY_SHARE);
            const Outcome outcome = ByCommand(files, fh::ENUM_BY_SHARE, GetParam());
            EXPECT_EQ(outcome.records, expected.records) << seed << ", " << most;
            EXPECT_EQ(outcome.log, expected.log) << seed << ", " << most;
            EXPECT_EQ(expected.failure, "");
            EXPECT_FALSE(outcome.records.empty());
        }
    }
}

/** What a search finds depends on what those before it found, and on how often it is repeated. */
TEST_P(Enumeration, FindsSessionsAsTheLibraryDoes) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        SetUp();
        std::mt19937 random(seed);
        LibraryFiles files;
        for (int pid = 100; pid < 160; ++pid) {
            scriptedHost.units[std::to_string(pid)] = "SSH";
            for (size_t i = random() % 4; i > 0; --i) {
                files.push_back(Raw("/volume1/photo/" + std::to_string(i), pid));
            }
        }
        MakeForest(random);
        const Outcome expected = ByLibrary(files, fh::ENUM_BY_SHARE);
        EXPECT_EQ(ByCommand(files, fh::ENUM_BY_SHARE, GetParam()).records, expected.records)
            << seed;
    }
}

TEST_P(Enumeration, AsksForAFolderOnceAPathAndForServicesOnceAProcess) {
    LibraryFiles files;
    for (int pid = 100; pid < 140; ++pid) {
        for (int i = 0; i < 100; ++i) {
            files.push_back(Raw("/volume1/photo/a", pid));
            files.push_back(Raw("/volume1/photo/b", pid));
        }
    }
    scriptedHost.folders = {"/volume1/photo/a"};
    const Outcome expected = ByLibrary(files, fh::ENUM_BY_SHARE);
    scriptedHost.calls.clear();
    openedGroups = 0;
    EXPECT_EQ(ByCommand(files, fh::ENUM_BY_SHARE, GetParam()).records, expected.records);
    EXPECT_EQ(expected.records.size(), 80U);
    EXPECT_EQ(scriptedHost.calls["KLIBCFileCheckDir"], 2);
    EXPECT_EQ(openedGroups, 40);
}

TEST_P(Enumeration, FailsAsTheLibraryDoes) {
    const LibraryFiles files = Draw(1, 200, 30);
    for (const char* operation :
         {"VORNShareEnum", "VORNShareGet", "VORNEAHiddenDirGet", "VORNCurConnGet"}) {
        scriptedHost.failing = {operation};
        const Outcome expected = ByLibrary(files, fh::ENUM_BY_SHARE);
        const Outcome outcome = ByCommand(files, fh::ENUM_BY_SHARE, GetParam());
        EXPECT_EQ(outcome.failure, "(error 0x1234)") << operation;
        EXPECT_EQ(outcome.failure, expected.failure) << operation;
        EXPECT_EQ(outcome.log, expected.log) << operation;
    }
}

TEST_P(Enumeration, LogsOnceThatThereIsNoShare) {
    scriptedHost.shares.clear();
    const LibraryFiles files = Draw(3, 200, 30);
    const Outcome expected = ByLibrary(files, fh::ENUM_BY_SHARE);
    const Outcome outcome = ByCommand(files, fh::ENUM_BY_SHARE, GetParam());
    EXPECT_EQ(outcome.records, std::vector<std::string>());
    EXPECT_EQ(outcome.log, expected.log);
    EXPECT_EQ(outcome.log.size(), 1U);
}

TEST_P(Enumeration, TellsTheErrorOfTheThreadThatFailed) {
    const LibraryFiles files = Draw(1, 200, 30);
    for (const size_t at : {0, 17, 100}) {
        const Outcome outcome = ByCommand(files, fh::ENUM_BY_SHARE, GetParam(),
                                          [&](ScriptedSource& source) { source.failsAt = at; });
        EXPECT_EQ(outcome.failure, "(error 0x4321)");
        EXPECT_EQ(outcome.log,
                  (std::vector<std::string>{
                      "filehandle_enum:24 Failed to get proc opened file for file handle"}));
    }
}

TEST_P(Enumeration, PassesOnAShortageOfMemory) {
    const LibraryFiles files = Draw(1, 200, 30);
    EXPECT_THROW(ByCommand(files, fh::ENUM_BY_SHARE, GetParam(),
                           [](ScriptedSource& source) { source.throwsAt = 17; }),
                 std::bad_alloc);
}

TEST_P(Enumeration, PassesOnTheRangeErrorOfABareVolumeName) {
    LibraryFiles files = Draw(1, 200, 30);
    scriptedHost.shares.emplace_back("/volume");
    files.push_back(Raw("/volume", 5000));
    EXPECT_THROW(ByLibrary(files, fh::ENUM_BY_SHARE), std::out_of_range);
    EXPECT_THROW(ByCommand(files, fh::ENUM_BY_SHARE, GetParam()), std::out_of_range);
}

INSTANTIATE_TEST_SUITE_P(Workers, Enumeration, testing::Values(1, 2, 5));

}  // namespace
