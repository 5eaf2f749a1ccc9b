#include "descriptor/TagsJson.h"

#include "host/descriptor/Images.h"

TEST(TagsJson, RejectsTagsThatNoImageCanHoldOrThatMayBeAMistake) {
    const std::string tooLong(2 * std::size_t{65531}, '0');
    const struct {
        std::string text;
        std::string message;
    } CASES[] = {
        {"{}", R"(is not an array (expected [{"id":45,"data":"1234abcd"}, ...]))"},
        {R"([{"id":1,"data":""},{"data":""}])", R"(entry 1: has no "id")"},
        {R"([{"id":1}])", R"(entry 0: has no "data")"},
        {R"([{"id":65535,"data":""}])",
         "entry 0: id 65535 is out of range (expected 1 to 65534, or 0 for the terminator)"},
        {R"([{"id":[],"data":""}])",
         R"(entry 0: "id" is of type array (expected 1 to 65534, or 0 for the terminator))"},
        {R"([{"id":5,"data":7}])",
         R"(entry 0: "data" is not a text (expected hexadecimal digits))"},
        {R"([{"id":5,"data":"123"}])",
         R"(entry 0: "data" has 3 digits, an odd number (expected two for each byte))"},
        {R"([{"id":5,"data":"12 4"}])", R"(entry 0: "data" is not hexadecimal at character 2)"},
        {R"([{"id":5,"data":"1234","length":3}])",
         R"(entry 0: "length" is 3 but "data" has 2 bytes)"},
        {R"([{"id":5,"dta":"12"}])",
         R"(entry 0: unknown key "dta" (expected id, name, length, data))"},
        {R"([{"id":5,"data":"","data":"12"}])", R"(the key "data" occurs twice in one entry)"},
        {R"([{"id":0,"data":"12"}])", "entry 0: id 0 is the terminator, which has no data"},
        {R"([{"id":5,"data":")" + tooLong + "\"}]",
         "entry 0: \"data\" has 65531 bytes, too long for a chunk (expected at most 65530)"},
        {std::string("[\0]", 3), "holds a zero byte at 1 (expected JSON)"},
    };
    for (const auto& each : CASES)
        EXPECT_EQ(support::failureOf([&] { board::tagsFromJson(each.text, "tags"); }),
                  "tags: " + each.message);
    for (const std::string text : {"[{]", "[1e400]"}) // the parser's own words
        EXPECT_NE(support::failureOf([&] { board::tagsFromJson(text, "tags"); }), "no failure");
    EXPECT_EQ(board::tagsFromJson(R"([{"id":65534,"data":"aB","length":1}])", "tags")[0].id, 65534);
}
