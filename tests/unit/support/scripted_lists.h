// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_UNIT_SUPPORT_SCRIPTED_LISTS_H
#define VORN_TESTS_UNIT_SUPPORT_SCRIPTED_LISTS_H

#include <string>
#include <vector>

#include "vorn/platform/string_list.h"

namespace unit {

/** `list 1` for the first list allocated, and so on. */
std::string ListName(const KLIBC_SZLIST* list);

/** What an operation that fills a list does; moves the list. */
void AppendTexts(const std::string& operation, KLIBC_SZLIST** list,
                 const std::vector<std::string>& texts);

/** Changes the item count that a list shows, as if it had lost the items behind. */
void SetItemCount(const std::string& name, int count);

}  // namespace unit

#endif
