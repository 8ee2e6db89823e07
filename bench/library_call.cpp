// SPDX-License-Identifier: MIT
// The library's call by itself.
//
//     library_call [volume|share]      seconds of one call, and the records it gave
//     library_call again               the same for the second call, when what the platform
//                                      remembers is in place, by share
//     library_call stages              seconds of each stage, a line each
//     library_call memory              bytes a record takes beside its texts
//     library_call soak CALLS          resident size and descriptors after the tenth call and the
//     last

#include <dirent.h>
#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <chrono>
#include <list>
#include <string>

#include "vorn/filehandle.h"

using namespace VORN::FileHandle;

namespace {

using List = std::list<OpenedFile>;

double Call(List& files, int enumby) {
    const auto begin = std::chrono::steady_clock::now();
    const int result = VORNEnumOpenedFile(files, enumby);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    if (result < 0) {
        fprintf(stderr, "library_call: the enumeration failed, see the system log\n");
        exit(2);
    }
    return seconds.count();
}

void PrintOnce(int enumby) {
    List files;
    const double seconds = Call(files, enumby);
    printf("%.6f %zu\n", seconds, files.size());
}

void PrintAgain() {
    List files;
    Call(files, ENUM_BY_SHARE);
    files.clear();
    const double seconds = Call(files, ENUM_BY_SHARE);
    printf("%.6f %zu\n", seconds, files.size());
}

void Time(const char* name, int (*stage)(List&), List& files) {
    const auto begin = std::chrono::steady_clock::now();
    if (stage(files) < 0) {
        fprintf(stderr, "library_call: %s failed, see the system log\n", name);
        exit(2);
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    printf("%.6f %s\n", seconds.count(), name);
}

int FilterByVolume(List& files) {
    return FilterPath(files, ENUM_BY_VOLUME);
}
int SortByPath(List& files) {
    VORNSortOpenedFile(files, "path", true);
    return 0;
}

void PrintStages() {
    List files;
    Time("scan", GetProcOpenedFileInVolume, files);
    Time("filter", FilterByVolume, files);
    Time("services", GetServiceName, files);
    Time("connections", UpdateConnectionInfo, files);
    Time("sort", SortByPath, files);
    Time("duplicates", EraseAdjacentDuplicates, files);
    Time("hidden", LabelHidden, files);
    Time("folders", LabelFolder, files);
}

/** Texts of 16 bytes and more live outside the record, with their terminator. */
size_t TextBytes(List& files) {
    size_t bytes = 0;
    for (OpenedFile& file : files) {
        for (const std::string& text : {file.getFullPath(), file.getPath(), file.getFilename(),
                                        file.getService(), file.getHost(), file.getUser()}) {
            bytes += text.size() > 15 ? text.size() + 1 : 0;
        }
    }
    return bytes;
}

void PrintMemory() {
    List files;
    const size_t before = mallinfo2().uordblks;
    Call(files, ENUM_BY_VOLUME);
    const size_t after = mallinfo2().uordblks;
    printf(
        "%.1f bytes a record beside its texts, %zu records\n",
        static_cast<double>(after - before - TextBytes(files)) / static_cast<double>(files.size()),
        files.size());
}

long ResidentKiB() {
    long size = 0;
    long resident = 0;
    if (FILE* file = fopen("/proc/self/statm", "r")) {
        if (fscanf(file, "%ld %ld", &size, &resident) != 2) {
            resident = 0;
        }
        fclose(file);
    }
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

int OpenDescriptors() {
    int count = 0;
    if (DIR* folder = opendir("/proc/self/fd")) {
        while (readdir(folder) != nullptr) {
            ++count;
        }
        closedir(folder);
    }
    return count - 3;  // ".", ".." and the folder itself
}

void Soak(int calls) {
    for (int i = 1; i <= calls; ++i) {
        List files;
        Call(files, ENUM_BY_SHARE);
        if (i == 10 || i == calls) {
            printf("after %d calls: %ld KiB resident, %d descriptors\n", i, ResidentKiB(),
                   OpenDescriptors());
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "volume";
    if (what == "again") {
        PrintAgain();
    } else if (what == "stages") {
        PrintStages();
    } else if (what == "memory") {
        PrintMemory();
    } else if (what == "soak") {
        Soak(argc > 2 ? atoi(argv[2]) : 10000);
    } else {
        PrintOnce(what == "share" ? ENUM_BY_SHARE : ENUM_BY_VOLUME);
    }
    return 0;
}
