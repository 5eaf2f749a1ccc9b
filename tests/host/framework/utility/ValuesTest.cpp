#include <cstring>

#include <gtest/gtest.h>

#include "String.h"
#include "TYPPtr.h"
#include "TYTime.h"
#include "VELM_List.h"
#include "VELM_UUID.h"
#include "XCode.h"

namespace {

std::uintptr_t wordOf(const XCode& status) {
    static_assert(sizeof(XCode) == sizeof(std::uintptr_t), "a status is one word");
    std::uintptr_t word;
    std::memcpy(&word, &status, sizeof word);
    return word;
}

struct Counted {
    unsigned count = 1;
    TYLock* lock = nullptr;
    unsigned addRef() { return ++count; }
    unsigned release() { return --count; }
    TYLock* getLock() const { return lock; }
};

struct RecordingLock : TYLock {
    int held = 0;
    void lock() override { ++held; }
    void unlock() override { --held; }
};

} // namespace

TEST(XCode, IsAWordWithoutAMessageAndARecordWithOne) {
    EXPECT_EQ(wordOf(XCode()), 1U);
    EXPECT_EQ(wordOf(XCode(0)), 1U);
    EXPECT_EQ(wordOf(XCode(-1)), ~std::uintptr_t{0});
    EXPECT_EQ(wordOf(XCode(5)), 11U);
    for (const std::int32_t code : {-(1 << 30), (1 << 30) - 1})
        EXPECT_EQ(wordOf(XCode(code)) & 1U, 1U) << code;
    for (const std::int32_t code : {-(1 << 30) - 1, 1 << 30, INT32_MIN, INT32_MAX})
        EXPECT_EQ(wordOf(XCode(code)) & 1U, 0U) << code;
    EXPECT_EQ(wordOf(XCode(-1, "TEXT")) & 1U, 0U);
    for (const std::int32_t code : {0, 1, -1, -(1 << 30), (1 << 30) - 1, -(1 << 30) - 1, 1 << 30, INT32_MIN})
        EXPECT_EQ(XCode(code).getCode(), code);
}

TEST(XCode, CopiesOwnTheirMessage) {
    XCode copy;
    {
        XCode original(-2, "TEXT");
        copy = original;
        original = XCode();
        EXPECT_EQ(original.getMessage(), String::EMPTY());
    }
    XCode moved(std::move(copy));
    const XCode& itself = moved;
    moved = itself;
    EXPECT_EQ(moved.getCode(), -2);
    EXPECT_EQ(moved.getMessage(), String("TEXT"));
}

TEST(VelmUuid, KeepsTheFirstThreeGroupsLittleEndianAndComparesByValue) {
    const auto value = VELM_UUID::parse("00112233-4455-6677-8899-aAbBcCdDeEfF");
    const std::uint8_t expected[] = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                                     0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
    EXPECT_EQ(std::memcmp(value.bytes, expected, sizeof expected), 0);
    const VELM_UUID one(value, "one");
    EXPECT_EQ(one, VELM_UUID(value, "two"));
    auto other = value;
    other.bytes[15] ^= 1;
    EXPECT_NE(one, VELM_UUID(other, "one"));
}

TEST(VelmUuid, CountsItsHandlesButNeverThoseOfAStaticOne) {
    VELM_UUID::Rep counted{{}, {1}, "counted"}; // the test's own reference keeps it from being freed
    VELM_UUID::Rep fixed{{}, {VELM_UUID::STATIC_COUNT}, "static"};
    {
        const VELM_UUID first(counted);
        VELM_UUID second(first);
        EXPECT_EQ(counted.count, 3U);
        const VELM_UUID constant(fixed);
        second = constant;
        EXPECT_EQ(counted.count, 2U);
        EXPECT_STREQ(second.getName(), "static");
        const VELM_UUID& itself = second;
        second = itself;
        EXPECT_EQ(fixed.count, VELM_UUID::STATIC_COUNT);
    }
    EXPECT_EQ(counted.count, 1U);
    EXPECT_EQ(fixed.count, VELM_UUID::STATIC_COUNT);
}

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
    VELM_List<std::string>::ConstIterator last = list.end();
    EXPECT_EQ(*--last, "third");
    list.clear();
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.begin(), list.end());
}

TEST(TYTime, SubtractsWithABorrowAndWraps) {
    EXPECT_EQ(TYTime(12, 100000000) - TYTime(10, 900000000), TYTime(1, 200000000));
    EXPECT_EQ(TYTime(5, 5) - TYTime(5, 5), TYTime(0, 0));
    EXPECT_EQ(TYTime(0, 0) - TYTime(1, 0), TYTime(0xFFFFFFFF, 0));
    TYTime time(1, 2);
    EXPECT_FALSE(time.getSystemClock(0).isSuccess());
    EXPECT_EQ(time, TYTime(1, 2));
    EXPECT_TRUE(time.getSystemClock(TYTime::MONOTONIC_CLOCK).isSuccess());
    EXPECT_NE(time, TYTime(1, 2));
}

TEST(TYPPtr, CountsAndLocksTheObjectItPointsTo) {
    Counted object;
    RecordingLock lock;
    {
        TYPPtr<Counted> one(&object);
        TYPPtr<Counted> two = one;
        EXPECT_EQ(object.count, 3U);
        TYPPtr<Counted> three = std::move(two);
        two = one;
        one = one.get();
        EXPECT_EQ(object.count, 4U);
        EXPECT_EQ(TYPPtr<Counted>::adopt(three.get()).get(), &object); // gives back one that was taken
        EXPECT_EQ(object.addRef(), 4U);

        { const auto none = one.getLock(); }
        object.lock = &lock;
        {
            const auto hold = one.getLock();
            EXPECT_EQ(lock.held, 1);
        }
        EXPECT_EQ(lock.held, 0);
    }
    EXPECT_EQ(object.count, 1U);
}
