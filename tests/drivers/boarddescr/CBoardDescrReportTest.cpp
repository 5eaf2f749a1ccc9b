#include "CBoardDescr.h"

#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "BD_TagMeaning.h"
#include "InfoContainer.h"
#include "support/DriverFixtures.h"

namespace {

using namespace support;
using Rows = std::vector<std::string>;

constexpr unsigned MAX = 0xFFFFFFFFU;

/// The arguments of a report: maximum level, level, maximum index, index.
using Place = std::array<unsigned, 4>;

/// The rows of a report as "<level>.<index> <key>=<value>".
Rows report(const CBoardDescr& board, decltype(&CBoardDescr::getInfo) form, const Place& at) {
    InfoContainer container;
    EXPECT_EQ(&(board.*form)(container, at[0], at[1], at[2], at[3], "board 1: "), &container);
    Rows rows;
    for (const auto& row : container.getRows())
        rows.push_back(str(String::format("%u.%u ", row.level, row.index)) + str(row.key) + "=" +
                       str(row.value));
    return rows;
}

/// The row of one tag in the report for people.
Rows shown(BD::TagId id, const std::string& data) {
    CBoardDescr board;
    EXPECT_TRUE(board.addTag(id, fromHex(data)).isSuccess());
    Rows rows = report(board, &CBoardDescr::getInfo, {2, 0, 0, 0});
    rows.erase(rows.begin()); // the header
    for (std::string& row : rows)
        row.erase(0, 4);
    return rows;
}

class CBoardDescrReportTest : public testing::Test {
protected:
    CBoardDescr board;
    String error;
};

std::string name(BD::TagId id) {
    return str(BD::TAG_ID_TO_STRING(id));
}

TEST_F(CBoardDescrReportTest, EveryIdentifierIsShownByItsKind) {
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

TEST_F(CBoardDescrReportTest, DataIsShownByItsKindEvenIfItDoesNotFit) {
    using Data = std::vector<std::pair<std::string, std::string>>;
    const std::pair<BD::TagId, Data> rows[] = {
        {1,
         Data{{"00 1A 2B 3C 4D FE 80 02", "=00:1A:2B:3C:4D:FE iface=32770"}, {"00", "= iface=0"}}},
        {2, Data{{"FF 80 00 01", "=255.128.0.1"}, {"0A 01", "=10.1.0.0"}}},
        // A text ends at the zero byte that storing adds to an odd length.
        {5, Data{{"", "="}, {"61 20 25 73 00", "=a %s"}}},
        {14, Data{{"61 7A C3 A9 31", "=AZ\xC3\xA9\x31"}}},
        {6, Data{{"00 00 00 0F", "=0xf"}, {"FF FE FD FC", "=0xfffefdfc"}, {"00 0F", "=0x0"}}},
        {16, Data{{"FF FF FF FF", "=4294967295"}, {"00 00 00 00 01", "=0"}}},
        {19, Data{{"0A 1B FF", "=0a 1b ff"}, {"", "="}}}};
    for (const auto& [id, samples] : rows)
        for (const auto& [data, value] : samples)
            EXPECT_EQ(shown(id, data), Rows{name(id) + value}) << data;
}

TEST_F(CBoardDescrReportTest, ProductTagIsShownAsTwoRowsIfItIsFourBytesLong) {
    EXPECT_EQ(shown(45, "12 34 AB CD"), (Rows{"Platform ID=12 34", "Product  ID=ab cd"}));
    for (const char* data : {"", "12 34 AB", "12 34 AB CD EF"})
        EXPECT_EQ(shown(45, data), Rows{"Product/Platform  ID=FAILED TO READ TAG 'ProductID'"})
            << data;
}

TEST_F(CBoardDescrReportTest, RowsAreTwoLevelsBelowTheHeaderInListOrder) {
    for (const auto& [id, data] : {std::pair(5, "61"), {3, "0A 1B FF 00"}, {5, "63"}, {-3, ""}})
        EXPECT_TRUE(board.addTag(id, fromHex(data)).isSuccess());
    ASSERT_TRUE(board.getTag(-3, 0, error)->setData(nullptr, 100).isSuccess());
    EXPECT_EQ(report(board, &CBoardDescr::getInfo, {5, 3, 4, 4}),
              (Rows{"3.4 board 1: Board Descriptor=", "5.4 Tag5=a", "5.4 Tag5=c", "5.4 Tag-3="}));
    EXPECT_EQ(report(board, &CBoardDescr::getRawInfo, {5, 3, 4, 4}),
              (Rows{"3.4 board 1: Board Descriptor=", "5.4 0 - Tag: 5 (Tag5)=len: 01  data: 61",
                    "5.4 1 - Tag: 3 (Tag3)=len: 04  data: 0a 1b ff 00",
                    "5.4 2 - Tag: 5 (Tag5)=len: 01  data: 63",
                    "5.4 3 - Tag: 4294967293 (Tag-3)=len: 100  data: "}));
}

TEST_F(CBoardDescrReportTest, NothingBeyondTheLimitsIsWritten) {
    EXPECT_TRUE(board.addTag(5, fromHex("61")).isSuccess());
    const std::vector<Place> limits[] = {
        {{0, 1, 0, 0}, {9, 0, 3, 4}, {1, MAX - 1, 0, 0}},
        {{1, 0, 0, 0}, {0, 0, 0, 0}, {MAX, MAX - 1, 0, 0}, {MAX, MAX, 0, 0}},
        {{2, 0, 0, 0}, {2, 0, MAX, MAX}, {MAX, MAX - 2, 0, 0}}};
    for (std::size_t rows = 0; rows < std::size(limits); ++rows)
        for (const Place& at : limits[rows])
            for (const auto form : {&CBoardDescr::getInfo, &CBoardDescr::getRawInfo})
                EXPECT_EQ(report(board, form, at).size(), rows)
                    << "level " << at[1] << " of " << at[0] << ", index " << at[3] << " of "
                    << at[2];
}

} // namespace

TEST(TagMeanings, AscendAndUseTheFrameworksNames) {
    BD::TagId last = 0;
    for (const BD::TagMeaning& meaning : BD::TAG_MEANINGS) {
        EXPECT_LT(last, meaning.first);
        EXPECT_LE(meaning.first, meaning.last);
        last = meaning.last;
    }
    for (BD::TagId id = 0; id <= 0xFFFF; ++id) {
        const char* const name = BD::meaningOf(id).name;
        ASSERT_EQ(BD::TAG_ID_TO_STRING(id), name ? String(name) : String::format("Tag%d", id));
    }
}
