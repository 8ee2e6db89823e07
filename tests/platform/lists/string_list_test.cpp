// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <malloc.h>

#include <string>
#include <vector>

#include "tests/platform/support/string_list.h"
#include "vorn/platform/error.h"

TEST(StringList, KeepsTextsWhereTheyAreWhileItGrows) {
    const StringList list;
    std::vector<const char*> places;
    for (int i = 0; i < 100000; ++i) {
        ASSERT_EQ(list.Push(std::to_string(i)), i + 1);
        places.push_back(KLIBCSzListGet(list.Get(), i));
    }
    for (int i = 0; i < 100000; ++i) {
        ASSERT_EQ(KLIBCSzListGet(list.Get(), i), places[static_cast<size_t>(i)]);
        ASSERT_EQ(places[static_cast<size_t>(i)], std::to_string(i));
    }
}

TEST(StringList, HoldsTextsLongerThanAChunkBetweenShortOnes) {
    const StringList list;
    const std::vector<std::string> texts = {"a", std::string(1000000, 'x'), "", "b\xff\n"};
    for (int round = 0; round < 3; ++round) {
        for (const std::string& text : texts) {
            ASSERT_GT(list.Push(text), 0);
        }
        EXPECT_EQ(list.Texts(), texts);
        KLIBCSzListRemoveAll(list.Get());
        EXPECT_EQ(list.Get()->nItem, 0);
        EXPECT_EQ(KLIBCSzListGet(list.Get(), 0), nullptr);
    }
}

TEST(StringList, CostsNoMoreThanItsBytesAndSixteenAnItem) {
    constexpr int kItems = 1000000;
    for (const size_t length : {size_t{1}, size_t{7}, size_t{255}}) {
        const size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
        const StringList list;
        const std::string text(length, 'n');
        for (int i = 0; i < kItems; ++i) {
            list.Push(text);
        }
        const size_t cost = mallinfo2().uordblks + mallinfo2().hblkhd - before;
        EXPECT_LE(cost, kItems * (length + 16)) << length;
    }
}

TEST(StringList, ReusesItsMemoryWhenEmptied) {
    const StringList list;
    const auto fill = [&list] {
        for (int i = 0; i < 250000; ++i) {
            list.Push(std::to_string(i));
        }
    };
    fill();
    const size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    for (int round = 0; round < 5; ++round) {
        KLIBCSzListRemoveAll(list.Get());
        fill();
    }
    EXPECT_EQ(mallinfo2().uordblks + mallinfo2().hblkhd, before);
    EXPECT_EQ(list.Get()->nItem, 250000);
}

TEST(StringList, AnswersNothingOutsideItsItems) {
    const StringList list;
    list.Push("only");
    EXPECT_EQ(KLIBCSzListGet(list.Get(), -1), nullptr);
    EXPECT_EQ(KLIBCSzListGet(list.Get(), 1), nullptr);
    EXPECT_EQ(KLIBCSzListGet(nullptr, 0), nullptr);
    KLIBCSzListRemoveAll(nullptr);
    KLIBCSzListFree(nullptr);
}

TEST(StringList, RefusesNullsAndStaysAsItWas) {
    StringList list;
    list.Push("only");
    KLIBC_SZLIST* none = nullptr;
    for (const int result : {KLIBCSzListPush(list.Address(), nullptr),
                             KLIBCSzListPush(nullptr, "x"), KLIBCSzListPush(&none, "x")}) {
        EXPECT_LT(result, 0);
    }
    EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_BAD_PARAM);
    EXPECT_EQ(list.Texts(), std::vector<std::string>{"only"});
}

TEST(StringList, TakesAnySizeAsAHint) {
    for (const int size : {-1, 0, 1, 512, 2147483647}) {
        KLIBC_SZLIST* list = KLIBCSzListAlloc(size);
        ASSERT_NE(list, nullptr) << size;
        EXPECT_EQ(list->nItem, 0);
        EXPECT_EQ(KLIBCSzListPush(&list, "x"), 1);
        KLIBCSzListFree(list);
    }
}
