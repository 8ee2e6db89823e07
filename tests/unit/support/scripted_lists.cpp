// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <deque>

#include "tests/unit/support/failing_calls.h"
#include "tests/unit/support/failing_new.h"
#include "tests/unit/support/journal.h"
#include "tests/unit/support/scripted_lists.h"
#include "tests/unit/support/scripted_platform.h"

namespace {

using unit::ThePlatform;

struct List : KLIBC_SZLIST {
    std::deque<std::string> texts;
};

List* Whole(KLIBC_SZLIST* list) {
    return static_cast<List*>(list);
}

/** The old handle goes to waste, the texts stay where they are. */
void Move(KLIBC_SZLIST** list) {
    List* old = Whole(*list);
    List* moved = new List;
    moved->texts.swap(old->texts);
    moved->nItem = old->nItem;
    ThePlatform().live[moved] = unit::ListName(old);
    ThePlatform().live.erase(old);
    old->nItem = -1;
    delete old;
    *list = moved;
}

bool IsLive(const KLIBC_SZLIST* list) {
    return ThePlatform().live.count(list) != 0;
}

}  // namespace

namespace unit {

std::string ListName(const KLIBC_SZLIST* list) {
    if (list == nullptr) {
        return "null";
    }
    const auto found = ThePlatform().live.find(list);
    return found != ThePlatform().live.end() ? found->second : "dead list";
}

void SetItemCount(const std::string& name, int count) {
    for (const auto& [object, objectName] : ThePlatform().live) {
        if (objectName == name) {
            static_cast<List*>(const_cast<void*>(object))->nItem = count;
            return;
        }
    }
    ADD_FAILURE() << name << " is not alive";
}

void AppendTexts(const std::string& operation, KLIBC_SZLIST** list,
                 const std::vector<std::string>& texts) {
    if (list == nullptr || !IsLive(*list)) {
        ADD_FAILURE() << "the platform was given a list that is not alive";
        return;
    }
    if (ThePlatform().listDroppers.count(operation) != 0) {
        ThePlatform().live.erase(*list);
        delete Whole(*list);
        *list = nullptr;
        return;
    }
    Move(list);
    for (const std::string& text : texts) {
        Whole(*list)->texts.push_back(text);
    }
    (*list)->nItem += static_cast<int>(texts.size());
}

}  // namespace unit

extern "C" {

KLIBC_SZLIST* KLIBCSzListAlloc(int size) {
    const unit::FailingNewPause pause;
    unit::Note("KLIBCSzListAlloc", size);
    const int call = ++ThePlatform().allocCalls;
    if (unit::Fails("KLIBCSzListAlloc") || ThePlatform().failingAllocs.count(call) != 0) {
        unit::SetPlatformError(unit::ScriptedPlatform::kAllocError);
        return nullptr;
    }
    List* list = new List;
    list->nItem = 0;
    ThePlatform().live[list] = "list " + std::to_string(call);
    return list;
}

int KLIBCSzListPush(KLIBC_SZLIST** list, const char* text) {
    const unit::FailingNewPause pause;
    unit::Note("KLIBCSzListPush", unit::ListName(*list), text);
    if (unit::Fails("KLIBCSzListPush") ||
        ThePlatform().failingPushes.count(++ThePlatform().pushCalls) != 0) {
        unit::SetPlatformError(unit::ScriptedPlatform::kPushError);
        return -1;
    }
    unit::AppendTexts("KLIBCSzListPush", list, {text});
    return (*list)->nItem;
}

const char* KLIBCSzListGet(const KLIBC_SZLIST* list, int index) {
    if (list == nullptr || !IsLive(list)) {
        ADD_FAILURE() << "KLIBCSzListGet from a list that is not alive";
        return nullptr;
    }
    if (index < 0 || index >= list->nItem) {
        ADD_FAILURE() << "KLIBCSzListGet of item " << index << " of " << list->nItem;
        return nullptr;
    }
    return static_cast<const List*>(list)->texts[static_cast<size_t>(index)].c_str();
}

void KLIBCSzListRemoveAll(KLIBC_SZLIST* list) {
    const unit::FailingNewPause pause;
    unit::Note("KLIBCSzListRemoveAll", unit::ListName(list));
    if (list == nullptr) {
        return;
    }
    if (!IsLive(list)) {
        ADD_FAILURE() << "KLIBCSzListRemoveAll of a list that is not alive";
        return;
    }
    Whole(list)->texts.clear();
    list->nItem = 0;
}

void KLIBCSzListFree(KLIBC_SZLIST* list) {
    const unit::FailingNewPause pause;
    unit::Note("KLIBCSzListFree", unit::ListName(list));
    if (list == nullptr) {
        return;
    }
    if (ThePlatform().live.erase(list) == 0) {
        ADD_FAILURE() << "KLIBCSzListFree of a list that is not alive";
        return;
    }
    delete Whole(list);
}

}  // extern "C"
