#include "watch/DescriptorWatch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "base/File.h"
#include "board/Report.h"
#include "host/descriptor/Images.h"
#include "support/TempDir.h"
#include "watch/Watch.h"

TEST(DescriptorWatch, LoadsTheDescriptorThatWasBeingEditedWhenTheHostStarted) {
    const support::TempDir dir;
    const std::string path = dir.path("eeprom");
    dir.write("eeprom", support::bytesOf(support::PRODUCT + support::END));
    dir.write("board.toml", "[descriptor]\ndevice='eeprom'\n");
    const board::Profile profile = board::Profile::load(dir.path("board.toml"));
    board::Host host(profile);
    board::EventQueue events;
    board::Watch watch(host, profile, events);
    const auto tagsAfterLook = [&] {
        watch.look();
        EXPECT_TRUE(events.take().entries.empty());
        return host.descriptor()->getTags().size();
    };
    board::FileDescriptor writer = board::tryOpen(path, O_RDONLY);
    ASSERT_TRUE(board::tryLock(writer));
    const auto loaded = board::loadDescriptor(host, {std::chrono::milliseconds(0)});
    ASSERT_FALSE(loaded);
    EXPECT_EQ(loaded.fault(), path + ": is locked by process " + std::to_string(::getpid()) +
                                  "; the board descriptor is not loaded");
    EXPECT_EQ(tagsAfterLook(), 0U);
    writer.close();
    EXPECT_EQ(tagsAfterLook(), 2U);
}
