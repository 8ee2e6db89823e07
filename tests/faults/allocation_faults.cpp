// SPDX-License-Identifier: MIT
/**
 * @file
 * Lets every single allocation of every operation fail once, on the real host and with the real
 * stand-in. Run by allocation_faults.sh, which makes that host.
 *
 * Each fault has a process of its own: in a cold one the failing call is the first, in a warm one
 * another came before it, so that also what the stand-in remembers is in the way. After the fault
 * comes a good call, and then nothing may be left behind.
 */

#include <pwd.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <new>
#include <string>

#include "tests/faults/allowed_outcome.h"
#include "tests/faults/failing_malloc.h"
#include "tests/faults/kept_log.h"
#include "tests/faults/operations.h"

#ifdef VORN_ADDRESS_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

namespace {

using faults::Operation;

/** What a process without a fault found, in memory that all processes share. */
struct Reference {
    char outcome[1 << 16];
    long blocks;
    long descriptors;
};

Reference* reference = nullptr;

enum Verdict { kSurvived = 0, kWrong = 1, kNoSuchAllocation = 2 };

long OpenDescriptors() {
    const std::filesystem::directory_iterator folder("/proc/self/fd");
    return std::distance(begin(folder), end(folder));
}

std::string Call(const Operation& operation, int failingAllocation) {
    try {
        return operation.call(failingAllocation);
    } catch (const std::bad_alloc&) {
        return "throws bad_alloc";
    } catch (...) {
        return "throws";
    }
}

bool Expect(bool holds, const Operation& operation, int number, const std::string& what) {
    if (!holds) {
        std::printf("%s, allocation %d: %s\n", operation.name, number, what.c_str());
    }
    return holds;
}

/**
 * Whether memory is lost by a fault, after it came once. What is then more than without a fault
 * may be the C library's (syslog reads the time zone, for one), so it is lost only if the fault
 * loses it again.
 */
bool Loses(const Operation& operation, int number) {
    const long before = faults::LiveBlocks();
    if (before <= reference->blocks) {
        return false;
    }
    Call(operation, number);
    Call(operation, 0);
    return faults::LiveBlocks() > before;
}

Verdict TryFault(const Operation& operation, int number, bool warm) {
    if (warm) {
        Call(operation, 0);
    }
    faults::ForgetLog();
    const std::string outcome = Call(operation, number);
    if (!faults::FailingMalloc::Fired()) {
        return kNoSuchAllocation;
    }
    const std::string log = faults::KeptLog();
    const std::string wrong = faults::WhatIsWrong(operation, reference->outcome, outcome, log);
    bool holds = Expect(wrong.empty(), operation, number, wrong);
    const std::string next = Call(operation, 0);
    holds &= Expect(next == reference->outcome, operation, number, "the next call: " + next);
    holds &= Expect(!Loses(operation, number), operation, number, "memory lost");
    holds &= Expect(OpenDescriptors() == reference->descriptors, operation, number,
                    "descriptors left open");
#ifdef VORN_ADDRESS_SANITIZER
    holds &= Expect(__lsan_do_recoverable_leak_check() == 0, operation, number, "memory lost");
#endif
    return holds ? kSurvived : kWrong;
}

/** Runs something in a process of its own and returns its exit status, -1 for a crash. */
template <typename Part>
int InChild(const Part& part) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        const int status = part();
        std::fflush(nullptr);
        _exit(status);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int Measure(const Operation& operation) {
    for (int i = 0; i < 3; ++i) {
        const std::string outcome = Call(operation, 0);
        std::snprintf(reference->outcome, sizeof(reference->outcome), "%s", outcome.c_str());
    }
    reference->blocks = faults::LiveBlocks();
    reference->descriptors = OpenDescriptors();
    return std::strncmp(reference->outcome, "ok", 2) == 0 &&
                   std::strstr(reference->outcome, operation.part) != nullptr
               ? 0
               : 1;
}

/** Lets one allocation after the other fail, until there is none of that number. */
bool Sweep(const Operation& operation, bool warm, int& tried) {
    bool good = true;
    for (int number = 1;; ++number) {
        const int verdict = InChild([&] { return TryFault(operation, number, warm); });
        if (verdict == kNoSuchAllocation) {
            std::printf("%-28s %s: %d faults\n", operation.name, warm ? "warm" : "cold",
                        number - 1);
            return good;
        }
        good &= Expect(verdict != -1, operation, number, "crash") && verdict == kSurvived;
        ++tried;
    }
}

}  // namespace

int main() {
    // The C library's own first look into nsswitch.conf ends the process when memory is short.
    // A user that nobody has makes it load all it asks.
    getpwnam("no-such-user");
    syslog(LOG_DEBUG, "allocation faults begin");  // reads the time zone
    reference = static_cast<Reference*>(mmap(nullptr, sizeof(Reference), PROT_READ | PROT_WRITE,
                                             MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    bool good = true;
    int tried = 0;
    for (const Operation& operation : faults::Operations()) {
        if (InChild([&] { return Measure(operation); }) != 0) {
            std::printf("%s fails without a fault: %s\n", operation.name, reference->outcome);
            return 1;
        }
        good &= Sweep(operation, false, tried);
        good &= Sweep(operation, true, tried);
    }
    std::printf("%d allocation faults tried, %s\n", tried, good ? "all survived" : "NOT survived");
    return good ? 0 : 1;
}
