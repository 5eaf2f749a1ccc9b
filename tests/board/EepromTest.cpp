#include <string>
#include <vector>

#include "CBoardDescrTamarin.h"
#include "OnBoard.h"
#include "support/DriverFixtures.h"

using namespace onboard;

namespace {

TString<char> bytesOf(const std::string& text) {
    TString<char> bytes;
    bytes.concat(text.data(), static_cast<unsigned>(text.size()));
    return bytes;
}

std::string hex(const std::string& text) {
    return support::toHex(bytesOf(text));
}

std::string pattern(std::size_t size, unsigned first) {
    std::string bytes;
    for (unsigned i = 0; i < size; ++i)
        bytes += static_cast<char>(first + 7 * i + i / 256);
    return bytes;
}

/// Lengths of images, each shorter than the one before, so that at least a byte of each is left on
/// the device.
constexpr unsigned LENGTHS[] = {511, 510, 128, 17, 16, 15, 2, 1};

std::string afterRawWrites() {
    std::string held(EEPROM_SIZE, '\xFF');
    for (const unsigned length : LENGTHS)
        held.replace(0, length, pattern(length, length));
    return held;
}

/// The data of the longest list. Its image has 510 bytes: an even size, and less than the device.
const std::string LONGEST = pattern(502, 1);

} // namespace

TEST(Boot1Eeprom, TakesImagesOfAnyLength) {
    CBoardDescrTamarin descriptor;
    String error;
    for (const unsigned length : LENGTHS)
        EXPECT_TRUE(descriptor.writeRawBD(bytesOf(pattern(length, length)), error).isSuccess())
            << length << error.c_str();
    EXPECT_EQ(eepromOutside(), hex(afterRawWrites()));
}

TEST(Boot2Eeprom, HoldsTheImagesAfterARestartAndTakesTheLongestList) {
    CBoardDescrTamarin descriptor;
    TString<char> image;
    String error;
    EXPECT_TRUE(descriptor.readRawBD(image, error).isSuccess()) << error.c_str();
    EXPECT_EQ(support::toHex(image), hex(afterRawWrites()));
    EXPECT_TRUE(descriptor.addTag(45, bytesOf(LONGEST)).isSuccess());
    EXPECT_TRUE(descriptor.addTag(0, TString<char>()).isSuccess());
    EXPECT_TRUE(descriptor.writeBD(error).isSuccess()) << error.c_str();
}

TEST(Boot3Eeprom, HoldsTheLongestListAfterARestart) {
    CBoardDescrTamarin descriptor;
    String error;
    EXPECT_TRUE(descriptor.readBD(error).isSuccess()) << error.c_str();
    EXPECT_EQ(support::tagsOf(descriptor),
              (std::vector<std::string>{"45/502:" + hex(LONGEST), "0/0:"}));
}

TEST(Boot3Eeprom, TakesWhatFitsOfAWriteThatIsTooLong) {
    EXPECT_EQ(write(EEPROM, std::string(600, 'x')), "512");
    EXPECT_EQ(eepromOutside(), hex(std::string(EEPROM_SIZE, 'x')));
    // A driver that expects a larger device does not notice that bytes are lost.
    CBoardDescr larger(EEPROM, 128, 1024);
    String error;
    EXPECT_TRUE(larger.writeRawBD(bytesOf(std::string(600, 'y')), error).isSuccess());
    // The board's own driver knows the size and does not write at all.
    EXPECT_FALSE(
        CBoardDescrTamarin().writeRawBD(bytesOf(std::string(EEPROM_SIZE, 'z')), error).isSuccess());
    EXPECT_EQ(eepromOutside(), hex(std::string(EEPROM_SIZE, 'y')));
}

TEST(Boot3Eeprom, IsEditedInPlaceByCommandsAlsoAsAnImageFile) {
    EXPECT_EQ(write(EEPROM, std::string(EEPROM_SIZE, '\xFF')), "512");
    EXPECT_EQ(call({"bd", "add", "ProductID=hex:1234abcd", "-y"}).status, 0);
    EXPECT_EQ(call({"bd", "set", "-i", EEPROM, "ProductID=hex:12345678", "-y"}).status, 0);
    expectOutput(call({"bd", "put", "-i", EEPROM, "ProductID=hex:12345678", "-y"}),
                 std::string(EEPROM) + ": already up to date; nothing was written\n");
    expectOutput(call({"bd", "get", "ProductID"}), "12345678\n");
    const std::string image("\0\x2D\0\x08\x12\x34\x56\x78\0\0\0\4", 12);
    EXPECT_EQ(eepromOutside(), hex(image + std::string(EEPROM_SIZE - image.size(), '\xFF')));
}
