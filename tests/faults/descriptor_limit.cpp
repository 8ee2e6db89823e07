// SPDX-License-Identifier: MIT
// Calls each operation of the stand-in with few descriptors left: it gives its whole answer or
// fails with a code, and never passes off for the whole what it could still open.

#include <pwd.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "tests/faults/operations.h"

namespace {

using faults::Operation;

/** With so many left every operation has its whole answer. */
constexpr rlim_t kEnough = 8;

/** What an operation says without a limit; shared with the children. */
struct Reference {
    char outcome[1 << 16];
};
Reference* reference;

/** Lets only so many more descriptors be opened. */
class FewDescriptors {
public:
    explicit FewDescriptors(rlim_t left) {
        getrlimit(RLIMIT_NOFILE, &before_);
        const int next = dup(0);
        close(next);
        const rlimit few = {static_cast<rlim_t>(next) + left, before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

private:
    rlimit before_ = {};
};

/** In a process of its own, so that nothing is remembered from an earlier call. */
template <typename Part>
bool InChild(const Part& part) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        const bool good = part();
        std::fflush(nullptr);
        _exit(good ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool Measure(const Operation& operation) {
    const std::string outcome = operation.call(0);
    std::snprintf(reference->outcome, sizeof(reference->outcome), "%s", outcome.c_str());
    return outcome.rfind("ok", 0) == 0 && outcome == reference->outcome &&
           outcome.find(operation.part) != std::string::npos;
}

bool TryWith(const Operation& operation, rlim_t left) {
    const auto call = [&] {
        const FewDescriptors few(left);
        return operation.call(0);
    };
    const std::string outcome = call();
    const std::string next = operation.call(0);
    const bool mayFail = left < kEnough;
    const bool good = outcome == reference->outcome || (mayFail && outcome == "failed 0x0100");
    if (!good)
        std::printf("%s, %d left: %s\n", operation.name, static_cast<int>(left), outcome.c_str());
    if (next != reference->outcome)
        std::printf("%s, after %d left: %s\n", operation.name, static_cast<int>(left),
                    next.c_str());
    return good && next == reference->outcome;
}

bool Sweep(const Operation& operation) {
    if (!InChild([&] { return Measure(operation); })) {
        std::printf("%s fails without a limit: %s\n", operation.name, reference->outcome);
        return false;
    }
    bool good = true;
    for (rlim_t left = 0; left <= kEnough; ++left)
        good &= InChild([&] { return TryWith(operation, left); });
    std::printf("%-28s %s\n", operation.name, good ? "good" : "NOT good");
    return good;
}

}  // namespace

int main() {
    // The C library loads its name services once, and for good those that it could open then.
    getpwnam("no-such-user");
    reference = static_cast<Reference*>(mmap(nullptr, sizeof(Reference), PROT_READ | PROT_WRITE,
                                             MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    bool good = true;
    for (const Operation& operation : faults::Operations()) {
        // What may leave things out says where.
        if (operation.kind == faults::Kind::kC)
            good &= Sweep(operation);
    }
    return good ? 0 : 1;
}
