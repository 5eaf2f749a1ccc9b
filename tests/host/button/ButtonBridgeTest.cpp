#include "button/ButtonBridge.h"

#include "base/Error.h"
#include "host/button/InputEvents.h"

#include <sys/stat.h>

using board::ButtonBridge;
using support::InputEvents;

namespace {

/// A key, and its messages in a pipe as the button's monitor reads them.
class ButtonBridgeTest : public testing::Test {
protected:
    ~ButtonBridgeTest() override {
        if (m_watch >= 0)
            ::close(m_watch);
    }

    std::string read() {
        if (m_watch < 0)
            m_watch = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        char text[64];
        const ssize_t got = ::read(m_watch, text, sizeof text);
        return std::string(text, got > 0 ? static_cast<std::size_t>(got) : 0);
    }

    const support::TempDir dir;
    const std::string pipe = dir.path("button");
    const InputEvents device{dir};
    board::KeyEvents key{"key", device.descriptor(), InputEvents::KEY, [] { return false; }};

private:
    int m_watch = -1;
};

} // namespace

TEST_F(ButtonBridgeTest, DeliversOneMessageAtATimeHoweverLateItIsRead) {
    ButtonBridge bridge(key, pipe);
    EXPECT_FALSE(bridge.carry());
    device.give({device.DOWN, device.REPORT, device.UP, device.REPORT, device.DOWN, device.REPORT});
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(bridge.carry()) << "two wait for the first";
    device.give({device.UP, device.REPORT});
    for (const std::string message : {"pressed\n", "released\n", "pressed\n", "released\n"}) {
        EXPECT_EQ(read(), message);
        bridge.carry();
    }
    EXPECT_EQ(read(), "");
    EXPECT_FALSE(bridge.carry());
}

TEST_F(ButtonBridgeTest, CreatesItsPipeForItsUserOnlyAndDoesNotShareIt) {
    const ButtonBridge bridge(key, pipe);
    struct stat status {};
    ASSERT_EQ(::stat(pipe.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFIFO | 0600));
    EXPECT_THROW(ButtonBridge(key, pipe), board::Error);
    EXPECT_THROW(ButtonBridge(key, dir.path("no/button")), board::Error);
    dir.write("file", "");
    EXPECT_THROW(ButtonBridge(key, dir.path("file")), board::Error);
}
