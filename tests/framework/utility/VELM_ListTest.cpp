#include "VELM_List.h"

#include <string>

#include <gtest/gtest.h>

TEST(VelmList, LinksInFrontOfAPositionAndKeepsOthersValid) {
    VELM_List<std::string> list;
    EXPECT_EQ(list.begin(), list.end());
    const auto second = list.append("second");
    const auto first = list.insert(second, "first");
    list.insert(list.end(), "third");
    const auto after = list.remove(second);
    EXPECT_EQ(*after, "third");
    EXPECT_EQ(*first, "first");
    EXPECT_EQ(list.size(), 2U);
    auto position = list.begin();
    EXPECT_EQ(*position++, "first");
    EXPECT_EQ(position, after);
    VELM_List<std::string>::ConstIterator last = list.end();
    EXPECT_EQ(*--last, "third");
    EXPECT_EQ(*last--, "third");
    EXPECT_EQ(*last++, "first");
    EXPECT_EQ(*last, "third");
    list.clear();
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.begin(), list.end());
}
