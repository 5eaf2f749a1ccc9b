#include "TYPPtr.h"

#include <gtest/gtest.h>

namespace {

struct Counted : TYLock {
    unsigned count = 1;
    int held = 0;
    TYLock* own = nullptr;
    unsigned addRef() { return ++count; }
    unsigned release() { return --count; }
    TYLock* getLock() const { return own; }
    void lock() override { ++held; }
    void unlock() override { --held; }
};

} // namespace

TEST(TYPPtr, CountsAndLocksTheObjectItPointsTo) {
    Counted object;
    {
        TYPPtr<Counted> one(&object);
        TYPPtr<Counted> two = one;
        EXPECT_EQ(object.count, 3U);
        const TYPPtr<Counted> three = std::move(two);
        two = one;
        one = one.get();
        EXPECT_EQ(object.count, 4U);
        EXPECT_EQ(TYPPtr<Counted>::adopt(&object).get(), &object);
        EXPECT_EQ(object.addRef(), 4U) << "the adopted reference was released";

        { const auto noLock = one.getLock(); }
        object.own = &object;
        {
            const auto hold = one.getLock();
            EXPECT_EQ(object.held, 1);
        }
        EXPECT_EQ(object.held, 0);
    }
    EXPECT_EQ(object.count, 1U);
}
