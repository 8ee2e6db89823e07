#include "vorn/platform/string_list.h"

#include <syslog.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "platform/linux/lists/byte_arena.h"
#include "platform/linux/support/fault.h"

namespace {

constexpr char kSource[] = "string_list";

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

/**
 * The texts lie in an arena that never moves them; the items are pointers to them. A caller takes
 * items back by lowering nItem: the texts' room is then lost until the list is emptied.
 */
struct List : KLIBC_SZLIST {
    size_t capacity = 0;
    std::unique_ptr<const char*[], FreeDeleter> items;
    vornplatform::TextArena arena;
};

List* Own(KLIBC_SZLIST* list) {
    return static_cast<List*>(list);
}

/** realloc, because it moves large arrays by their pages instead of copying them. */
bool Reserve(List& list, size_t capacity) {
    void* grown = std::realloc(static_cast<void*>(list.items.get()), capacity * sizeof(char*));
    if (grown == nullptr) {
        return false;
    }
    static_cast<void>(list.items.release());
    list.items.reset(static_cast<const char**>(grown));
    list.capacity = capacity;
    return true;
}

/** Half again as much: at most 12 bytes an item, whatever the count. */
bool Grow(List& list) {
    return list.nItem < INT_MAX && Reserve(list, std::max<size_t>(16, list.capacity / 2 * 3));
}

/** Not every caller looks whether a text was stored, so what is left out has its log line. */
int FailToStore(int line) {
    syslog(LOG_ERR, "%s:%d Out of memory: a text is left out of its list", kSource, line);
    return vornplatform::Fail(KLIBC_ERR_RESOURCE, kSource, line);
}

}  // namespace

KLIBC_SZLIST* KLIBCSzListAlloc(int size) {
    constexpr int kMaxHint = 64 * 1024;
    std::unique_ptr<List> list(new (std::nothrow) List());
    if (!list || !Reserve(*list, static_cast<size_t>(std::clamp(size, 16, kMaxHint)))) {
        KLIBCErrSetEx(KLIBC_ERR_RESOURCE, kSource, __LINE__);
        return nullptr;
    }
    list->nItem = 0;
    return list.release();
}

int KLIBCSzListPush(KLIBC_SZLIST** list, const char* text) {
    if (list == nullptr || *list == nullptr || text == nullptr) {
        return vornplatform::Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    List& own = *Own(*list);
    const auto count = static_cast<size_t>(own.nItem);
    if (count == own.capacity && !Grow(own)) {
        return FailToStore(__LINE__);
    }
    const char* copy = own.arena.Copy(text, std::strlen(text) + 1);
    if (copy == nullptr) {
        return FailToStore(__LINE__);
    }
    own.items[count] = copy;
    return ++own.nItem;
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
