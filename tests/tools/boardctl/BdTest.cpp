#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/Boardctl.h"
#include "support/TempDir.h"

using nlohmann::json;
using support::boardctl;
using support::Outcome;
using support::TempDir;

namespace {

// An image as the descriptor's writer makes it: an odd tag padded, two tags of one kind, the
// terminator.
const std::string IMAGE("\x00\x2D\x00\x08\x12\x34\xAB\xCD"
                        "\x00\x05\x00\x08one\x00"
                        "\x00\x05\x00\x04"
                        "\xFF\xFE\x00\x06\x80\xFF"
                        "\x00\x00\x00\x04",
                        30);

} // namespace

TEST(Bd, BuildsFromADumpTheSameBytes) {
    const TempDir dir;
    dir.write("image", IMAGE);
    const Outcome dump = boardctl({"bd", "dump", dir.path("image")});
    ASSERT_EQ(dump.status, 0) << dump.err;
    EXPECT_EQ(json::parse(dump.out)[0],
              json({{"id", 45}, {"name", "ProductID"}, {"length", 4}, {"data", "1234abcd"}}));
    dir.write("tags.json", dump.out);
    const Outcome build = boardctl({"bd", "build", dir.path("tags.json"), "-o", dir.path("copy")});
    EXPECT_EQ(build.status, 0) << build.err;
    EXPECT_EQ(dir.read("copy"), IMAGE);
}

TEST(Bd, DumpsOfACorruptImageTheGoodTagsAndSaysWhatIsWrong) {
    const TempDir dir;
    dir.write("image", IMAGE.substr(0, 8) + std::string("\x00\x07\x00\x02", 4));
    for (const std::string command : {"dump", "show", "raw"}) {
        const Outcome outcome = boardctl({"bd", command, dir.path("image"), "--format", "json"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_NE(outcome.out.find(command == "show"  ? "12 34"
                                   : command == "raw" ? "12 34 ab cd"
                                                      : "1234abcd"),
                  std::string::npos);
        EXPECT_TRUE(json::accept(outcome.out)) << outcome.out;
        EXPECT_EQ(outcome.err,
                  "boardctl: CORRUPTED BOARD DESCRIPTOR: id=7 has invalid field length "
                  "(chunkLen=2 is too small) at pos=10\n");
    }
}

TEST(Bd, LeavesTheTargetAloneWhereTheTagsAreWrong) {
    const std::string tooLong(2 * 65532, '0');
    const struct {
        std::string tags;
        std::string message;
    } CASES[] = {
        {"[{]", "line 1"},
        {"{}", "is not an array"},
        {"[7]", "entry 0: is 7"},
        {R"([{"id":1,"data":""},{"data":""}])", "entry 1: has no \"id\""},
        {R"([{"id":1}])", "entry 0: has no \"data\""},
        {R"([{"id":65535,"data":""}])", "id 65535 is out of range (expected 1 to 65534, or 0"},
        {R"([{"id":-1,"data":""}])", "id -1 is out of range"},
        {R"([{"id":1.5,"data":""}])", "\"id\" is 1.5"},
        {R"([{"id":5,"data":"123"}])", "3 digits, an odd number"},
        {R"([{"id":5,"data":"12 4"}])", "not hexadecimal at character 2"},
        {R"([{"id":5,"data":"1234","length":3}])", "\"length\" is 3 but \"data\" has 2 bytes"},
        {R"([{"id":5,"dta":"12"}])", "unknown key \"dta\""},
        {R"([{"id":5,"data":"","data":"12"}])", "the key \"data\" occurs twice"},
        {"[1e400]", "number overflow"},
        {R"([{"id":5,"data":""}])" + std::string("\0 ]", 3), "holds a zero byte at 20"},
        {R"([{"id":0,"data":"12"}])", "id 0 is the terminator"},
        {R"([{"id":5,"data":")" + tooLong + "\"}]",
         "65532 bytes, too long for a chunk (expected at most 65530)"},
        {R"([{"id":5,"data":")" + tooLong.substr(2) + "\"}]",
         "too long for a chunk (expected at most 65530)"},
    };
    const TempDir dir;
    for (const auto& each : CASES) {
        dir.write("tags.json", each.tags);
        dir.write("image", "as it was");
        const Outcome outcome =
            boardctl({"bd", "build", dir.path("tags.json"), "-o", dir.path("image")});
        EXPECT_EQ(outcome.status, 1) << each.message;
        EXPECT_NE(outcome.err.find(each.message), std::string::npos) << each.message << "\n"
                                                                     << outcome.err;
        EXPECT_EQ(dir.read("image"), "as it was") << each.message;
    }
}

TEST(Bd, TakesImagesUpTo64KiB) {
    const TempDir dir;
    // A chunk that fills all but the terminator's four bytes, and then one byte too many.
    std::string image =
        std::string("\x00\x05\xFF\xFC", 4) + std::string(65528, 'x') + std::string("\0\0\0\4", 4);
    dir.write("image", image);
    const Outcome dump = boardctl({"bd", "dump", dir.path("image")});
    EXPECT_EQ(dump.status, 0) << dump.err;
    EXPECT_EQ(json::parse(dump.out)[0]["length"], 65528);
    dir.write("image", image + "x");
    EXPECT_EQ(boardctl({"bd", "dump", dir.path("image")}).status, 1);
}
