// SPDX-License-Identifier: MIT
#ifndef VORN_TESTS_PLATFORM_SUPPORT_STRING_LIST_H
#define VORN_TESTS_PLATFORM_SUPPORT_STRING_LIST_H

#include <string>
#include <vector>

#include "vorn/platform/string_list.h"

/** Owner of a platform list. */
class StringList {
public:
    StringList() : list_(KLIBCSzListAlloc(512)) {}
    ~StringList() { KLIBCSzListFree(list_); }
    StringList(const StringList&) = delete;
    StringList& operator=(const StringList&) = delete;

    KLIBC_SZLIST* Get() const { return list_; }
    KLIBC_SZLIST** Address() { return &list_; }
    int Push(const std::string& text) const {
        KLIBC_SZLIST* list = list_;
        return KLIBCSzListPush(&list, text.c_str());
    }
    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (int i = 0; i < list_->nItem; ++i) {
            texts.emplace_back(KLIBCSzListGet(list_, i));
        }
        return texts;
    }

private:
    KLIBC_SZLIST* list_;
};

#endif
