#include "button/InputKey.h"

#include "base/Error.h"
#include "host/button/InputEvents.h"

using board::KeyEvents;
using support::InputEvents;
using Levels = std::vector<bool>;

TEST(KeyEvents, ReportEachChangeOfTheirKeyOnce) {
    const InputEvents device;
    KeyEvents key("key", device.descriptor(), InputEvents::KEY, [] { return false; });
    EXPECT_EQ(key.read(), Levels()) << "no events yet";
    const InputEvents::Event otherKey{EV_KEY, 30, 1}, otherType{EV_MSC, InputEvents::KEY, 1};
    device.give({otherKey, device.REPORT, otherType, device.UP, device.REPORT});
    EXPECT_EQ(key.read(), Levels());
    device.give({device.DOWN, device.REPEAT, device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels({true}));
    device.give({device.UP, device.REPORT, device.DOWN, device.REPORT, device.UP});
    EXPECT_EQ(key.read(), Levels({false, true, false}));
}

TEST(KeyEvents, AskTheDeviceAtFirstAndAfterEventsWereDropped) {
    const InputEvents device;
    bool isDown = true;
    KeyEvents key("key", device.descriptor(), InputEvents::KEY, [&] { return isDown; });
    device.give({device.DOWN, device.REPORT}); // known already
    EXPECT_EQ(key.read(), Levels());
    isDown = false;
    // After a drop, the events up to the next report are incomplete and are ignored.
    device.give({device.DROPPED, device.UP, device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels({false}));
    device.give({device.DROPPED, device.DOWN});
    EXPECT_EQ(key.read(), Levels());
    // At the report, the key asks the device. Later events in the same read are older than that
    // answer and are ignored: a release that followed them may have been dropped.
    device.give({device.REPORT, device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels());
    device.give({device.DOWN, device.REPORT});
    EXPECT_EQ(key.read(), Levels({true}));
}

TEST(KeyEvents, FailIfTheirDeviceDeliversNoMore) {
    const auto faultOf = [](int descriptor) {
        try {
            KeyEvents("key", descriptor, 1, [] { return false; }).read();
        } catch (const board::Error& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    const int ended = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(faultOf(ended), "key: delivers no more events");
    ::close(ended);
    EXPECT_EQ(faultOf(-1), "key: can't read: Bad file descriptor");
}
