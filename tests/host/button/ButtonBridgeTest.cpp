#include "button/ButtonBridge.h"

#include "base/Error.h"
#include "host/button/InputEvents.h"

#include <algorithm>

#include <sys/stat.h>

#include "support/TempDir.h"

using board::ButtonBridge;
using support::InputEvents;

namespace {

/// A key, and the pipe that the button's monitor reads.
class ButtonBridgeTest : public testing::Test {
protected:
    const support::TempDir dir;
    const std::string pipe = dir.path("button");
    const InputEvents device;
    board::KeyEvents key{"key", device.descriptor(), InputEvents::KEY, [] { return false; }};
};

} // namespace

TEST_F(ButtonBridgeTest, DeliversOneMessageAtATimeHoweverLateItIsRead) {
    ButtonBridge bridge(key, pipe);
    const int watch = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_FALSE(bridge.carry());
    device.give({device.DOWN, device.REPORT, device.UP, device.REPORT, device.DOWN, device.REPORT});
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(bridge.carry()) << "two wait for the first";
    device.give({device.UP, device.REPORT});
    for (const std::string expected : {"pressed\n", "released\n", "pressed\n", "released\n", ""}) {
        std::string message(64, ' ');
        message.resize(static_cast<std::size_t>(
            std::max<ssize_t>(::read(watch, message.data(), message.size()), 0)));
        EXPECT_EQ(message, expected);
        bridge.carry();
    }
    EXPECT_FALSE(bridge.carry());
    ::close(watch);
}

TEST_F(ButtonBridgeTest, CreatesItsPipeForItsUserOnlyAndDoesNotShareIt) {
    const ButtonBridge bridge(key, pipe);
    struct stat status {};
    ASSERT_EQ(::stat(pipe.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFIFO | 0600));
    dir.write("file", "");
    for (const auto& [name, fault] :
         {std::pair("button", ": another program writes this button's messages"),
          {"no/button", ": can't create the pipe: No such file or directory"},
          {"file", ": is not a button's pipe (expected a pipe)"}}) {
        try {
            ButtonBridge(key, dir.path(name));
            ADD_FAILURE() << name;
        } catch (const board::Error& error) {
            EXPECT_EQ(error.what(), dir.path(name) + fault);
        }
    }
}
