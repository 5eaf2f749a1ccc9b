#include "descriptor/DescriptorCheck.h"

#include <gtest/gtest.h>

#include "support/DriverFixtures.h"

namespace {

using board::Finding;
using board::TagImage;

std::string bytesOf(const std::string& digits) {
    const TString<char> bytes = support::fromHex(digits);
    return std::string(bytes.data(), bytes.length());
}

/// A finding in one line: weight, offset, text.
std::string lineOf(const Finding& finding) {
    const char* const weight = finding.weight == Finding::Weight::CORRUPT   ? "corrupt "
                               : finding.weight == Finding::Weight::WARNING ? "warning "
                                                                            : "note ";
    return weight + std::to_string(finding.offset) + " " + finding.text;
}

const std::string PRODUCT = "00 2D 00 08 12 34 AB CD ";
const std::string END = "00 00 00 04 ";

} // namespace

TEST(DescriptorCheck, FindsNothingInASoundImage) {
    for (const std::string& image :
         {PRODUCT + END, PRODUCT + END + "FF FF 00 FF", PRODUCT + "00 00",
          PRODUCT + "FF FF FF FF FF",
          "00 01 00 0C 02 00 00 00 00 07 00 00 00 01 00 0C 02 00 00 00 00 08 00 01 " + END,
          "12 34 00 04 12 34 00 04 " + END}) {
        for (const Finding& finding : board::checkImage(TagImage(bytesOf(image)), false))
            ADD_FAILURE() << image << ": " << lineOf(finding);
    }
}

TEST(DescriptorCheck, ReportsEachFaultWithItsOffset) {
    const struct {
        std::string image;
        bool isDevice;
        std::vector<std::string> findings; ///< how each begins
    } CASES[] = {
        {"", false, {"warning 0 the image ends without a terminator"}},
        {PRODUCT, false, {"warning 8 the image ends without a terminator"}},
        {PRODUCT + "00", false, {"warning 8 the image ends with a single byte and without"}},
        {PRODUCT + "00 07 00 02",
         false,
         {"corrupt 8 CORRUPTED BOARD DESCRIPTOR: id=7 has invalid"}},
        {PRODUCT + "00 07 00", false, {"corrupt 8 CORRUPTED BOARD DESCRIPTOR: id=7 has invalid"}},
        {PRODUCT + PRODUCT + END, false, {"warning 8 ProductID: is also at 0 (expected one)"}},
        {"00 01 00 04 " + END, false, {"warning 0 MacAddress: has 0 bytes (expected 8)"}},
        {"80 0E 00 06 00 78 " + END, false, {"warning 0 DspChannels: has 2 bytes (expected 4)"}},
        {"00 05 00 07 61 62 63 00 2D 00 05 12 " + END,
         false,
         {"warning 0 Tag5: has an odd length of 3", "warning 7 ProductID: has 1 byte (expected 4)",
          "warning 7 ProductID: has an odd length of 1"}},
        {PRODUCT + END + PRODUCT,
         false,
         {"warning 12 1 tag behind the terminator, from ProductID on"}},
        {PRODUCT + END + PRODUCT + PRODUCT,
         true,
         {"note 12 2 tags behind the terminator, from ProductID on"}},
        {PRODUCT + END + "FF FF 12",
         false,
         {"warning 14 bytes behind the terminator that are neither"}},
        {PRODUCT + END + "00 00 12",
         true,
         {"note 14 bytes behind the terminator that are neither"}},
        {PRODUCT + "00 00 12 34",
         false,
         {"warning 10 bytes behind the terminator that are neither"}},
    };
    for (const auto& each : CASES) {
        const TagImage image(bytesOf(each.image));
        const std::vector<Finding> findings = board::checkImage(image, each.isDevice);
        ASSERT_EQ(findings.size(), each.findings.size()) << each.image;
        for (std::size_t i = 0; i < each.findings.size(); ++i)
            EXPECT_EQ(lineOf(findings[i]).substr(0, each.findings[i].size()), each.findings[i]);
        EXPECT_EQ(image.isCorrupt(), each.findings[0][0] == 'c') << each.image;
    }
}
