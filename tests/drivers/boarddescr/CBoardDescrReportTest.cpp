#include "CBoardDescr.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "BD_TagMeaning.h"
#include "support/DriverFixtures.h"

namespace {

using namespace support;

constexpr unsigned MAX = 0xFFFFFFFFU;

/// The rows of one tag in the report for people, without its level and index.
Rows shown(BD::TagId id, const std::string& data) {
    CBoardDescr board;
    EXPECT_TRUE(board.addTag(id, fromHex(data)).isSuccess());
    Rows rows = reportOf(board, {2, 0, 0, 0});
    rows.erase(rows.begin()); // the header
    for (std::string& row : rows)
        row.erase(0, 4);
    return rows;
}

std::string name(BD::TagId id) {
    return str(BD::TAG_ID_TO_STRING(id));
}

TEST(CBoardDescrReportTest, EveryIdentifierIsShownByItsKind) {
    const struct {
        const char* shown; // what the data "ab12" is shown as
        std::vector<std::pair<BD::TagId, BD::TagId>> ranges;
    } kinds[] = {
        {"= iface=0", {{1, 1}}},
        {"=97.98.49.50", {{2, 2}, {4, 4}}},
        {"=ab12", {{5, 5}, {10, 13}, {15, 15}, {23, 25}, {44, 44}, {46, 49}, {32787, 32788}}},
        {"=AB12", {{14, 14}, {22, 22}}},
        {"=0x61623132", {{6, 7}, {9, 9}, {28, 29}, {50, 51}, {32780, 32780}}},
        {" (obsolete)=61 62 31 32", {{8, 8}}},
        {"=1633825074", {{16, 18}, {20, 21}, {26, 27}, {41, 43}}},
        {"=1633825074", {{32768, 32779}, {32781, 32786}, {32789, 32789}, {32791, 32793}}},
        {"=61 62 31 32", {{-65535, -65535}, {-3, 0}, {19, 19}, {30, 40}, {52, 53}}},
        {"=61 62 31 32", {{32766, 32767}, {32790, 32790}, {32794, 32796}, {65535, 65537}}},
    };
    for (const auto& kind : kinds)
        for (const auto& [begin, end] : kind.ranges)
            for (BD::TagId id = begin; id <= end; ++id)
                EXPECT_EQ(shown(id, "61 62 31 32"), Rows{name(id) + kind.shown});
    EXPECT_EQ(shown(3, "61 62 31 32"), Rows{});
}

TEST(CBoardDescrReportTest, DataIsShownByItsKindEvenIfItDoesNotFit) {
    const struct {
        BD::TagId id;
        const char* data;
        Rows rows;
    } cases[] = {
        {1, "00 1A 2B 3C 4D FE 80 02", {"MacAddress=00:1A:2B:3C:4D:FE iface=32770"}},
        {1, "00", {"MacAddress= iface=0"}},
        {2, "FF 80 00 01", {"Tag2=255.128.0.1"}},
        {2, "0A 01", {"Tag2=10.1.0.0"}},
        {5, "", {"Tag5="}},
        {5, "61 20 25 73 00 62", {"Tag5=a %s"}}, // the text ends at its first zero byte
        {14, "61 7A C3 A9 31", {"Tag14=AZ\xC3\xA9\x31"}},
        {6, "00 00 00 0F", {"Tag6=0xf"}},
        {6, "00 0F", {"Tag6=0x0"}},
        {16, "FF FF FF FF", {"Tag16=4294967295"}},
        {16, "00 00 00 00 01", {"Tag16=0"}},
        {45, "12 34 AB CD", {"Platform ID=12 34", "Product  ID=ab cd"}},
        {45, "12 34 AB", {"Product/Platform  ID=FAILED TO READ TAG 'ProductID'"}},
        {0x801A, "0A FF", {"SipLegs=0a ff"}},
        {0x800E, "00 00 00 78", {"DspChannels=120"}},
    };
    for (const auto& [id, data, rows] : cases)
        EXPECT_EQ(shown(id, data), rows) << data;
}

TEST(CBoardDescrReportTest, RowsAreTwoLevelsBelowTheHeaderInListOrder) {
    CBoardDescr board;
    String error;
    for (const auto& [id, data] : {std::pair(5, "61"), {3, "0A 1B FF 00"}, {5, "63"}, {-3, ""}})
        EXPECT_TRUE(board.addTag(id, fromHex(data)).isSuccess());
    ASSERT_TRUE(board.getTag(-3, 0, error)->setData(nullptr, 100).isSuccess());
    EXPECT_EQ(reportOf(board, {5, 3, 4, 4}),
              (Rows{"3.4 > Board Descriptor=", "5.4 Tag5=a", "5.4 Tag5=c", "5.4 Tag-3="}));
    EXPECT_EQ(reportOf(board, {5, 3, 4, 4}, &CBoardDescr::getRawInfo),
              (Rows{"3.4 > Board Descriptor=", "5.4 0 - Tag: 5 (Tag5)=len: 01  data: 61",
                    "5.4 1 - Tag: 3 (Tag3)=len: 04  data: 0a 1b ff 00",
                    "5.4 2 - Tag: 5 (Tag5)=len: 01  data: 63",
                    "5.4 3 - Tag: 4294967293 (Tag-3)=len: 100  data: "}));
}

TEST(CBoardDescrReportTest, NothingBeyondTheLimitsIsWritten) {
    CBoardDescr board;
    EXPECT_TRUE(board.addTag(5, fromHex("61")).isSuccess());
    const std::vector<Place> limits[] = {{{0, 1, 0, 0}, {9, 0, 3, 4}, {1, MAX - 1, 0, 0}},
                                         {{1, 0, 0, 0}, {MAX, MAX - 1, 0, 0}, {MAX, MAX, 0, 0}},
                                         {{2, 0, MAX, MAX}, {MAX, MAX - 2, 0, 0}}};
    for (std::size_t rows = 0; rows < std::size(limits); ++rows)
        for (const Place& at : limits[rows])
            for (const auto form : {&CBoardDescr::getInfo, &CBoardDescr::getRawInfo})
                EXPECT_EQ(reportOf(board, at, form).size(), rows) << testing::PrintToString(at);
}

TEST(CBoardDescrReportTest, TagMeaningsUseTheFrameworksNames) {
    for (BD::TagId id = 0; id <= 0xFFFF; ++id) {
        const char* const meant = BD::meaningOf(id).name;
        ASSERT_EQ(name(id), meant ? meant : "Tag" + std::to_string(id));
    }
}

} // namespace
