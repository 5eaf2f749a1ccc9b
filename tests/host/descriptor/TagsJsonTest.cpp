#include "descriptor/TagsJson.h"

#include "base/EndingSignals.h"
#include "host/descriptor/Images.h"

namespace {

/// The entry, repeated `count` times and separated by commas.
std::string repeated(const std::string& entry, unsigned count) {
    std::string list = entry;
    for (unsigned i = 1; i < count; ++i)
        list += "," + entry;
    return list;
}

} // namespace

TEST(TagsJson, RejectsTagsThatNoImageCanHoldOrThatMayBeAMistake) {
    const std::string tooLong(2 * std::size_t{65531}, '0');
    const struct {
        std::string text;
        std::string message;
    } CASES[] = {
        {"{}", R"( is not an array (expected [{"id":45,"data":"1234abcd"}, ...]))"},
        {"[\n7\n]", R"(2: entry 0: is 7 (expected an object such as {"id":45,"data":"1234abcd"}))"},
        {"[{\"id\":1,\"data\":\"\"},\n\n{\"data\":\"\"}]", R"(3: entry 1: has no "id")"},
        {R"([{"id":1}])",
         "1: entry 0: has no value (expected data, hex, text, u8, u16, u32, uint or mac)"},
        {R"([{"id":65535,"data":""}])",
         "1: entry 0: id 65535 is out of range (expected 1 to 65534, a name, or 0 for the "
         "terminator)"},
        {R"([{"id":[],"data":""}])",
         R"(1: entry 0: "id" is of type array (expected 1 to 65534, a name, or 0 for the )"
         "terminator)"},
        {R"([{"id":"ProductId","data":""}])",
         R"(1: entry 0: "id": 'ProductId' is not a tag (expected 1 to 65534, 0x1 to 0xfffe, or a )"
         "name such as ProductID); did you mean 'ProductID'?"},
        {R"([{"id":"5.1","data":""}])",
         R"(1: entry 0: "id" names an occurrence; entries are counted in their order (expected )"
         "1 to 65534, a name, or 0 for the terminator)"},
        {"[{\"id\":45,\n\"name\":\"MacAddress\",\"data\":\"12345678\"}]",
         R"(2: entry 0: "name" is that of id 1 but "id" is 45 (expected "ProductID"))"},
        {R"([{"id":5,"data":7}])",
         R"(1: entry 0: "data" is not a text (expected hexadecimal digits))"},
        {"[{\"id\":5,\n\"hex\":\"123\"}]",
         R"(2: entry 0: "hex" has 3 digits, an odd number (expected two for each byte))"},
        {R"([{"id":5,"data":"12 4"}])", R"(1: entry 0: "data" is not hexadecimal at character 2)"},
        {R"([{"id":5,"data":"1234","length":3}])",
         R"(1: entry 0: "length" is 3 but "data" has 2 bytes)"},
        {"[{\"id\":5,\"uint\"\n:\n1, \"d\\u001bata\":\"12\"}]",
         R"(3: entry 0: unknown key "d\x1bata" (expected id, data, hex, text, u8, u16, u32, uint, )"
         "mac, iface, length, name or simulated); did you mean 'data'?"},
        {R"([{"id":5,"data":"","data":"12"}])", R"(1: entry 0: the key "data" occurs twice)"},
        {R"([{"id":5,"text":"a","hex":"61"}])",
         R"(1: entry 0: has both "text" and "hex" (expected one value))"},
        {R"([{"id":0,"data":"12"}])", "1: entry 0: id 0 is the terminator, which has no data"},
        {R"([{"id":5,"text":")" + tooLong + "\"}]",
         "1: entry 0: \"text\" has 131062 bytes, too long for a chunk (expected at most 65530)"},
        {R"([{"id":5,"u8":256}])", R"(1: entry 0: "u8" is 256 (expected 0 to 255))"},
        {R"([{"id":5,"uint":-1}])", R"(1: entry 0: "uint" is -1 (expected 0 to 4294967295))"},
        {R"([{"id":5,"u16":"0x10000"}])",
         R"(1: entry 0: "u16" '0x10000' is not a number from 0 to 65535 (expected decimal )"
         "digits, or hexadecimal ones with 0x)"},
        {R"([{"id":1,"mac":"02:00:00:00:00:07"}])",
         R"(1: entry 0: "mac" needs the number of the interface (expected "iface"))"},
        {R"([{"id":1,"mac":"01:00:00:00:00:07","iface":0}])",
         R"(1: entry 0: "mac": '01:00:00:00:00:07' is a multicast or broadcast address )"
         "(expected the address of one interface)"},
        {R"([{"id":5,"data":"","iface":1}])", R"(1: entry 0: "iface" belongs to "mac")"},
        {R"([{"id":0,"data":""},{"id":0,"data":""}])",
         "1: entry 1: comes after the terminator, so it is never read (expected the terminator "
         "last)"},
        {"[{\"id\":5,\"u8\":1},\n{" + std::string(1, '\0') + "}]",
         "2: entry 1: holds a zero byte (expected JSON)"},
        {R"([{"id":5,"name":)" + std::string(7, '['),
         "1: entry 0: is nested too deeply (expected at most 8 levels)"},
        {"[" + repeated(R"({"id":5,"data":""})", 16385),
         "1: entry 16384: is one too many (expected at most 16384 entries, which fill the largest "
         "image)"},
        {"[\n" + repeated(R"({"id":5,"data":"00000000"})", 8193),
         "2: entry 8192: makes an image of 65544 bytes (expected at most 65536)"},
    };
    for (const auto& each : CASES)
        EXPECT_EQ(support::failureOf([&] { board::tagsFromJson(each.text, "tags"); }),
                  "tags:" + each.message);
    board::endQuestion = [] { return true; };
    EXPECT_EQ(support::failureOf([] { board::tagsFromJson("[{\"id\":5", "tags"); }),
              "tags: can't read: Interrupted system call");
    board::endQuestion = nullptr;
    const std::pair<std::string, std::string> PLACES[] = {
        // what comes before the parser's own message
        {"[{\"id\":5,\"data\":\"\"},\n{\"id\":5,\n\"u8\":1e400\n}]", "3: entry 1: number overflow"},
        {"[\n{\"id\":5,\"u8\":1}},\n7]", "2: entry 1: column 16: syntax error"},
        {"[]\n,", "2: column 1: syntax error"},
        {"[\n", "1: entry 0: syntax error"},
    };
    for (const auto& [text, start] : PLACES)
        EXPECT_EQ(support::failureOf([&, json = text] {
                      board::tagsFromJson(json, "tags");
                  }).substr(0, 5 + start.size()),
                  "tags:" + start);
}

TEST(TagsJson, ReadsNamesAndTypedValues) {
    const std::string text = R"([
        {"id":"ProductID","hex":"1234aBcD","length":4},
        {"id":"MacAddress","mac":"02:00:00:00:00:fF","iface":258},
        {"id":"0x5","text":"\u00e9:="},
        {"id":65534,"name":"mode","u8":255}, {"id":7,"u16":"0x102"}, {"id":7,"u32":16909060},
        {"id":7,"uint":1, "name":[{"id":[]}]}, {"id":0,"data":""}])";
    EXPECT_EQ(support::hexOf(board::imageOf(board::tagsFromJson(text, "tags"))),
              support::toHex(
                  support::fromHex("00 2D 00 08 12 34 AB CD 00 01 00 0C 02 00 00 00 00 FF 01 02 "
                                   "00 05 00 08 C3 A9 3A 3D FF FE 00 06 FF 00 00 07 00 06 01 02 "
                                   "00 07 00 08 01 02 03 04 00 07 00 08 00 00 00 01 00 00 00 04")));
}
