// SPDX-License-Identifier: MIT
#include "vorn/platform/string_list.h"

#include <syslog.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>

#include "platform/linux/lists/byte_arena.h"
#include "platform/linux/support/fault.h"
#include "support/owner.h"

namespace {

constexpr char kSource[] = "string_list";

/**
 * The texts lie in an arena that never moves them; the items are pointers to them. A caller takes
 * items back by lowering nItem: the texts' room is then lost until the list is emptied.
 */
struct List : KLIBC_SZLIST {
    size_t capacity = 0;
    support::Owner<const char*[], std::free> items;
    vornplatform::ByteArena arena;
};

List* Own(KLIBC_SZLIST* list) {
    return static_cast<List*>(list);
}

/** realloc, because it moves large arrays by their pages instead of copying them. */
void Reserve(List& list, size_t capacity) {
    void* grown = std::realloc(static_cast<void*>(list.items.get()), capacity * sizeof(char*));
    if (grown == nullptr) {
        throw std::bad_alloc();
    }
    static_cast<void>(list.items.release());
    list.items.reset(static_cast<const char**>(grown));
    list.capacity = capacity;
}

/** Half again as much: at most 12 bytes an item, whatever the count. */
void Grow(List& list) {
    if (list.nItem == INT_MAX) {
        throw std::bad_alloc();
    }
    Reserve(list, std::max<size_t>(16, list.capacity / 2 * 3));
}

}  // namespace

KLIBC_SZLIST* KLIBCSzListAlloc(int size) try {
    constexpr int kMaxHint = 64 * 1024;
    auto list = std::make_unique<List>();
    Reserve(*list, static_cast<size_t>(std::clamp(size, 16, kMaxHint)));
    list->nItem = 0;
    return list.release();
} catch (const std::exception& exception) {
    vornplatform::FailCaught(exception, kSource, __LINE__);
    return nullptr;
}

int KLIBCSzListPush(KLIBC_SZLIST** list, const char* text) try {
    if (list == nullptr || *list == nullptr || text == nullptr) {
        return vornplatform::Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    List& own = *Own(*list);
    const auto count = static_cast<size_t>(own.nItem);
    if (count == own.capacity) {
        Grow(own);
    }
    own.items[count] = own.arena.Copy(text, std::strlen(text) + 1);
    return ++own.nItem;
} catch (const std::exception& exception) {
    // Not every caller looks whether a text was stored, so what is left out has its log line.
    syslog(LOG_ERR, "%s:%d Out of memory: a text is left out of its list", kSource, __LINE__);
    return vornplatform::FailCaught(exception, kSource, __LINE__);
}

const char* KLIBCSzListGet(const KLIBC_SZLIST* list, int index) {
    if (list == nullptr || index < 0 || index >= list->nItem) {
        return nullptr;
    }
    return static_cast<const List*>(list)->items[static_cast<size_t>(index)];
}

void KLIBCSzListRemoveAll(KLIBC_SZLIST* list) {
    if (list == nullptr) {
        return;
    }
    list->nItem = 0;
    Own(list)->arena.Rewind();
}

void KLIBCSzListFree(KLIBC_SZLIST* list) {
    delete Own(list);
}
