#include "devices/DeviceValue.h"

#include <gtest/gtest.h>

#include "support/TempDir.h"

using namespace std::string_literals;
using support::TempDir;

namespace {

using Read = board::Result<std::int32_t> (*)(const std::string& path);

board::Result<std::int32_t> readFan(const std::string& path) {
    return board::readFanLevel(path, 255);
}

} // namespace

TEST(DeviceValue, IsTheNumberOrAFaultThatShowsWhatTheFileHolds) {
    const Read temperature = board::readThousandths, power = board::readPowerStatus,
               led = board::readBrightness;
    const struct {
        Read read;
        std::string content;
        std::string result;
    } TABLE[] = {
        {readFan, "85"s + std::string(14, '\0'), "85"},
        {readFan, " \t+0255 \n", "255"},
        {readFan, "256\n", "holds '256' (expected 0 to 255)"},
        {readFan, "-1", "holds '-1' (expected 0 to 255)"},
        {readFan, "", "holds nothing (expected a number from 0 to 255)"},
        {readFan, " \n\0"s, "holds nothing (expected a number from 0 to 255)"},
        {readFan, "1\0002"s, R"(holds '1\x002' (expected a number from 0 to 255))"},
        {readFan, "0000000000000085\n", "85"},
        {readFan, "00000000000000085",
         "holds '00000000000000085' (expected a number of at most 16 characters)"},
        {temperature, "N/A\n", "holds 'N/A' (expected a number of thousandths of a degree)"},
        {temperature, "-", "holds '-' (expected a number of thousandths of a degree)"},
        {temperature, "41.5", "holds '41.5' (expected a number of thousandths of a degree)"},
        {temperature, "-273150\n", "-273150"},
        {temperature, "-273151\n",
         "holds '-273151' (expected -273150 to 1000000 thousandths of a degree)"},
        {temperature, "1000001",
         "holds '1000001' (expected -273150 to 1000000 thousandths of a degree)"},
        {temperature, "\x1b" + std::string(40, 'x'),
         R"(holds '\x1b)" + std::string(31, 'x') +
             "...' (expected a number of thousandths of a degree)"},
        {power, "9999", "9999"},
        {power, "00001", "holds '00001' (expected a number of at most 4 characters)"},
        {power, "-1", "holds '-1' (expected 0 to 9999)"},
        {led, "256", "256"},
        {board::readRpm, "2147483648",
         "holds '2147483648' (expected 0 to 2147483647 revolutions "
         "per minute)"},
    };
    const TempDir dir;
    const std::string path = dir.path("file");
    const auto resultOf = [&](Read read) {
        const auto number = read(path);
        if (number)
            return std::to_string(*number);
        EXPECT_EQ(number.fault().rfind(path + ": ", 0), 0U) << number.fault();
        return number.fault().substr(path.size() + 2);
    };
    EXPECT_EQ(resultOf(led), "can't open: No such file or directory");
    for (const auto& row : TABLE) {
        dir.write("file", row.content);
        EXPECT_EQ(resultOf(row.read), row.result) << testing::PrintToString(row.content);
    }
    dir.write("max_brightness", "255\n");
    for (const auto& [held, result] : {std::pair("255\n", "255"),
                                       {"256\n", "holds '256' (expected "
                                                 "0 to 255)"}}) {
        dir.write("file", held);
        EXPECT_EQ(resultOf(led), result) << "of 255";
    }
}
