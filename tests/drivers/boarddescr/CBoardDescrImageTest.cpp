#include "CBoardDescr.h"

#include <csignal>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "support/Descriptors.h"
#include "support/DriverFixtures.h"
#include "support/TempDir.h"

namespace {

using namespace support;
using Tags = std::vector<std::string>;

std::string corrupted(unsigned id, const std::string& what, unsigned position) {
    return "CORRUPTED BOARD DESCRIPTOR: id=" + std::to_string(id) + " has invalid field length (" +
           what + ") at pos=" + std::to_string(position);
}

class CBoardDescrImageTest : public testing::Test {
protected:
    CBoardDescrImageTest() {
        for (const auto& [id, data] : {std::pair(45, "12 34 AB CD"),
                                       {6, ""},
                                       {7, "01 02 03"},
                                       {0x7FFF8123, "FF FF"},
                                       {0, ""}})
            EXPECT_TRUE(board.addTag(id, fromHex(data)).isSuccess());
        EXPECT_TRUE(board.exportBD(image, error).isSuccess());
    }

    /// The error text; it is empty only on success.
    std::string load(const TString<char>& from) {
        error = "";
        const XCode status = board.importBD(from, error);
        EXPECT_EQ(status.getCode(), error.isEmpty() ? 0 : -1);
        return str(error);
    }

    CBoardDescr board;
    TString<char> image;
    String error;
    // The tags as they read back. A tag of odd size has been padded.
    const Tags whole = {"45/4:12 34 AB CD", "6/0:", "7/4:01 02 03 00", "33059/2:FF FF", "0/0:"};
};

TEST_F(CBoardDescrImageTest, TagsAreAppendedToTheBufferAsChunksOfEvenSize) {
    TString<char> bytes = fromHex("EE");
    ASSERT_TRUE(board.getTag(45, 0, error)->setData(nullptr, 3).isSuccess());
    EXPECT_TRUE(board.exportBD(bytes, error).isSuccess());
    EXPECT_EQ(
        toHex(bytes),
        "EE 00 2D 00 08 00 00 06 00 04 00 07 00 08 01 02 03 00 81 23 00 06 FF FF 00 00 00 04");
}

TEST_F(CBoardDescrImageTest, OverlongTagIsStoredWithItsLengthModulo65536AndAllItsData) {
    for (const auto& [length, header] :
         {std::pair(65530U, "00 07 FF FE"), {65531U, "00 07 00 00"}}) {
        CBoardDescr one;
        TString<char> bytes;
        const std::string data(length, 'x');
        ASSERT_TRUE(one.addTag(7, TString<char>(data.data(), length)).isSuccess());
        EXPECT_TRUE(one.exportBD(bytes, error).isSuccess());
        EXPECT_EQ(toHex(bytes.substring(0, 4)), header) << length;
        EXPECT_EQ(bytes.length(), 4 + length + length % 2) << length;
    }
}

TEST_F(CBoardDescrImageTest, ImageLoadsAsItsTagsOrFailsWithTheFaultsPosition) {
    const struct {
        std::string image;
        Tags tags;
        std::string error;
    } rows[] = {
        {"", {}, ""},
        {"2D", {}, ""},
        {"00 00", {"0/0:"}, ""},
        {"FF FF FF", {"0/0:"}, ""},
        {"00 2D 00 08 12 34 AB CD 00 00 00 05 00 02", {"45/4:12 34 AB CD", "0/0:"}, ""},
        {"00 2D 00 05 12 FF", {"45/1:12"}, ""},
        {"FF FE 00 04 00 01 00 04", {"65534/0:", "1/0:"}, ""},
        {"00 05 00 00", {}, corrupted(5, "chunkLen=0 is too small", 2)},
        {"00 07 00 05 AA FF FE 00 03 00",
         {"7/1:AA"},
         corrupted(65534, "chunkLen=3 is too small", 7)},
        {"00 07 00 05 AA 00 05 FF FF",
         {"7/1:AA"},
         corrupted(5, "len=65531 overflow the buffer size 9", 9)},
        {"00 05 00 06 AA", {}, corrupted(5, "len=2 overflow the buffer size 5", 4)},
        {"00 05", {}, corrupted(5, "chunkLen=0 is too small", 2)},
        {"00 05 01", {}, corrupted(5, "len=252 overflow the buffer size 3", 4)},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(load(fromHex(row.image)), row.error) << row.image;
        EXPECT_EQ(tagsOf(board), row.tags) << row.image;
    }
}

TEST_F(CBoardDescrImageTest, ImageMayBeATagOfTheListThatItReplaces) {
    ASSERT_TRUE(board.setTag(7, 0, fromHex("00 2D 00 08 12 34 AB CD"), error).isSuccess());
    EXPECT_EQ(load(board.getTag(7, 0, error)->data), "");
    EXPECT_EQ(tagsOf(board), Tags{"45/4:12 34 AB CD"});
}

/// A descriptor over a device of 512 bytes that holds the image above, then "xxx...".
class CBoardDescrDeviceTest : public CBoardDescrImageTest {
protected:
    CBoardDescrDeviceTest() { dir.write("eeprom", content); }

    TempDir dir;
    const std::string path = dir.path("eeprom");
    const std::string content =
        std::string(image.data(), image.length()) + std::string(512 - image.length(), 'x');
    CBoardDescr device{path.c_str(), 128, 512};
};

TEST_F(CBoardDescrDeviceTest, WholeDeviceIsReadWhateverTheChunkSize) {
    for (unsigned chunk : {1U, 7U, 128U, 512U, 4096U}) {
        CBoardDescr reader(path.c_str(), chunk, 512);
        TString<char> bytes("A", 1);
        EXPECT_TRUE(reader.readRawBD(bytes, error).isSuccess());
        EXPECT_EQ(std::string(bytes.data(), bytes.length()), "A" + content) << "chunk " << chunk;
        EXPECT_TRUE(reader.readBD(error).isSuccess());
        EXPECT_EQ(tagsOf(reader), whole) << "chunk " << chunk;
    }
}

TEST_F(CBoardDescrDeviceTest, StoringKeepsTheBytesAfterTheImageAndLoadingStopsAtTheTerminator) {
    ASSERT_TRUE(device.addTag(0, fromHex("")).isSuccess());
    ASSERT_TRUE(device.addTag(7, fromHex("01 02 03")).isSuccess());
    EXPECT_TRUE(device.writeBD(error).isSuccess());
    EXPECT_EQ(dir.read("eeprom"),
              std::string("\0\0\0\x04\0\x07\0\x08\x01\x02\x03\0", 12) + content.substr(12));
    EXPECT_EQ(tagsOf(device), (Tags{"0/0:", "7/3:01 02 03"}));
    EXPECT_TRUE(device.readBD(error).isSuccess());
    EXPECT_EQ(tagsOf(device), Tags{"0/0:"});
}

TEST_F(CBoardDescrDeviceTest, ImageMustBeSmallerThanTheDeviceAndIsWrittenInOneCall) {
    const std::string bytes(512, 'y');
    expectPlainFailure(device.writeRawBD(TString<char>(bytes.data(), 512), error));
    EXPECT_EQ(str(error), "FAILED TO WRITE DEVICE '" + path + "': DEV SIZE=512, BD SIZE=512");
    EXPECT_EQ(dir.read("eeprom"), content);
    EXPECT_TRUE(device.writeRawBD(TString<char>(bytes.data(), 511), error).isSuccess());
    EXPECT_EQ(dir.read("eeprom"), bytes.substr(1) + "x");
    // With a limit on the size of files, the first write is short, and a write at the limit fails.
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small{64, limit.rlim_max};
    const auto action = std::signal(SIGXFSZ, SIG_IGN);
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool isWritten = device.writeRawBD(TString<char>(bytes.data(), 511), error).isSuccess();
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::signal(SIGXFSZ, action);
    EXPECT_TRUE(isWritten) << "not written in one call";
    for (const auto operation : {&CBoardDescr::readBD, &CBoardDescr::writeBD})
        expectPlainFailure((board.*operation)(error)); // there is no device
}

TEST_F(CBoardDescrDeviceTest, DescriptorZeroIsValidAndNoDescriptorLeaks) {
    const auto before = openDescriptors();
    {
        const DescriptorZeroFree hole;
        EXPECT_TRUE(device.readBD(error).isSuccess());
        EXPECT_TRUE(device.writeBD(error).isSuccess());
        EXPECT_FALSE(CBoardDescr(dir.path(".").c_str(), 1, 512).readBD(error).isSuccess());
        // A folder can be opened, but only for reading.
        EXPECT_EQ(str(error), "FAILED TO READ DEVICE '" + dir.path(".") + "'");
        EXPECT_TRUE(hole.isStillFree());
    }
    EXPECT_EQ(tagsOf(device), whole);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(CBoardDescrDeviceTest, OverriddenDeviceAccessIsUsed) {
    struct OwnBoard : CBoardDescr {
        XCode readRawBD(TString<char>&, String&) override { return XCode(-9, "BUS BUSY"); }
        XCode writeRawBD(const TString<char>& bytes, String&) override {
            held = toHex(bytes);
            return XCode(-8);
        }
        std::string held;
    } own;
    EXPECT_TRUE(own.addTag(7, fromHex("01 02")).isSuccess());
    EXPECT_EQ(str(own.readBD(error).getMessage()), "BUS BUSY");
    EXPECT_EQ(own.writeBD(error).getCode(), -8);
    EXPECT_EQ(own.held, "00 07 00 06 01 02");
}

} // namespace
