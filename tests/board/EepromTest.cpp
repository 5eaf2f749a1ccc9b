#include <string>
#include <utility>
#include <vector>

#include "CBoardDescrTamarin.h"
#include "OnBoard.h"
#include "TYPPtr.h"
#include "support/DriverFixtures.h"

using namespace support;
using namespace onboard;

namespace {

constexpr char PATH[] = "/sys/bus/i2c/devices/1-0050/eeprom";
constexpr unsigned SIZE = 512;

/// The descriptor's driver, created as a host creates it.
class Descriptor {
public:
    Descriptor() : m_driver(TYPPtr<CDriver>::adopt(CREATE_BD())) {}
    CBoardDescr* operator->() const { return static_cast<CBoardDescrTamarin*>(m_driver.get()); }

    std::vector<std::string> read() const {
        String error;
        EXPECT_TRUE((*this)->readBD(error).isSuccess()) << error.c_str();
        return tagsOf(*operator->());
    }
    std::string readRaw() const {
        TString<char> image;
        String error;
        EXPECT_TRUE((*this)->readRawBD(image, error).isSuccess()) << error.c_str();
        return std::string(image.data(), image.length());
    }

private:
    const TYPPtr<CDriver> m_driver;
};

TString<char> bytesOf(const std::string& text) {
    TString<char> bytes;
    bytes.concat(text.data(), static_cast<unsigned>(text.size()));
    return bytes;
}

std::string pattern(std::size_t size, unsigned first) {
    std::string bytes;
    for (unsigned i = 0; i < size; ++i)
        bytes += static_cast<char>(first + 7 * i + i / 256);
    return bytes;
}

/// A list whose image has `size` bytes: one tag if there is room, and the terminator.
struct List {
    explicit List(unsigned size) : data(pattern(size > 4 ? size - 8 : 0, size)) {
        if (size > 4) {
            const unsigned length = size - 4;
            image = {'\x00', '\x2D', static_cast<char>(length >> 8U), static_cast<char>(length)};
            image += data;
        }
        image += std::string{'\0', '\0', '\0', '\4'};
    }
    XCode store(String& error) const {
        const Descriptor descriptor;
        if (image.size() > 4)
            static_cast<void>(descriptor->addTag(45, bytesOf(data)));
        static_cast<void>(descriptor->addTag(0, TString<char>()));
        return descriptor->writeBD(error);
    }
    std::vector<std::string> tags() const {
        std::vector<std::string> tags;
        if (image.size() > 4)
            tags.push_back("45/" + std::to_string(data.size()) + ":" + toHex(bytesOf(data)));
        tags.emplace_back("0/0:");
        return tags;
    }

    std::string data;
    std::string image;
};

/// Lengths of images, each shorter than the one before, so that at least a byte of each is left on
/// the device.
constexpr unsigned LENGTHS[] = {511, 510, 128, 17, 16, 15, 2, 1};

std::string afterRawWrites() {
    std::string held(SIZE, '\xFF');
    for (const unsigned length : LENGTHS)
        held.replace(0, length, pattern(length, length));
    return held;
}

} // namespace

// The next two tests depend on this order: the EEPROM is erased only once.
TEST(Boot1Eeprom, ReadsAsTheTerminatorAloneWhileItIsErased) {
    const Descriptor descriptor;
    EXPECT_EQ(descriptor.readRaw(), std::string(SIZE, '\xFF'));
    EXPECT_EQ(descriptor.read(), std::vector<std::string>{"0/0:"});
}

TEST(Boot1Eeprom, TakesImagesOfAnyLengthAndLeavesWhatLiesBehind) {
    const Descriptor descriptor;
    String error;
    for (const unsigned length : LENGTHS)
        EXPECT_TRUE(descriptor->writeRawBD(bytesOf(pattern(length, length)), error).isSuccess())
            << length << error.c_str();
    EXPECT_EQ(descriptor.readRaw(), afterRawWrites());
    EXPECT_EQ(eepromOutside(), afterRawWrites());
}

TEST(Boot2Eeprom, HoldsTheImagesAfterARestart) {
    EXPECT_EQ(Descriptor().readRaw(), afterRawWrites());
}

TEST(Boot2Eeprom, TakesListsUpToOneByteLessThanItsSize) {
    String error;
    for (const unsigned size : {4U, 8U, 16U, 18U, 128U, 130U, 256U, 508U, 510U}) {
        const List list(size);
        EXPECT_TRUE(list.store(error).isSuccess()) << size << error.c_str();
        EXPECT_EQ(Descriptor().read(), list.tags()) << size;
        EXPECT_EQ(eepromOutside().substr(0, size), list.image) << size;
    }
    const std::string before = eepromOutside();
    EXPECT_FALSE(List(SIZE).store(error).isSuccess());
    EXPECT_EQ(str(error),
              "FAILED TO WRITE DEVICE '" + std::string(PATH) + "': DEV SIZE=512, BD SIZE=512");
    EXPECT_EQ(eepromOutside(), before);
}

TEST(Boot3Eeprom, HoldsTheLongestListAfterARestart) {
    EXPECT_EQ(Descriptor().read(), List(510).tags());
}

TEST(Boot3Eeprom, TakesWhatFitsOfAWriteThatIsTooLong) {
    EXPECT_EQ(onboard::write(PATH, std::string(600, 'x')), "512");
    EXPECT_EQ(eepromOutside(), std::string(SIZE, 'x'));
    EXPECT_EQ(onboard::write(PATH, "x", SIZE), "EFBIG");
    // A driver that expects a larger device does not notice.
    CBoardDescr larger(PATH, 128, 1024);
    String error;
    EXPECT_TRUE(larger.writeRawBD(bytesOf(std::string(600, 'y')), error).isSuccess());
    EXPECT_EQ(eepromOutside(), std::string(SIZE, 'y'));
}

TEST(Boot3Eeprom, FailsWithATextWhileItsDriverIsAway) {
    const Descriptor descriptor;
    String error;
    {
        const Unbound away("i2c/drivers/at24", "1-0050");
        EXPECT_EQ(onboard::read(PATH), "ENOENT");
        EXPECT_FALSE(descriptor->readBD(error).isSuccess());
        EXPECT_EQ(str(error), "FAILED TO OPEN DEVICE '" + std::string(PATH) + "'");
    }
    descriptor.readRaw();
}
