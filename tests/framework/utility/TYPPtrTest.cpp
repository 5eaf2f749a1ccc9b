#include "TYPPtr.h"

#include <utility>

#include <gtest/gtest.h>

namespace {

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
        EXPECT_EQ(TYPPtr<Counted>::adopt(three.get()).get(),
                  &object); // releases an added reference
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
