// One call of the library, by itself: prints the seconds that it took and the records it gave.
// With a number, so many calls; then it also prints the resident size after the first and the last.

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <list>

#include "vorn/filehandle.h"

namespace {

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

}  // namespace

int main(int argc, char** argv) {
    const int calls = argc > 1 ? atoi(argv[1]) : 1;
    long firstSize = 0;
    for (int i = 0; i < calls; ++i) {
        std::list<VORN::FileHandle::OpenedFile> files;
        const auto begin = std::chrono::steady_clock::now();
        const int result =
            VORN::FileHandle::VORNEnumOpenedFile(files, VORN::FileHandle::ENUM_BY_VOLUME);
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
        if (result < 0) {
            fprintf(stderr, "library_call: the enumeration failed, see the system log\n");
            return 2;
        }
        if (i == 0) {
            firstSize = ResidentKiB();
        }
        if (calls == 1) {
            printf("%.6f %zu\n", seconds.count(), files.size());
        }
    }
    if (calls > 1) {
        printf("%d calls, resident KiB after the first %ld, after the last %ld\n", calls, firstSize,
               ResidentKiB());
    }
    return 0;
}
