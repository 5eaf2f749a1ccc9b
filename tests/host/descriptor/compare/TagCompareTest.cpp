#include "descriptor/compare/TagCompare.h"

#include "descriptor/TagsJson.h"
#include "host/descriptor/Images.h"

using namespace support;

namespace {

/// The differences, each as "TEXT;".
std::string differencesBetween(const std::string& expected, const std::string& found) {
    std::string lines;
    for (const board::TagDifference& each :
         board::compareTags(board::readExpected(expected, "expected"), imageOf(found)))
        lines += each.text + ";";
    return lines;
}

const std::string X = R"({"id":1,"mac":"02:00:00:00:00:07","iface":0})";
const std::string Y = R"({"id":1,"mac":"02:00:00:00:00:08","iface":1})";
const std::string P = R"({"id":"ProductID","hex":"1234abcd"})";
const std::string TEXT = "00 05 00 08 53 49 4D 00 "; // "SIM" with its padding

} // namespace

TEST(TagCompare, ListsEachDifferenceFromAList) {
    const struct {
        std::string expected; // entries
        std::string found;
        std::string differences;
    } CASES[] = {
        {P + "," + X + R"(,{"id":5,"text":"SIM"},{"id":0,"data":""})",
         PRODUCT + MAC_X + TEXT + END + MAC_Y, ""},
        {"", END, ""},
        {P, END, "ProductID: is missing (expected 1234abcd);"},
        {P, PRODUCT + TEXT + END, "Tag5 at 8: is extra: \"SIM\";"},
        {R"({"id":5,"text":"SIN"})", TEXT + END, R"(Tag5 at 0: is "SIM" (expected "SIN");)"},
        {R"({"id":5,"hex":"53494d000000"})", TEXT + END,
         "Tag5 at 0: is 53494d00 (expected 53494d000000);"},
        {R"({"id":"DspChannels","uint":64})", "80 0E 00 08 00 00 00 78 " + END,
         "DspChannels at 0: is 120 (expected 64);"},
        {X + "," + Y, MAC_X + MAC_X + END,
         "MacAddress.1 at 12: is 02:00:00:00:00:07/0 (expected 02:00:00:00:00:08/1);"},
        {X + "," + Y + "," + P, MAC_Y + PRODUCT + END,
         "MacAddress: is missing (expected 02:00:00:00:00:07/0);"},
        {X + "," + P + "," + Y, MAC_Y + PRODUCT + MAC_X + END,
         "MacAddress at 20: comes after MacAddress.1 at 0 (expected before it);"
         "ProductID at 12: comes after MacAddress.1 at 0 (expected before it);"},
        {X + "," + Y + "," + P, PRODUCT + MAC_X + MAC_Y + END,
         "ProductID at 0: comes before MacAddress.1 at 20 (expected after it);"},
        {P + "," + X, MAC_X + "00 2D 00 08 12 34 AB CE " + END,
         "ProductID at 12: is 1234abce (expected 1234abcd);"
         "ProductID at 12: comes after MacAddress at 0 (expected before it);"},
        {P, PRODUCT, "at 8: no terminator (expected 00 00 00 04);"},
        {P + "," + X, PRODUCT + "00 01 00 02",
         "MacAddress: is missing (expected 02:00:00:00:00:07/0);"
         "at 8: CORRUPTED BOARD DESCRIPTOR: id=1 has invalid field length (chunkLen=2 is too "
         "small) at pos=10;"},
    };
    for (const auto& each : CASES)
        EXPECT_EQ(differencesBetween("[" + each.expected + "]", each.found), each.differences)
            << each.expected;
}

TEST(TagCompare, AcceptsWhatAPatternDescribes) {
    const std::string range = R"("from":"02:00:00:00:00:07","to":"02:00:00:00:00:09")";
    const std::string six = "00 01 00 0A 02 00 00 00 00 07 "; // an address without an interface
    const struct {
        std::string pattern;
        std::string found;
        bool isEqual;
    } CASES[] = {
        {R"("any":true)", "00 01 00 04 ", true},
        {R"("size":8)", MAC_X, true},
        {R"("size":7)", MAC_X, true}, // with padding
        {R"("size":6)", MAC_X, false},
        {R"("size":9)", MAC_X, false},
        {range, MAC_X, true},
        {range, "00 01 00 0C 02 00 00 00 00 09 00 00 ", true},
        {range, "00 01 00 0C 02 00 00 00 00 06 00 00 ", false},
        {range, "00 01 00 0C 02 00 00 00 00 0A 00 00 ", false},
        {range, "00 01 00 0C 02 00 00 00 01 08 00 00 ", false},
        {range, six, false},
        {range + R"(,"iface":1)", MAC_Y, true},
        {range + R"(,"iface":1)", MAC_X, false},
        {R"("matches":"S[0-9]{2}|S1.+")", "00 01 00 08 53 31 32 00 ", true},
        {R"("matches":"S[0-9]{2}|S1.+")", "00 01 00 08 53 31 32 41 ", true},
        {R"("matches":"S[0-9]{2}|T.*")", "00 01 00 08 53 31 32 41 ", false}, // only the start fits
        {R"("matches":"[0-9]{2}")", "00 01 00 08 53 31 32 00 ", false},      // only the end fits
        {R"("matches":"S")", "00 01 00 08 53 00 32 00 ", false},             // goes on after a zero
        {R"("matches":"")", "00 01 00 06 00 00 ", true},
    };
    for (const auto& each : CASES)
        EXPECT_EQ(differencesBetween("[{\"id\":1," + each.pattern + "}]", each.found + END).empty(),
                  each.isEqual)
            << each.pattern << " " << each.found;
}

TEST(TagCompare, RejectsPatternsThatMakeNoSense) {
    const std::string first = R"("from":"02:00:00:00:00:07")";
    const struct {
        std::string entry;
        std::string message;
    } CASES[] = {
        {R"("any":false)", R"("any" is false (expected true))"},
        {R"("size":65531)", R"("size" is 65531 (expected 0 to 65530))"},
        {R"("size":4,"data":"")", R"(has both "size" and "data" (expected one value))"},
        {R"("matches":"a(")", R"("matches": the regular expression is invalid: Unmatched ( or \()"},
        {R"("matches":")" + std::string(1001, 'a') + '"',
         R"("matches": the regular expression has 1001 characters (expected at most 1000))"},
        {R"("matches":"(a)\\1")",
         R"("matches": the regular expression refers back to a group with \1 (expected none of \1 to \9))"},
        {R"("matches":"[]{9}()]((a{255}){255}){255}")",
         R"("matches": the regular expression is too large with its repetitions written out )"
         "(expected at most 10000 characters)"},
        {R"x("matches":"a)")x",
         R"("matches": the regular expression is invalid: Unmatched ) or \))"},
        {first, R"("from" needs the last address (expected "to"))"},
        {R"("to":"02:00:00:00:00:07")", R"("to" needs the first address (expected "from"))"},
        {first + R"(,"to":"02:00:00:00:00:06")", R"("to" is lower than "from")"},
        {R"("any":true,"iface":1)", R"("iface" belongs to "mac" or "from")"},
        {R"("data":""},{"id":0,"data":""},{"id":5,"any":true)",
         "comes after the terminator, so it is never read (expected the terminator last)"},
    };
    for (const auto& each : CASES) {
        const std::string failure =
            failureOf([&] { board::readExpected("[{\"id\":5," + each.entry + "}]", "expected"); });
        EXPECT_EQ(failure.substr(std::min(failure.find(": entry ") + 11, failure.size())),
                  each.message);
    }
    EXPECT_EQ(
        failureOf([&] { board::tagsFromJson(R"([{"id":5,"any":true}])", "tags"); }).substr(0, 39),
        "tags:1: entry 0: unknown key \"any\" (exp");
}

TEST(TagCompare, TakesAnImageAsItIs) {
    const auto compared = [](const std::string& expected, const std::string& found) {
        return differencesBetween(bytesOf(expected), found);
    };
    EXPECT_EQ(compared(PRODUCT, PRODUCT), ""); // neither has a terminator
    EXPECT_EQ(compared(PRODUCT + END, PRODUCT), "at 8: no terminator (expected 00 00 00 04);");
    EXPECT_EQ(compared(ODD + END, "FF FE 00 08 01 02 03 00 " + END), ""); // as stored, as loaded
    EXPECT_EQ(compared("FF FF FF FF", END), "");
    EXPECT_EQ(failureOf([&] { compared("", "FF FF FF FF"); }),
              "expected: is empty (expected an image or a JSON list of tags)");
    EXPECT_EQ(failureOf([&] { compared("00 07 00 02", END); }),
              "expected: CORRUPTED BOARD DESCRIPTOR: id=7 has invalid field length (chunkLen=2 is "
              "too small) at pos=2 (expected a good image)");
}
