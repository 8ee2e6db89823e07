// SPDX-License-Identifier: MIT
/**
 * @file
 * Prints the records of one source of records, as it gives them, and what it says of them.
 *
 *     vorn_list_records auto|iterator|walk [THREADS]
 *
 * Standard output: "PID PATH" with a null byte behind each, portion by portion, a thread's one
 * after the other's. Standard error: the notice.
 *
 * Exit status: 0; 2 with the reason on standard error.
 */

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <functional>
#include <thread>
#include <vector>

#include "cli/failure.h"
#include "cli/question/sources/sources.h"

namespace {

cli::SourceKind KindOf(const char* name) {
    return std::strcmp(name, "walk") == 0   ? cli::SourceKind::kWalk
           : std::strcmp(name, "auto") == 0 ? cli::SourceKind::kAuto
                                            : cli::SourceKind::kIterator;
}

/** What one thread takes. */
struct Taken {
    cli::Files files;
    cli::RecordTexts texts;
    int result = 0;
};

void Take(cli::RecordSource& source, Taken& taken) {
    do {
        taken.result = source.Next(taken.files, taken.texts);
    } while (taken.result > 0);
}

int List(cli::RecordSource& source, size_t threads) {
    std::vector<Taken> taken(threads);
    std::vector<std::thread> running;
    for (size_t i = 1; i < threads; ++i) {
        running.emplace_back(Take, std::ref(source), std::ref(taken[i]));
    }
    Take(source, taken[0]);
    for (std::thread& each : running) {
        each.join();
    }
    for (const Taken& each : taken) {
        if (each.result < 0) {
            std::fputs("a thread has failed\n", stderr);
            return 2;
        }
        for (const cli::FileRecord& file : each.files) {
            std::printf("%s %.*s%c", file.process->pid.c_str(),
                        static_cast<int>(file.fullPath.size()), file.fullPath.data(), 0);
        }
    }
    std::fputs(source.Notice().c_str(), stderr);
    return 0;
}

}  // namespace

int main(int count, char** arguments) try {
    const size_t threads = count > 2 ? std::strtoul(arguments[2], nullptr, 10) : 1;
    return List(*cli::MakeSource(KindOf(count > 1 ? arguments[1] : "auto")), threads);
} catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 2;
}
