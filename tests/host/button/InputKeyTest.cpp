#include "button/InputKey.h"

#include "base/Error.h"
#include "host/button/InputEvents.h"

using board::KeyEvents;
using support::InputEvents;
using Levels = std::vector<bool>;

TEST(KeyEvents, ReportEachChangeOfTheirKeyOnce) {
    const support::TempDir dir;
    const InputEvents device(dir);
    const InputEvents::Event otherKey{EV_KEY, 30, 1};
    const InputEvents::Event otherType{EV_MSC, InputEvents::KEY, 1};
    KeyEvents key("key", device.descriptor(), InputEvents::KEY, [] { return false; });
    EXPECT_EQ(key.read(), Levels()) << "no events yet";
    device.give({otherKey, device.REPORT, otherType, device.UP, device.REPORT});
    EXPECT_EQ(key.read(), Levels());
    device.give(
        {device.DOWN, device.REPORT, device.REPEAT, device.REPORT, device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels({true}));
    device.give({device.UP, device.REPORT, device.DOWN, device.REPORT, device.UP, device.REPORT});
    EXPECT_EQ(key.read(), Levels({false, true, false}));
}

TEST(KeyEvents, AskTheDeviceAtFirstAndAfterEventsWereDropped) {
    const support::TempDir dir;
    const InputEvents device(dir);
    bool isDown = true;
    KeyEvents key("key", device.descriptor(), InputEvents::KEY, [&] { return isDown; });
    device.give({device.DOWN, device.REPORT}); // known already
    EXPECT_EQ(key.read(), Levels());
    isDown = false;
    // Events up to the next report belong to an incomplete one.
    device.give({device.DROPPED, device.UP, device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels({false}));
    device.give({device.DROPPED, device.DOWN});
    EXPECT_EQ(key.read(), Levels());
    // The events after the report are older than the device's answer and are ignored: a release
    // that followed them may have been dropped.
    device.give({device.REPORT, device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels());
    device.give({device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels({true}));
}

TEST(KeyEvents, FailIfTheirDeviceDeliversNoMore) {
    const support::TempDir dir;
    dir.write("ended", "");
    const int file = ::open(dir.path("ended").c_str(), O_RDONLY | O_CLOEXEC);
    KeyEvents key("key", file, InputEvents::KEY, [] { return false; });
    EXPECT_THROW(key.read(), board::Error);
    ::close(file);
    EXPECT_THROW(key.read(), board::Error);
}
