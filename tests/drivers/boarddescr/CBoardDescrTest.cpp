#include "CBoardDescr.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CBoardDescrTamarin.h"
#include "support/DriverFixtures.h"

namespace {

using namespace support;
using Tags = std::vector<std::string>;

/// A list of three tags with the identifiers 5, 7, 5.
class CBoardDescrTest : public testing::Test {
protected:
    CBoardDescrTest() {
        for (const auto& [id, data] : {std::pair(5, "50"), {7, "51 00"}, {5, ""}})
            EXPECT_TRUE(board.addTag(id, fromHex(data)).isSuccess());
    }
    BD::Tag& second() { return *board.getTag(7, 0, error); }

    CBoardDescr board;
    String error{"as it was"};
};

TEST_F(CBoardDescrTest, TagIsInsertedAtItsPositionInTheWholeListAndRemovedByOccurrence) {
    const std::pair<unsigned, Tags> rows[] = {{0, {"9/1:FF", "5/1:50", "7/2:51 00", "5/0:"}},
                                              {1, {"5/1:50", "9/1:FF", "7/2:51 00", "5/0:"}},
                                              {3, {"5/1:50", "7/2:51 00", "5/0:", "9/1:FF"}},
                                              {10, {"5/1:50", "7/2:51 00", "5/0:", "9/1:FF"}}};
    for (const auto& [index, tags] : rows) {
        EXPECT_TRUE(board.insertTag(index, 9, fromHex("FF")).isSuccess());
        EXPECT_EQ(tagsOf(board), tags) << "index " << index;
        EXPECT_TRUE(board.removeTag(9, 0, error).isSuccess());
    }
    EXPECT_TRUE(board.removeTag(5, 1, error).isSuccess());
    EXPECT_EQ(tagsOf(board), (Tags{"5/1:50", "7/2:51 00"}));
    CBoardDescr empty;
    EXPECT_TRUE(empty.insertTag(4, 9, fromHex("FF")).isSuccess());
    EXPECT_EQ(tagsOf(empty), Tags{"9/1:FF"});
}

TEST_F(CBoardDescrTest, TagsAreCountedAndFoundByIdentifierAtOrAfterAPosition) {
    EXPECT_EQ(board.getNumberOfTag(5), 2U);
    EXPECT_EQ(board.getNumberOfTag(6), 0U);
    EXPECT_TRUE(board.hasTag(7));
    EXPECT_FALSE(board.hasTag(6));
    auto from = board.getTagIterator(5, 0);
    EXPECT_EQ(board.getTagIterator(from, 5), from);
    EXPECT_EQ(&*board.getTagIterator(from, 7), &second());
    EXPECT_EQ(board.getTagIterator(++from, 5), board.getTagIterator(5, 1));
    auto end = board.getTagIterator(5, 2);
    EXPECT_EQ(CBoardDescr::TagList::ConstIterator(end), board.getTags().end());
    EXPECT_EQ(board.getTagIterator(end, 5), end);
    EXPECT_EQ(board.getTagIterator(6, 0xFFFFFFFF), end);
}

TEST_F(CBoardDescrTest, TagKeepsItsOwnCopyOfDataThatMayBeItsOwn) {
    TString<char> data = fromHex("01 02");
    EXPECT_TRUE(board.setTag(7, 0, data, error).isSuccess());
    data.concat("\x03", 1);
    EXPECT_TRUE(board.getTag(7, 0, data, error).isSuccess());
    EXPECT_EQ(toHex(data), "01 02");
    EXPECT_TRUE(board.setTag(7, 0, second().data, error).isSuccess());
    EXPECT_TRUE(second().setData(second().data.data() + 1, 1).isSuccess());
    EXPECT_EQ(tagsOf(board), (Tags{"5/1:50", "7/1:02", "5/0:"}));
}

TEST_F(CBoardDescrTest, DataEndsAtTheTagsLengthAndNullIsEmptyDataOfThatLength) {
    String text("before");
    second().length = 1;
    EXPECT_EQ(str(second().getDataString(text)), "Q");
    EXPECT_TRUE(second().setData(nullptr, 3).isSuccess());
    EXPECT_EQ(tagsOf(board)[1], "7/3:");
    EXPECT_EQ(str(second().getDataAsHexString(text)), "");
    EXPECT_EQ(second().getDataChar() + second().getDataUInt16(), 0) << "not that wide";
    EXPECT_TRUE(second().setData(TString<char>()).isSuccess());
    EXPECT_EQ(tagsOf(board)[1], "7/0:");
}

TEST_F(CBoardDescrTest, FactoryMakesAnEmptyDescriptorBoundToTheBoardsEeprom) {
    CDriver* const driver = CREATE_BD();
    EXPECT_EQ(str(driver->getDriverName()), "board-descr-driver");
    auto& made = dynamic_cast<CBoardDescrTamarin&>(*driver);
    EXPECT_EQ(tagsOf(made), Tags{});
    const std::string tooLong(513, 'x'); // rejected before the device is touched
    EXPECT_FALSE(made.writeRawBD(TString<char>(tooLong.data(), 513), error).isSuccess());
    EXPECT_EQ(str(error), "FAILED TO WRITE DEVICE '/sys/bus/i2c/devices/1-0050/eeprom': "
                          "DEV SIZE=512, BD SIZE=513");
    EXPECT_EQ(driver->release(), 0U);
}

} // namespace
