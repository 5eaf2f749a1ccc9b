#include "CpuLoad.h"

#include <fstream>

#include "CpuFigures.h"
#include "support/Descriptors.h"
#include "support/DriverFixtures.h"

namespace {

using cpufigures::Figures;

constexpr unsigned short UNTOUCHED = 0xABCD;

/// A meter that is fed with lines, as the machine's own counters do not stand still.
struct FedLoad : CpuLoad {
    using CpuLoad::setup;

    std::vector<int> measured(const char* line) {
        unsigned short loads[] = {UNTOUCHED, UNTOUCHED, UNTOUCHED};
        EXPECT_EQ(measure(line, loads[0], loads[1], loads[2]).getCode(), line ? 0 : -1);
        return {loads[0], loads[1], loads[2]};
    }
};

std::string figuresOf(const char* line) {
    Figures figures{8, 9};
    const bool isWhole = cpufigures::parse(line, figures);
    return (isWhole ? "" : "failed ") + std::to_string(figures.busy) + " " +
           std::to_string(figures.idle);
}

Figures machinesFigures() {
    std::string line;
    std::getline(std::ifstream(CpuLoad::USAGE_FILE), line);
    Figures figures{};
    EXPECT_TRUE(cpufigures::parse(line.c_str(), figures));
    return figures;
}

int share(const Figures& from, const Figures& to) {
    unsigned short percent = UNTOUCHED;
    cpufigures::setShare(from, to, percent);
    return percent;
}

} // namespace

TEST(CpuFigures, AreTheLowBitsOfTheFirstFourNumbers) {
    EXPECT_EQ(figuresOf("cpu  10 20 30 400 5000 6 7 8 0 0\n"), "60 400");
    EXPECT_EQ(figuresOf("\tcpu 1\t-2 +3\n4x"), "2 4");
    EXPECT_EQ(figuresOf("cpu 4294967295 4294967296 3 8589934599"), "2 7");
    EXPECT_EQ(figuresOf("cpu 18446744073709551617 0 0 36893488147419103234"), "1 2")
        << "65 bits and 66";
    EXPECT_EQ(figuresOf("cpu 1 2 3"), "failed 8 9");
    EXPECT_EQ(figuresOf("1 2 x 4 5"), "failed 8 9") << "the first word is the name, whatever it is";
    EXPECT_EQ(figuresOf(""), "failed 8 9");
}

TEST(CpuFigures, GiveTheBusyShareInThirtyTwoBitArithmetic) {
    EXPECT_EQ(share({100, 900}, {160, 940}), 60);
    EXPECT_EQ(share({0xFFFFFFF0, 0xFFFFFFFE}, {14, 8}), 75) << "both counters wrapped";
    EXPECT_EQ(share({0, 5}, {7, 5}), UNTOUCHED) << "no idle time";
    EXPECT_EQ(share({1, 0}, {0, 1}), UNTOUCHED) << "0 in sum";
    EXPECT_EQ(share({0, 9}, {8, 0}), 0x10000 - 800) << "-1 in sum";
    EXPECT_EQ(share({0, 0}, {21474837, 1}), 0x10000 - 99) << "the product became negative";
    EXPECT_EQ(share({0, 0}, {0x20000000, 0xDFFFFFFF}), 0)
        << "-2147483648 by -1, which no division can do";
}

TEST(CpuLoad, ComparesWithTheSamplesOneFiveAndFourteenPeriodsBack) {
    FedLoad load;
    EXPECT_EQ(load.measured("cpu 60 0 0 40"), (std::vector<int>{60, UNTOUCHED, UNTOUCHED}))
        << "no setup yet";
    load = FedLoad();
    std::vector<Figures> samples{{1000, 3000}};
    EXPECT_TRUE(load.setup("cpu 1000 0 0 3000").isSuccess());
    support::expectPlainFailure(load.setup("cpu 1 2 3")); // and changes nothing
    for (unsigned k = 1; k <= 40; ++k) {
        if (k == 20) {
            EXPECT_EQ(load.measured(nullptr), std::vector<int>(3, UNTOUCHED));
            samples.push_back(samples[k++ - 15]); // the slot keeps what it held
        }
        samples.push_back({1000 + k * k, 3000 + 10 * k});
        std::vector<int> expected;
        for (const unsigned span : {1U, 5U, 14U})
            expected.push_back(share(k < span ? Figures{} : samples[k - span], samples[k]));
        const String line = String::format("cpu 0 0 %u %u", samples[k].busy, samples[k].idle);
        EXPECT_EQ(load.measured(line.c_str()), expected) << k;
    }
}

TEST(CpuLoad, ReadsTheMachinesOwnCounters) {
    const auto before = support::openDescriptors();
    FedLoad load;
    unsigned long busy = 0;
    unsigned long idle = 0;
    const Figures earlier = machinesFigures();
    EXPECT_TRUE(load.setup().isSuccess());
    EXPECT_TRUE(load.getCurrentLoad(busy, idle).isSuccess());
    // Busy time alone: idle time runs backwards on some kernels.
    EXPECT_LE(static_cast<std::uint32_t>(busy) - earlier.busy,
              machinesFigures().busy - earlier.busy);

    // So far back that what the machine does meanwhile is nothing: 25, 50 and 75 percent.
    const auto back = [&](unsigned long millionsBusy, unsigned long millionsIdle) {
        return String::format("cpu 0 0 %lu %lu", busy - millionsBusy * 1000000,
                              idle - millionsIdle * 1000000);
    };
    EXPECT_TRUE(load.setup(back(15, 5).c_str()).isSuccess());
    for (int period = 1; period < 14; ++period)
        load.measured(period < 10 ? back(10, 10).c_str() : back(5, 15).c_str());
    unsigned short last = 0, mid = 0, longest = 0;
    EXPECT_TRUE(load.measure(last, mid, longest).isSuccess());
    EXPECT_LT(last, mid);
    EXPECT_LT(mid, longest);
    EXPECT_EQ(support::openDescriptors(), before);
}
