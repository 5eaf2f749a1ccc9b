#include "ImageInfo.h"

#include "support/DriverFixtures.h"
#include "support/TempDir.h"

namespace {

using namespace support;

std::string linesOf(const ImageInfo& info) {
    std::string lines;
    for (const String* line : {&info.line1, &info.line2, &info.line3, &info.line6, &info.line7, &info.line8})
        lines += str(*line) + "|";
    return lines + " " + str(info.versionString);
}

} // namespace

TEST(ImageInfo, KeepsSixLinesAndComposesTheVersionByTheKindOfBuild) {
    const TempDir dir;
    const auto before = openDescriptors();
    const std::string longLine(126, 'x');
    const struct {
        std::string file, lines;
    } CASES[] = {
        {"5.2\nBranch\n1234\nfour\nfive\nsix\ndev\neight\nnine\n",
         "5.2|Branch|1234|six|dev|eight| 5.2-dev/1234"},
        {" 5.2\t\r\n Test \n1234", "5.2|Test|1234|||| 5.2/1234"},
        {"5.2\nTest\n", "5.2|Test||||| 5.2/"},
        {"5.2\nbranch\n1234\n", "5.2|branch|1234|||| 5.2"},
        {"5.2\nTests\n\n4\n5\n\n7", "5.2|Tests|||7|| 5.2"},
        {"5.2\nBranch\n", "5.2|Branch||||| 5.2-/"},
        {std::string("5.2\0dropped\nTest\0\n\0\n", 20), "5.2|Test||||| 5.2/"},
        {longLine + "Test\n3\n", longLine + "|Test|3|||| " + longLine + "/3"},
        {longLine + "\nTest", longLine + "||Test|||| " + longLine}, // its newline is a line of its own
        {"", "|||||| "},
    };
    String error = "as it was";
    for (const auto& each : CASES) {
        dir.write("info", each.file);
        ImageInfo info(dir.path("info").c_str());
        EXPECT_EQ(linesOf(info), "|||||| ");
        EXPECT_TRUE(info.init(error).isSuccess()) << each.file;
        EXPECT_EQ(linesOf(info), each.lines) << each.file;
    }
    ImageInfo info(dir.path("info").c_str());
    dir.write("info", "1\n2\n3\n4\n5\n6\n7\n8\n");
    EXPECT_TRUE(info.init(error).isSuccess());
    dir.write("info", "one\n");
    EXPECT_TRUE(info.init(error).isSuccess());
    EXPECT_EQ(linesOf(info), "one|2|3|6|7|8| one") << "lines that are gone keep what they held";

    ImageInfo folder(dir.path("").c_str());
    EXPECT_TRUE(folder.init(error).isSuccess());
    EXPECT_EQ(linesOf(folder), "|||||| ");
    EXPECT_EQ(error, "as it was");

    ImageInfo missing(dir.path("missing").c_str());
    expectPlainFailure(missing.init(error));
    EXPECT_EQ(str(error), "OPEN '" + dir.path("missing") + "' FAILED");
    EXPECT_EQ(openDescriptors(), before);
}

TEST(ImageInfo, ReadsAValueByItsPrefixFromTenBytes) {
    const TempDir dir;
    const auto before = openDescriptors();
    constexpr int UNTOUCHED = 77;
    const std::vector<std::pair<std::string, int>> CASES = {
        {"31\n", 31},
        {"0x1F\n", 31},
        {"017", 15},
        {" \n-0x10 9", -16},
        {"+7,5", 7},
        {"089", 0},
        {"0x", 0},
        {"12345678901", 1234567890},
        {"9999999999", 2147483647},
        {"-999999999", -999999999},
        {"-0xFFFFFFF", -268435455},
        {"0xFFFFFFFF", 2147483647},
        {std::string("1\0002", 3), 1},
        {"          5", UNTOUCHED}, // behind the tenth byte
        {"none", UNTOUCHED},
        {"- 5", UNTOUCHED},
        {"\n", UNTOUCHED},
    };
    for (const auto& [file, expected] : CASES) {
        dir.write("value", file);
        int value = UNTOUCHED;
        EXPECT_TRUE(readValueFromFile(dir.path("value").c_str(), value).isSuccess()) << file;
        EXPECT_EQ(value, expected) << file;
    }
    int value = UNTOUCHED;
    dir.write("empty", "");
    for (const char* unreadable : {"empty", "missing", ""})
        expectPlainFailure(readValueFromFile(dir.path(unreadable).c_str(), value));
    EXPECT_EQ(value, UNTOUCHED);
    EXPECT_EQ(openDescriptors(), before);

    const DescriptorZeroFree zero; // 0 is a descriptor like any other
    EXPECT_TRUE(readValueFromFile(dir.path("value").c_str(), value).isSuccess());
    EXPECT_TRUE(zero.isStillFree());
}
