// SPDX-License-Identifier: MIT
#include <string>

#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/journal.h"
#include "tests/unit/support/scripted_platform.h"

extern "C" {

void __real_free(void* block);
void __wrap_free(void* block);

/** The block of the connections is the library's to free, and only free() tells that it did. */
void __wrap_free(void* block) {
    static thread_local bool inside = false;
    if (block != nullptr && !inside) {
        inside = true;
        auto& live = unit::ThePlatform().live;
        const auto found = live.find(block);
        if (found != live.end()) {
            const unit::FailingNewPause pause;
            unit::Note("free", found->second);
            live.erase(found);
        }
        inside = false;
    }
    __real_free(block);
}

}  // extern "C"
