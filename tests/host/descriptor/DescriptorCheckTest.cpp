#include "descriptor/DescriptorCheck.h"

#include "host/descriptor/Images.h"

using board::Finding;
using namespace support;

namespace {

/// The findings, each as "WEIGHT OFFSET TEXT;".
std::string findingsIn(const std::string& image, bool isDevice,
                       const std::vector<board::TagPlace>& required = {}) {
    std::string lines;
    for (const Finding& finding : board::checkImage(imageOf(image), isDevice, required))
        lines += std::string(finding.weight == Finding::Weight::CORRUPT   ? "corrupt "
                             : finding.weight == Finding::Weight::WARNING ? "warning "
                             : finding.weight == Finding::Weight::BLANK   ? "blank "
                                                                          : "note ") +
                 std::to_string(finding.offset) + " " + finding.text + ";";
    return lines;
}

} // namespace

TEST(DescriptorCheck, ReportsEachFaultWithItsOffset) {
    const std::string unended = " without a terminator (expected 00 00 00 04); written to a "
                                "used device, the rest of its old image would follow;";
    const std::string erased = "the tags end at erased bytes, without a terminator (expected 00 00 "
                               "00 04);";
    const std::string padded = "; storing and loading it adds a zero byte;";
    const std::string stray = "bytes after the terminator that are neither 0x00 nor 0xFF;";
    const struct {
        std::string image;
        bool isDevice;
        std::string findings;
    } CASES[] = {
        {PRODUCT + END + "FF FF 00 FF", false, ""},
        {PRODUCT + "00 00", false, ""},
        {PRODUCT + "FF FF FF FF FF", false, "note 8 " + erased},
        {PRODUCT + "FF FF FF 12", false, "note 8 " + erased + "warning 11 " + stray},
        {"FF FF FF FF FF", true, "blank 0 the device is erased: all 5 bytes are 0xFF;"},
        {"00 00 00 00", false, "blank 0 the image is zeroed: all 4 bytes are 0x00;"},
        {END, true, ""},
        {MAC_X + MAC_Y + "00 01 00 0C 02 00 00 00 00 07 00 02 " + END, false,
         "warning 24 MacAddress: 02:00:00:00:00:07 is also at 0 (expected each address once);"},
        {MAC_X + "00 01 00 0C 02 00 00 00 00 08 00 00 " + END, false,
         "warning 12 MacAddress: interface 0 has another address at 0 (expected one);"},
        {"00 01 00 0C FF FF FF FF FF FF 00 00 00 01 00 0C 00 00 00 00 00 00 00 01 " + END, true,
         "warning 0 MacAddress: FF:FF:FF:FF:FF:FF is a multicast or broadcast address (expected "
         "the address of one interface);warning 12 MacAddress: 00:00:00:00:00:00 is all zero "
         "(expected the address of an interface);"},
        {MAC_X + MAC_Y + "12 34 00 04 12 34 00 04 " + END, false, ""},
        {"", false, "warning 0 the image ends" + unended},
        {PRODUCT, false, "warning 8 the image ends" + unended},
        {PRODUCT + "00", false, "warning 8 the image ends with a single byte and" + unended},
        {PRODUCT + "00 07 00", false,
         "corrupt 8 CORRUPTED BOARD DESCRIPTOR: id=7 has invalid field length (chunkLen=0 is too "
         "small) at pos=10;note 8 no terminator comes before this; 3 bytes are left: 000700;"},
        {PRODUCT + "00 07 00 03 " + MAC_X + "FF FF ", true,
         "corrupt 8 CORRUPTED BOARD DESCRIPTOR: id=7 has invalid field length (chunkLen=3 is too "
         "small) at pos=10;note 8 no terminator comes before this; 18 bytes are left: "
         "000700030001000c0200000000070000...;"},
        {PRODUCT + PRODUCT + END, false, "warning 8 ProductID: is also at 0 (expected one);"},
        {"80 0E 00 06 00 78 " + END, false, "warning 0 DspChannels: has 2 bytes (expected 4);"},
        {"00 05 00 07 61 62 63 00 2D 00 05 12 " + END, false,
         "warning 0 Tag5: has an odd length of 3" + padded +
             "warning 7 ProductID: has 1 byte (expected 4);"
             "warning 7 ProductID: has an odd length of 1" +
             padded},
        {PRODUCT + END + PRODUCT, false,
         "warning 12 1 tag after the terminator, from ProductID on; no load reads them;"},
        {PRODUCT + END + MAC_X + MAC_Y, true,
         "note 12 2 tags after the terminator, from MacAddress on; no load reads them;"},
        {PRODUCT + END + "FF FF 12", false, "warning 14 " + stray},
        {PRODUCT + END + "00 00 12", true, "note 14 " + stray},
        {PRODUCT + "00 00 12 34", false, "warning 10 " + stray},
    };
    for (const auto& each : CASES)
        EXPECT_EQ(findingsIn(each.image, each.isDevice), each.findings) << each.image;
}

TEST(DescriptorCheck, MissesRequiredTags) {
    const std::vector<board::TagPlace> required = {{45, 0}, {1, 1}, {7, 0}, {5, 0}};
    EXPECT_EQ(findingsIn("00 05 00 04 " + PRODUCT + MAC_X + END, false, required),
              "warning 0 Tag5: is empty (required);"
              "warning 28 MacAddress.1: is missing (required);"
              "warning 28 Tag7: is missing (required);");
    EXPECT_EQ(findingsIn(PRODUCT + MAC_X + MAC_Y + "00 05 00 06 61 62 00 07 00 04 " + END, false,
                         {{45, 0}, {1, 1}}),
              "warning 38 Tag7: has 0 bytes (expected 4);");
}
