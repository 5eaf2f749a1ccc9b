#include "ImageInfo.h"

#include <filesystem>

#include "support/Descriptors.h"
#include "support/DriverFixtures.h"
#include "support/TempDir.h"

using namespace support;

namespace {

std::string linesOf(const ImageInfo& info) {
    std::string lines;
    for (const String* line :
         {&info.line1, &info.line2, &info.line3, &info.line6, &info.line7, &info.line8})
        lines += str(*line) + "|";
    return lines + str(info.versionString);
}

} // namespace

TEST(ImageInfo, KeepsSixLinesAndComposesTheVersionByTheKindOfBuild) {
    const TempDir dir;
    const auto before = openDescriptors();
    const std::string whole(126, 'x'); // the most that one line holds
    String error = "as it was";
    ImageInfo again(dir.path("info").c_str());
    for (const auto& [file, expected] : std::vector<std::pair<std::string, std::string>>{
             {" 5.2\t\r\n Test \n1234", "5.2|Test|1234||||5.2/1234"},
             {"5.2\nbranch\n\n4\n5\n\n7", "5.2|branch|||7||5.2"},
             {"5.2\nBranches\n3", "5.2|Branches|3||||5.2"},
             {"5.2\nTested\n3", "5.2|Tested|3||||5.2"},
             {std::string("5.2\0dropped\nTest\0\n", 18), "5.2|Test|||||5.2/"},
             {whole + "Test\n3\n", whole + "|Test|3||||" + whole + "/3"},
             {whole + "\nTest", whole + "||Test||||" + whole}, // its newline counts as a line
             {"5.2\nBranch\n1234\n4\n5\nsix\ndev\neight\n9",
              "5.2|Branch|1234|six|dev|eight|5.2-dev/1234"}}) {
        dir.write("info", file);
        ImageInfo info(dir.path("info").c_str());
        EXPECT_TRUE(info.init(error).isSuccess() && again.init(error).isSuccess()) << file;
        EXPECT_EQ(linesOf(info), expected) << file;
    }
    dir.write("info", "one\n");
    EXPECT_TRUE(again.init(error).isSuccess());
    EXPECT_EQ(linesOf(again), "one|Branch|1234|six|dev|eight|one-dev/1234")
        << "a line that the file lacks keeps its value";
    EXPECT_EQ(str(error), "as it was");
    expectPlainFailure(ImageInfo(dir.path("missing").c_str()).init(error));
    EXPECT_EQ(str(error), "OPEN '" + dir.path("missing") + "' FAILED");
    EXPECT_EQ(openDescriptors(), before);
}

TEST(ImageInfo, ReadsAValueByItsPrefixFromTenBytes) {
    const TempDir dir;
    const DescriptorZeroFree hole; // descriptor 0 is as good as any other here
    const auto before = openDescriptors();
    for (const auto& [file, expected] :
         std::vector<std::pair<std::string, int>>{{"0x1F\n", 31},
                                                  {" \n-0x10 9", -16},
                                                  {"0x", 0},
                                                  {"12345678901", 1234567890},
                                                  {"9999999999", 2147483647},
                                                  {"-999999999", -999999999},
                                                  {"1", 1},
                                                  {"          5", 77} /* after the tenth byte */}) {
        dir.write("value", file);
        int value = 77;
        EXPECT_TRUE(readValueFromFile(dir.path("value").c_str(), value).isSuccess()) << file;
        EXPECT_EQ(value, expected) << file;
    }
    int value = 77;
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_TRUE(readValueFromFile(program.c_str(), value).isSuccess())
        << "a program that runs can be opened, but only for reading";
    dir.write("empty", "");
    for (const char* unreadable : {"empty", "missing", ""})
        expectPlainFailure(readValueFromFile(dir.path(unreadable).c_str(), value));
    EXPECT_EQ(value, 77);
    EXPECT_EQ(openDescriptors(), before);
}
