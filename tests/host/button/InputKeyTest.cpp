#include "button/InputKey.h"

#include "base/Error.h"
#include "support/InputEvents.h"

using board::KeyEvents;
using support::InputEvents;
using Levels = std::vector<bool>;

TEST(KeyEvents, TellEachChangeOfTheirKeyOnce) {
    const support::TempDir dir;
    const InputEvents device(dir);
    const InputEvents::Event otherKey{EV_KEY, 30, 1};
    const InputEvents::Event otherType{EV_MSC, InputEvents::KEY, 1};
    KeyEvents key("key", device.descriptor(), InputEvents::KEY, [] { return false; });
    EXPECT_EQ(key.read(), Levels()) << "nothing there";
    device.give({otherKey, device.REPORT, otherType, device.UP, device.REPORT});
    EXPECT_EQ(key.read(), Levels());
    device.give(
        {device.DOWN, device.REPORT, device.REPEAT, device.REPORT, device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels({true}));
    device.give({device.UP, device.REPORT, device.DOWN, device.REPORT, device.UP, device.REPORT});
    EXPECT_EQ(key.read(), Levels({false, true, false}));
}

TEST(KeyEvents, AskTheDeviceAtFirstAndWhereEventsWereDropped) {
    const support::TempDir dir;
    const InputEvents device(dir);
    bool isDown = true;
    KeyEvents key("key", device.descriptor(), InputEvents::KEY, [&] { return isDown; });
    device.give({device.DOWN, device.REPORT}); // as it was known to be
    EXPECT_EQ(key.read(), Levels());
    isDown = false;
    // What follows up to the next report is part of one that is not whole.
    device.give({device.DROPPED, device.UP, device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels({false}));
    device.give({device.DROPPED, device.DOWN});
    EXPECT_EQ(key.read(), Levels());
    // What stands behind is older than the answer: a release since then may be gone from the queue
    // with it.
    device.give({device.REPORT, device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels());
    device.give({device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels({true}));
}

TEST(KeyEvents, FailWhereTheirDeviceGivesNoneAnyMore) {
    const support::TempDir dir;
    dir.write("ended", "");
    const int file = ::open(dir.path("ended").c_str(), O_RDONLY | O_CLOEXEC);
    KeyEvents key("key", file, InputEvents::KEY, [] { return false; });
    EXPECT_THROW(key.read(), board::Error);
    ::close(file);
    EXPECT_THROW(key.read(), board::Error);
}
