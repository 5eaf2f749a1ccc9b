#include "CBoardDescr.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/DriverFixtures.h"

namespace {

using namespace support;
using Tags = std::vector<std::string>;

constexpr char BAD[] = "ERR WRONG TAG SIZE";
constexpr BD::TagId ID = 7;
constexpr BD::TagId MAC = 1;

class CBoardDescrTypedTest : public testing::Test {
protected:
    void add(BD::TagId id, const char* data) {
        EXPECT_TRUE(board.addTag(id, fromHex(data)).isSuccess());
    }

    /// The number read, or the error text. Success sets only the number, failure only the text.
    template <class Value>
    std::string read(XCode (CBoardDescr::*operation)(BD::TagId, unsigned, Value&, String&)) {
        Value value = 77;
        String text("as it was");
        const XCode status = (board.*operation)(ID, 0, value, text);
        EXPECT_EQ(status.getCode(), str(text) == "as it was" ? 0 : -1);
        EXPECT_TRUE(status.isSuccess() || value == 77);
        return status.isSuccess() ? std::to_string(value) : str(text);
    }

    CBoardDescr board;
    String error{"as it was"};
    String mac{"as it was"};
    unsigned iface = 77;
};

TEST_F(CBoardDescrTypedTest, NumbersAreReadByTheWidthOfTheirTag) {
    const std::vector<std::string> rows[] = {{"FE", "254", BAD, BAD, "254"},
                                             {"FE DC", BAD, "65244", BAD, "65244"},
                                             {"01 02 03", BAD, BAD, BAD, "0"},
                                             {"FF FE FD FC", BAD, BAD, "4294901244", "4294901244"},
                                             {"01 02 03 04 05", BAD, BAD, BAD, BAD}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row[0]);
        ASSERT_TRUE(board.insertTag(0, ID, fromHex(row[0])).isSuccess());
        EXPECT_EQ(read(&CBoardDescr::getTagUInt8), row[1]);
        EXPECT_EQ(read(&CBoardDescr::getTagUInt16), row[2]);
        EXPECT_EQ(read(&CBoardDescr::getTagUInt32), row[3]);
        EXPECT_EQ(read(&CBoardDescr::getTagUInt), row[4]);
    }
    EXPECT_TRUE(board.getTag(ID, 0, error)->setData(nullptr, 4).isSuccess());
    EXPECT_EQ(read(&CBoardDescr::getTagUInt32), "0") << "missing bytes count as zero";
    EXPECT_TRUE(board.getTag(ID, 0, error)->setData(nullptr, 5).isSuccess());
    EXPECT_EQ(read(&CBoardDescr::getTagUInt), BAD) << "the length field counts";
}

TEST_F(CBoardDescrTypedTest, WritesReplaceTheDataOfOneOccurrenceWhateverItsWidth) {
    add(ID, "AA");
    add(ID, "01 02 03");
    const auto second = [this](const XCode& status) {
        EXPECT_TRUE(status.isSuccess());
        EXPECT_EQ(tagsOf(board)[0], "7/1:AA");
        return tagsOf(board)[1];
    };
    EXPECT_EQ(second(board.setTagUInt8(ID, 1, 0xFE, error)), "7/1:FE");
    EXPECT_EQ(second(board.setTagUInt(ID, 1, 7, error)), "7/4:00 00 00 07");
    EXPECT_EQ(second(board.setTagUInt16(ID, 1, 0xBEEF, error)), "7/2:BE EF");
    EXPECT_EQ(second(board.setTagUInt32(ID, 1, ~0UL - 0xEE, error)), "7/4:FF FF FF 11");
    EXPECT_EQ(second(board.setTagString(ID, 1, "", error)), "7/0:");
    EXPECT_EQ(second(board.setTagString(ID, 1, String("a\0\xFF", 3), error)), "7/3:61 00 FF");
    EXPECT_TRUE(board.getTagString(ID, 1, mac, error).isSuccess());
    EXPECT_EQ(str(mac), std::string("a\0\xFF", 3));
}

TEST_F(CBoardDescrTypedTest, MissingTagFailsAlikeEverywhereAndTouchesNothing) {
    add(6, "01");
    TString<char> data = fromHex("AB");
    unsigned char u8 = 77;
    unsigned short u16 = 77;
    unsigned long u32 = 77;
    for (const auto& [id, i] : {std::pair(6, 1U), {-3, 0U}, {45, 0xFFFFFFFFU}}) {
        String e[13];
        for (const XCode& status :
             {board.getTagUInt8(id, i, u8, e[0]), board.getTagUInt16(id, i, u16, e[1]),
              board.getTagUInt32(id, i, u32, e[2]), board.getTagUInt(id, i, iface, e[3]),
              board.getTagString(id, i, mac, e[4]), board.getTag(id, i, data, e[5]),
              board.setTagUInt8(id, i, 1, e[6]), board.setTagUInt16(id, i, 1, e[7]),
              board.setTagUInt32(id, i, 1, e[8]), board.setTagUInt(id, i, 1, e[9]),
              board.setTagString(id, i, "x", e[10]), board.setTag(id, i, data, e[11]),
              board.removeTag(id, i, e[12])})
            expectPlainFailure(status);
        for (const String& text : e)
            EXPECT_EQ(str(text), "ERR TAG '" + std::to_string(id) +
                                     ":=" + str(BD::TAG_ID_TO_STRING(id)) + "' NOT FOUND");
    }
    EXPECT_EQ(tagsOf(board), Tags{"6/1:01"});
    EXPECT_EQ(toHex(data) + str(mac), "ABas it was");
    EXPECT_TRUE(u8 == 77 && u16 == 77 && u32 == 77 && iface == 77);
}

TEST_F(CBoardDescrTypedTest, MacAddressIsWrittenWithTheUpperHalfOfTheInterface) {
    const struct {
        const char* text;
        unsigned iface;
        const char *tag, *read;
    } rows[] = {
        {"00:1a:2B:3C:4D:5E", 3, "1/8:00 1A 2B 3C 4D 5E 00 00", "00:1A:2B:3C:4D:5E"},
        {"F0:E1:D2:C3:B4:A5:", 0xABCD1234, "1/8:F0 E1 D2 C3 B4 A5 AB CD", "F0:E1:D2:C3:B4:A5"},
        {"::1::2:", 0, "1/8:01 02 00 00 00 00 00 00", "01:02:00:00:00:00"},
        {"1F2:none:-1", 0, "1/8:F2 00 FF 00 00 00 00 00", "F2:00:FF:00:00:00"},
        {"", 0, "1/8:00 00 00 00 00 00 00 00", "00:00:00:00:00:00"}};
    add(MAC, "AA");
    expectPlainFailure(board.setMacAddress(0, "1:2:3:4:5:6:7", 0, error));
    EXPECT_EQ(str(error), "ERR MAC TOO LONG");
    EXPECT_EQ(tagsOf(board), Tags{"1/1:AA"});
    for (const auto& row : rows) {
        EXPECT_TRUE(board.setMacAddress(0, row.text, row.iface, error).isSuccess());
        EXPECT_EQ(tagsOf(board), Tags{row.tag}) << row.text;
        EXPECT_TRUE(board.getMacAddress(0, mac, iface, error).isSuccess());
        EXPECT_EQ(str(mac), row.read);
        EXPECT_EQ(iface, row.iface >> 16);
    }
    expectPlainFailure(board.setMacAddress(1, "1:2:3:4:5:6:7", 0, error));
    EXPECT_EQ(str(error), "ERR TAG '1:=MacAddress' NOT FOUND");
    expectPlainFailure(board.getMacAddress(1, mac, iface, error));
}

TEST_F(CBoardDescrTypedTest, AddedMacAddressOverwritesTheLastOneAndTheNewTagStaysEmpty) {
    const char* const one = "00 07 00 04";
    const char* const three = "00 07 00 04 00 01 00 05 AA 00 07 00 04 00 01 00 05 BB";
    const std::string z = "1/8:09 09 00 00 00 00 00 07";
    const struct {
        const char* image;
        unsigned index;
        Tags tags;
    } rows[] = {{one, 9, {"7/0:", z}},
                {three, 0, {"7/0:", "1/0:", "1/1:AA", "7/0:", z}},
                {three, 1, {"7/0:", "1/1:AA", "7/0:", "1/0:", z}},
                {three, 0xFFFFFFFF, {"7/0:", "1/1:AA", "7/0:", "1/0:", z}}};
    for (const auto& row : rows) {
        EXPECT_TRUE(board.importBD(fromHex(row.image), error).isSuccess());
        EXPECT_TRUE(board.insertMacAddress(row.index, "9:9", 0x70000).isSuccess());
        EXPECT_EQ(tagsOf(board), row.tags) << &row - rows;
    }
    EXPECT_TRUE(board.importBD(fromHex(three), error).isSuccess());
    EXPECT_TRUE(board.addMacAddress("9:9", 0x70000).isSuccess());
    EXPECT_EQ(tagsOf(board), (Tags{"7/0:", "1/1:AA", "7/0:", "1/0:", z}));
    expectPlainFailure(board.addMacAddress("1:2:3:4:5:6:7", 0));
    EXPECT_EQ(tagsOf(board), (Tags{"7/0:", "1/1:AA", "7/0:", "1/0:", "1/0:", z}));
}

TEST_F(CBoardDescrTypedTest, AddingUsesOverriddenCountingAndWriting) {
    struct OwnBoard : CBoardDescr {
        unsigned getNumberOfTag(BD::TagId) override { return 5; }
        XCode setMacAddress(unsigned index, const String&, unsigned, String&) override {
            return XCode(static_cast<int>(index));
        }
        XCode insertMacAddress(unsigned, const String&, unsigned) override { return XCode(99); }
    } own;
    EXPECT_EQ(own.addMacAddress("1:2", 0).getCode(), 5);
}

TEST_F(CBoardDescrTypedTest, ProductTagHoldsPlatformAndProductIfItIsFourBytesLong) {
    unsigned platform = 77;
    unsigned product = 77;
    expectPlainFailure(board.getProductID(product, error));
    EXPECT_EQ(str(error), "ERR TAG '45:=ProductID' NOT FOUND");
    for (const char* data : {"12 34 AB", "12 34 AB CD EF", "12 34 AB CD"}) {
        EXPECT_EQ(std::pair(platform, product), std::pair(77U, 77U));
        ASSERT_TRUE(board.insertTag(0, 45, fromHex(data)).isSuccess());
        const int expected = board.getTags().begin()->length == 4 ? 0 : -1;
        EXPECT_EQ(board.getPlatformID(platform, error).getCode(), expected) << data;
        EXPECT_EQ(board.getProductID(product, error).getCode(), expected) << data;
    }
    EXPECT_EQ(std::pair(platform, product), std::pair(0x1234U, 0xABCDU));
}

} // namespace
