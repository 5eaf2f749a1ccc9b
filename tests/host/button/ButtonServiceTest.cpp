#include "button/ButtonService.h"

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>

#include "base/File.h"
#include "board/Services.h"
#include "button/ButtonPipe.h"
#include "support/TempDir.h"

namespace {

using board::event::ButtonReleased;
using board::event::DeviceBack;
using board::event::FaultReport;

/// A button's pipe and the events of a service that reads it.
class ButtonServiceTest : public testing::Test {
protected:
    ButtonServiceTest() { dir.makePipe("button"); }

    /// Waits for the next events.
    std::vector<board::EventQueue::Entry> next() {
        pollfd arrival{queue.descriptor(), POLLIN, 0};
        EXPECT_EQ(::poll(&arrival, 1, -1), 1);
        return queue.take().entries;
    }

    const support::TempDir dir;
    const board::NamedPath device{dir.path("button"), "button.device"};
    board::EventQueue queue;
};

} // namespace

TEST_F(ButtonServiceTest, MeasuresAPressByItsOwnClock) {
    std::vector<TYTime> times{{12, 100'000'000}, {10, 900'000'000}};
    const board::ButtonService button(device, queue, [&times] {
        const TYTime time = times.back();
        times.pop_back();
        return time;
    });
    const board::ButtonPipe finger(device.path, "button's pipe");
    finger.writePressed();
    next();
    finger.writeReleased();
    const auto entries = next();
    ASSERT_EQ(entries.size(), 1U);
    const auto* const released = std::get_if<ButtonReleased>(&entries[0].event);
    ASSERT_TRUE(released);
    EXPECT_EQ(released->heldFor, TYTime(1, 200'000'000));
}

TEST_F(ButtonServiceTest, EndsWithOneEventIfAnOrdinaryFileTakesThePlaceOfItsPipe) {
    std::optional<board::ButtonService> button(std::in_place, device, queue);
    const board::ButtonPipe finger(device.path, "button's pipe");
    dir.write("file", "pressed\n");
    ASSERT_EQ(std::rename(dir.path("file").c_str(), device.path.c_str()), 0);
    finger.writePressed(); // ends the read that waits
    auto entries = next();
    button.reset();
    const auto more = queue.take();
    entries.insert(entries.end(), more.entries.begin(), more.entries.end());
    ASSERT_EQ(entries.size(), 1U);
    const auto* const fault = std::get_if<FaultReport>(&entries[0].event);
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->text, "button: " + device.path + " was replaced and is no longer watched");
}

TEST_F(ButtonServiceTest, IsTakenOverWhenAnotherHostEndsAndNotLeftToAForeignLock) {
    ::setenv("XDG_RUNTIME_DIR", dir.path("").c_str(), 0); // where a host's locks may be
    board::Profile profile;
    profile.button = device;
    const board::FileDescriptor foreign = board::openFile(device.path, O_RDONLY | O_NONBLOCK);
    ASSERT_TRUE(board::tryLock(foreign));
    std::optional<board::Services> first(std::in_place, profile, false, queue);
    EXPECT_TRUE(first->watchesButton());
    board::Services second(profile, false, queue);
    const auto look = [&] {
        second.lookAtButton();
        EXPECT_EQ(second.failures().empty(), second.watchesButton());
        return second.watchesButton();
    };
    EXPECT_FALSE(look());
    EXPECT_TRUE(queue.take().entries.empty());
    first.reset();
    EXPECT_TRUE(look());
    const auto entries = queue.take().entries;
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_TRUE(std::holds_alternative<DeviceBack>(entries[0].event));
}
