#include "sysfs/InputDevices.h"

#include <gtest/gtest.h>

#include "support/TempDir.h"

TEST(InputDevices, HaveTheKeysOfTheirBitmap) {
    const support::TempDir sysfs;
    const unsigned word = 8 * sizeof(unsigned long);
    const std::pair<const char*, std::string> CASES[] = {
        {"c0000001", "0, 30 to 31"},
        {"3 0 80000000", "31, " + std::to_string(2 * word) + " to " + std::to_string(2 * word + 1)},
        {"1 x", "holds 'x' (expected hexadecimal words)"},
        {"fffffffffffffffff", "holds 'fffffffffffffffff' (expected hexadecimal words)"},
    };
    const std::string folder = "class/input/event0/device/capabilities";
    sysfs.makeFolder(folder);
    for (const auto& [bitmap, expected] : CASES) {
        sysfs.write(folder + "/key", bitmap + std::string("\n"));
        const auto devices = board::inputDevicesOf(sysfs.path(""));
        ASSERT_EQ(devices.size(), 1U) << bitmap;
        const auto& codes = devices.front().codes;
        const std::string found = codes ? board::rangesOf(*codes) : codes.fault();
        EXPECT_EQ(found.substr(found.size() - std::min(found.size(), expected.size())), expected);
    }
}
