// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_STRING_LIST_H
#define VORN_PLATFORM_STRING_LIST_H

/**
 * @file
 * The platform's growable list of C strings.
 */

#include "vorn/platform/layout.h"

VORN_PLATFORM_BEGIN

/** What callers see of a list: its item count. The rest belongs to the implementation. */
typedef struct KLIBC_SZLIST {
    int nItem;
} KLIBC_SZLIST;

VORN_PLATFORM_ASSERT(offsetof(KLIBC_SZLIST, nItem) == 0);

/**
 * Makes an empty list.
 *
 * @param size  how much room to begin with; a hint, the list grows as needed
 * @return the list, owned by the caller (KLIBCSzListFree); null when memory is short
 */
KLIBC_SZLIST* KLIBCSzListAlloc(int size);

/**
 * Appends a copy of a text.
 *
 * @param list  address of the caller's handle, which may be moved
 * @param text  the NUL-terminated text to copy, any bytes
 * @return the new item count, or a negative value on failure: the list is then as it was
 */
int KLIBCSzListPush(KLIBC_SZLIST** list, const char* text);

/**
 * One text of the list, by 0-based index. It belongs to the list and stays valid while the list
 * lives and is not emptied. Null when there is no list or no such item.
 */
const char* KLIBCSzListGet(const KLIBC_SZLIST* list, int index);

/** Empties the list and keeps it for reuse. Null is allowed. */
void KLIBCSzListRemoveAll(KLIBC_SZLIST* list);

/** Frees the list and its texts. Null is allowed. */
void KLIBCSzListFree(KLIBC_SZLIST* list);

VORN_PLATFORM_END

#endif
