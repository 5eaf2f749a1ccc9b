#include "descriptor/store/DescriptorStore.h"

#include <cstdlib>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/descriptor/Images.h"
#include "support/TempDir.h"

using board::DescriptorEdit;
using board::DescriptorSource;
using board::StoreManner;
using namespace support;

namespace {

void addOne(DescriptorEdit& edit) {
    edit.add(board::parseAssignment("19=u16:1"));
}
void removeMac(DescriptorEdit& edit) {
    edit.remove({board::MAC_TAG, 0});
}

void edit(
    const DescriptorSource& source, void (*step)(DescriptorEdit&), const std::string& backup = "",
    const std::function<void()>& beforeWriting = [] {}) {
    StoreManner manner;
    manner.keepOld = !backup.empty();
    manner.backup = backup;
    board::StoreOutcome outcome;
    board::editDescriptor(
        source, manner, step, [&](const auto&) { beforeWriting(); }, outcome);
}

} // namespace

TEST(DescriptorStore, KeepsTheSizeOfAnImageFileThatHasRoomAndWhatLiesBehindADevices) {
    const std::string room = "FF FF FF FF FF FF FF FF ", zeros = "00 00 00 ",
                      added = "00 13 00 06 00 01 ";
    const struct {
        std::string before;
        void (*step)(DescriptorEdit&);
        std::string after;
        bool isDevice;
    } CASES[] = {
        {PRODUCT + MAC_X + END, removeMac, PRODUCT + END, false},
        {PRODUCT + MAC_X + END + room, removeMac, PRODUCT + END + room + room + "FF FF FF FF ",
         false},
        {PRODUCT + MAC_X + END + zeros, removeMac,
         PRODUCT + END + zeros + zeros + zeros + zeros + zeros, false},
        {PRODUCT + END + room, addOne, PRODUCT + added + END + "FF FF ", false},
        {PRODUCT + END, addOne, PRODUCT + added + END, false},
        {PRODUCT + MAC_X + END + "77 ", removeMac,
         PRODUCT + END + "02 00 00 00 00 07 00 00 00 00 00 04 77 ", true},
    };
    for (const auto& each : CASES) {
        const TempDir dir;
        dir.write("image", bytesOf(each.before));
        const std::string file = dir.path("image");
        const auto same = board::tryIdentify(file);
        const int open = ::open(file.c_str(), O_RDONLY | O_CLOEXEC); // keeps its inode number taken
        edit(each.isDevice ? DescriptorSource::ofBoard(file, 128, 512)
                           : DescriptorSource::ofFile(file),
             each.step);
        EXPECT_EQ(hexOf(dir.read("image")) + " ", each.after);
        // A device is written in place; a file is replaced.
        EXPECT_EQ(board::tryIdentify(file) == same, each.isDevice);
        ::close(open);
    }
}

TEST(DescriptorStore, ReportsADeviceThatDoesNotHoldWhatWasWritten) {
    const TempDir dir;
    ::setenv("XDG_STATE_HOME", dir.path("state").c_str(), 1); // the second case leaves a journal
    for (const auto& [found, outcome] :
         {std::pair{PRODUCT + END, "the old image is in place again"},
          std::pair{MAC_X + END, "THE OLD IMAGE COULD NOT BE WRITTEN BACK EITHER"}}) {
        dir.write("eeprom", bytesOf(PRODUCT + END));
        dir.write("other", bytesOf(found));
        dir.write("backup", "");
        const auto takeAway = [&] { // the write then goes to a file that no longer has a name
            std::filesystem::rename(dir.path("other"), dir.path("eeprom"));
        };
        const auto device = DescriptorSource::ofBoard(dir.path("eeprom"), 128, 512);
        EXPECT_EQ(failureOf([&] { edit(device, addOne, dir.path("backup"), takeAway); }),
                  dir.path("eeprom") + ": does not hold what was written; " + outcome +
                      " and is kept in " + dir.path("backup"));
    }
}

TEST(DescriptorStore, KeepsTheOldImageForThoseWhoMayReadTheImage) {
    const TempDir dir;
    ::setenv("XDG_STATE_HOME", dir.path("state").c_str(), 1);
    dir.write("image", bytesOf(END));
    ::chmod(dir.path("image").c_str(), 0600);
    StoreManner manner;
    for (const std::string& backup : {std::string(), dir.path("backup")}) {
        board::StoreOutcome outcome;
        manner.backup = backup;
        board::editDescriptor(
            DescriptorSource::ofFile(dir.path("image")), manner, addOne, [](const auto&) {},
            outcome);
        EXPECT_EQ(std::filesystem::status(outcome.backup).permissions(),
                  std::filesystem::perms(0600));
    }
}

TEST(DescriptorStore, LosesNoEditOfTwoWriters) {
    constexpr unsigned EDITS = 50;
    const TempDir dir;
    dir.write("image", bytesOf(END));
    const auto write = [&] {
        for (unsigned i = 0; i < EDITS; ++i)
            edit(DescriptorSource::ofFile(dir.path("image")), addOne);
    };
    std::thread first(write), second(write);
    first.join();
    second.join();
    EXPECT_EQ(board::TagImage(dir.read("image")).tags().size(), 2 * EDITS);
}
