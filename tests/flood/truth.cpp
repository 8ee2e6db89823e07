// SPDX-License-Identifier: MIT
#include "tests/flood/truth.h"

#include <sys/mman.h>

#include <cstdio>
#include <new>
#include <stdexcept>

namespace flood {
namespace {

struct Named {
    unsigned slot, generation;
    int pid;
};

/** Also of a file that was renamed (".renamed") or deleted since. */
bool Parse(const std::string& path, Named& named) {
    const std::size_t name = path.rfind("/s");
    return name != std::string::npos &&
           sscanf(path.c_str() + name, "/s%u-g%u-p%d", &named.slot, &named.generation,
                  &named.pid) == 3 &&
           named.slot < kSlots;
}

/** A record of an SSH session: its shell writes only its own pid into the name. */
bool IsSession(const std::string& path, const std::string& pid) {
    const std::size_t name = path.rfind("/ssh-p");
    if (name == std::string::npos)
        return false;
    const std::string writer = path.substr(name + 6);
    return writer == pid || writer == pid + " (deleted)";
}

/** How often a slot that was open throughout has to be listed. */
unsigned Expected(std::size_t slot, int enumby) {
    return slot == kUnsharedSlot && enumby == VORN::FileHandle::ENUM_BY_SHARE ? 0 : 1;
}

bool WasOpen(std::uint32_t generation, const Moment& before, const Moment& after) {
    return generation > before.closed && generation <= after.begun;
}

/** The generation that was open throughout, 0 for none. */
std::uint32_t StableGeneration(const Moment& before, const Moment& after) {
    const bool same = before.opened == after.opened && before.closing == after.closing;
    return same && before.opened == before.closing + 1 ? before.opened : 0;
}

}  // namespace

Truth* Truth::Make() {
    void* memory =
        mmap(nullptr, sizeof(Truth), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("no shared memory");
    return new (memory) Truth;
}

std::vector<Moment> Truth::Read() const {
    std::vector<Moment> moments;
    moments.reserve(kSlots);
    for (const Slot& slot : slots_) {
        // "closed" first and "begun" last: what changes meanwhile widens what is allowed.
        const std::uint32_t closed = slot.closed;
        const std::uint32_t closing = slot.closing;
        const std::uint32_t opened = slot.opened;
        moments.push_back({slot.begun, opened, closing, closed});
    }
    return moments;
}

std::string NameOf(const std::string& folder, std::size_t slot, std::uint32_t generation,
                   pid_t pid) {
    return folder + "/s" + std::to_string(slot) + "-g" + std::to_string(generation) + "-p" +
           std::to_string(pid);
}

void Check(std::list<VORN::FileHandle::OpenedFile>& list, int enumby,
           const std::vector<Moment>& before, const std::vector<Moment>& after, Verdict& verdict) {
    std::vector<unsigned> seen(kSlots);
    for (auto& file : list) {
        ++verdict.checked;
        const std::string path = file.getFullPath();
        Named named{};
        if (!Parse(path, named)) {
            if (!IsSession(path, file.getPidStr()))
                verdict.wrong.push_back("nobody opened " + path);
            continue;
        }
        if (std::to_string(named.pid) != file.getPidStr())
            verdict.wrong.push_back("wrong pid " + file.getPidStr() + " for " + path);
        if (!WasOpen(named.generation, before[named.slot], after[named.slot]))
            verdict.wrong.push_back("not open during the call: " + path);
        if (named.generation == StableGeneration(before[named.slot], after[named.slot]))
            ++seen[named.slot];
    }
    for (std::size_t slot = 0; slot < kSlots; ++slot) {
        const std::uint32_t generation = StableGeneration(before[slot], after[slot]);
        verdict.stable += generation != 0 ? 1 : 0;
        if (generation != 0 && seen[slot] != Expected(slot, enumby))
            verdict.wrong.push_back("slot " + std::to_string(slot) + " generation " +
                                    std::to_string(generation) + " is in the list " +
                                    std::to_string(seen[slot]) + " times");
    }
}

}  // namespace flood
