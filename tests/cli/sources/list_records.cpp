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

using Records = std::list<VORN::FileHandle::OpenedFile>;

cli::SourceKind KindOf(const char* name) {
    return std::strcmp(name, "walk") == 0   ? cli::SourceKind::kWalk
           : std::strcmp(name, "auto") == 0 ? cli::SourceKind::kAuto
                                            : cli::SourceKind::kIterator;
}

void Take(cli::RecordSource& source, Records& records, int& result) {
    do {
        result = source.Next(records);
    } while (result > 0);
}

int List(cli::RecordSource& source, size_t threads) {
    std::vector<Records> records(threads);
    std::vector<int> results(threads);
    std::vector<std::thread> running;
    for (size_t i = 1; i < threads; ++i) {
        running.emplace_back(Take, std::ref(source), std::ref(records[i]), std::ref(results[i]));
    }
    Take(source, records[0], results[0]);
    for (std::thread& each : running) {
        each.join();
    }
    for (size_t i = 0; i < threads; ++i) {
        if (results[i] < 0) {
            std::fputs("a thread has failed\n", stderr);
            return 2;
        }
        for (auto& file : records[i]) {
            std::printf("%s %s%c", file.getPidStr().c_str(), file.getFullPath().c_str(), 0);
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
