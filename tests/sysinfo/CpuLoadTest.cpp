#include "CpuLoad.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CpuFigures.h"
#include "support/DriverFixtures.h"

namespace {

using cpufigures::Figures;

constexpr unsigned short UNTOUCHED = 0xABCD;

/// A meter that is fed with lines, for a machine whose own counters do not stand still.
class FedLoad : public CpuLoad {
public:
    using CpuLoad::measure;
    using CpuLoad::setup;

    /// The three outputs, "-" for one that was left alone; "failed" where the call did.
    std::string measured(const char* line) {
        unsigned short loads[] = {UNTOUCHED, UNTOUCHED, UNTOUCHED};
        const bool done = measure(line, loads[0], loads[1], loads[2]).isSuccess();
        std::string shown;
        for (const unsigned short load : loads)
            shown += load == UNTOUCHED ? "- " : std::to_string(load) + " ";
        return (done ? "" : "failed ") + shown;
    }

    std::string measured(unsigned busy, unsigned idle) {
        return measured(("cpu 0 0 " + std::to_string(busy) + " " + std::to_string(idle)).c_str());
    }
};

} // namespace

TEST(CpuFigures, AreTheLowBitsOfTheFirstFourNumbers) {
    const struct {
        const char* line;
        std::optional<Figures> figures;
    } CASES[] = {
        {"cpu  10 20 30 400 5000 6 7 8 0 0\n", Figures{60, 400}},
        {"\tcpu 1\v2\f3\r+4x", Figures{6, 4}},
        {"cpu 4294967295 4294967296 3 8589934599", Figures{2, 7}}, // counters of a 64-bit kernel
        {"cpu 18446744073709551617 0 0 36893488147419103234", Figures{1, 2}},
        {"cpu -1 0 0 -2", Figures{0xFFFFFFFF, 0xFFFFFFFE}},
        {"cpu 1 2 3", std::nullopt},
        {"cpu 1 2 x 4", std::nullopt},
        {"cpu 1 2 3 -", std::nullopt},
        {"1 2 3 4", std::nullopt}, // the first word is the name, whatever it is
        {"", std::nullopt},
        {nullptr, std::nullopt},
    };
    for (const auto& each : CASES) {
        Figures figures{123, 456};
        const char* const shown = each.line ? each.line : "(null)";
        EXPECT_EQ(cpufigures::parse(each.line, figures), each.figures.has_value()) << shown;
        EXPECT_EQ(figures.busy, each.figures.value_or(Figures{123, 456}).busy) << shown;
        EXPECT_EQ(figures.idle, each.figures.value_or(Figures{123, 456}).idle) << shown;
    }
}

TEST(CpuFigures, GiveTheBusyShareInThirtyTwoBitArithmetic) {
    const struct {
        Figures from, to;
        unsigned short percent;
    } CASES[] = {
        {{100, 900}, {160, 940}, 60},
        {{0, 0}, {2, 1}, 66},
        {{7, 0}, {7, 5}, 0},
        {{0xFFFFFFF0, 0xFFFFFFFE}, {14, 8}, 75}, // both counters wrapped
        {{0, 5}, {7, 5}, UNTOUCHED},             // no idle time
        {{1, 0}, {0, 1}, UNTOUCHED},             // 0 in sum
        {{0, 4}, {8, 1}, 160},                   // idle time ran backwards
        {{0, 9}, {8, 0}, 64736},                 // sum -1: -800
        {{0, 0}, {21474837, 1}, 65437},          // the product has become negative: -99
        {{0, 0}, {0x20000000, 0xDFFFFFFF}, 0},   // -2147483648 by -1, which no division can do
    };
    for (const auto& each : CASES) {
        unsigned short percent = UNTOUCHED;
        cpufigures::setShare(each.from, each.to, percent);
        EXPECT_EQ(percent, each.percent) << each.to.busy << " " << each.to.idle;
    }
}

TEST(CpuLoad, ComparesWithTheSamplesOneFiveAndFourteenPeriodsBack) {
    FedLoad load;
    std::vector<Figures> samples{{1000, 3000}};
    ASSERT_TRUE(load.setup("cpu 1000 0 0 3000").isSuccess());
    EXPECT_EQ(load.setup("cpu 1 2 3").getCode(), XCode::FAILURE) << "and changes nothing";
    for (unsigned k = 1; k <= 50; ++k) {
        if (k == 20) {
            EXPECT_EQ(load.measured(nullptr), "failed - - - ");
            samples.push_back(samples[k - 15]); // the slot keeps what it held
            continue;
        }
        samples.push_back({samples[0].busy + k * k, samples[0].idle + 10 * k});
        std::string expected;
        for (const unsigned span : {1U, 5U, 14U}) {
            unsigned short percent = UNTOUCHED;
            cpufigures::setShare(k < span ? Figures{} : samples[k - span], samples[k], percent);
            expected += std::to_string(percent) + " ";
        }
        EXPECT_EQ(load.measured(samples[k].busy, samples[k].idle), expected) << k;
    }
}

TEST(CpuLoad, MeasuresSinceTheStartOfTheSystemWithoutSetup) {
    FedLoad load;
    EXPECT_EQ(load.measured(60, 40), "60 - - ") << "the longer spans begin in the new sample's own slot";
    EXPECT_EQ(load.measured(70, 70), "25 - - ");
    EXPECT_EQ(load.measured(80, 70), "- - - ") << "no idle time";
}

TEST(CpuLoad, ReadsTheMachinesOwnCounters) {
    const auto before = support::openDescriptors();
    CpuLoad load;
    unsigned long busy = 0;
    unsigned long idle = 0;
    unsigned short percent = UNTOUCHED;
    ASSERT_TRUE(load.getCurrentLoad(busy, idle).isSuccess());
    EXPECT_NE(busy + idle, 0U);
    ASSERT_TRUE(load.measure(percent, percent, percent).isSuccess());
    EXPECT_NE(percent, UNTOUCHED);
    EXPECT_TRUE(load.setup().isSuccess());
    EXPECT_EQ(support::openDescriptors(), before);
}
