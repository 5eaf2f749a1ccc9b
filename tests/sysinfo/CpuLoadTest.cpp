#include "CpuLoad.h"

#include <cstring>
#include <type_traits>

#include "CpuFigures.h"
#include "support/Descriptors.h"
#include "support/DriverFixtures.h"

namespace {

using cpufigures::Figures;

constexpr unsigned short UNTOUCHED = 0xABCD;

std::string figuresOf(const char* line) {
    Figures figures{8, 9};
    const bool isWhole = cpufigures::parse(line, figures);
    return (isWhole ? "" : "failed ") + std::to_string(figures.busy) + " " +
           std::to_string(figures.idle);
}

int share(const Figures& from, const Figures& to) {
    unsigned short percent = UNTOUCHED;
    cpufigures::setShare(from, to, percent);
    return percent;
}

} // namespace

TEST(CpuFigures, AreTheLowBitsOfTheFirstFourNumbers) {
    EXPECT_EQ(figuresOf("cpu  10 20 30 400 5000 6 7 8 0 0\n"), "60 400");
    EXPECT_EQ(figuresOf("\tcpu 1\t-2 +3\n\r4x"), "2 4");
    EXPECT_EQ(figuresOf("cpu 4294967295 4294967296 3 8589934599"), "2 7");
    EXPECT_EQ(figuresOf("cpu 18446744073709551617 0 0 36893488147419103234"), "1 2")
        << "65 and 66 bits";
    EXPECT_EQ(figuresOf("cpu 1 2 3"), "failed 8 9");
    EXPECT_EQ(figuresOf("1 2 x 4 5"), "failed 8 9") << "the first word is always the name";
    EXPECT_EQ(figuresOf(""), "failed 8 9");
}

TEST(CpuFigures, GiveTheBusyShareInThirtyTwoBitArithmetic) {
    EXPECT_EQ(share({100, 900}, {160, 940}), 60);
    EXPECT_EQ(share({0xFFFFFFF0, 0xFFFFFFFE}, {14, 8}), 75) << "both counters wrapped";
    EXPECT_EQ(share({0, 5}, {7, 5}), UNTOUCHED) << "no idle time";
    EXPECT_EQ(share({1, 0}, {0, 1}), UNTOUCHED) << "the sum is 0";
    EXPECT_EQ(share({0, 9}, {8, 0}), 0x10000 - 800) << "the sum is -1";
    EXPECT_EQ(share({0, 0}, {21474837, 1}), 0x10000 - 99) << "the product became negative";
    EXPECT_EQ(share({0, 0}, {0x20000000, 0xDFFFFFFF}), 0)
        << "-2147483648 divided by -1 would overflow";
}

TEST(CpuLoad, ReadsTheMachinesOwnCountersAndCanBeSetUpAgain) {
    const auto before = support::openDescriptors();
    CpuLoad load;
    struct { // a meter's layout in memory, part of the binary interface
        std::uint32_t busy[15], idle[15], current, index5, index14;
    } samples;
    static_assert(sizeof samples == sizeof load && std::is_trivially_copyable_v<CpuLoad>);
    for (const char* const round : {"first", "again"}) {
        SCOPED_TRACE(round);
        unsigned long busy = 0x40000000; // neither figure may keep this
        unsigned long idle = busy;
        EXPECT_TRUE(load.setup().isSuccess());
        EXPECT_TRUE(load.getCurrentLoad(busy, idle).isSuccess());
        std::memcpy(&samples, &load, sizeof samples);
        EXPECT_EQ(samples.current, 0U);
        // Checks only busy time: idle time runs backwards on some kernels.
        EXPECT_LE(static_cast<std::uint32_t>(busy) - samples.busy[0], 0x7FFFFFFFU);
        // Sets the samples of 1, 5 and 14 periods ago so far back that the time that this test
        // takes does not count.
        for (const auto& [slot, quarters] : {std::pair(0, 1U), {11, 2U}, {2, 3U}}) {
            samples.busy[slot] = static_cast<std::uint32_t>(busy) - quarters * 5000000;
            samples.idle[slot] = static_cast<std::uint32_t>(idle) - (4 - quarters) * 5000000;
        }
        std::memcpy(static_cast<void*>(&load), &samples, sizeof samples);
        unsigned short shares[3] = {};
        EXPECT_TRUE(load.measure(shares[0], shares[1], shares[2]).isSuccess());
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(shares[i], 25 * (i + 1), 1);
    }
    EXPECT_EQ(support::openDescriptors(), before);
}
