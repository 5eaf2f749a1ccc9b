#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "leds/LedRow.h"
#include "leds/TracedLedCtrl.h"
#include "leds/check/LedCheck.h"

// The sequencer must behave as the check of a table claims. These tests check random tables, run
// them, and compare.

namespace {

using Random = std::mt19937;

constexpr unsigned RANDOM_TABLES = 2000, CHECKED_TICKS = 50;

template <class Values>
auto oneOf(Random& random, const Values& values) {
    return values[random() % std::size(values)];
}

board::Profile randomProfile(Random& random) {
    board::Profile profile;
    board::LedSequencerProfile& tables = profile.ledService.emplace();
    tables.access = LedCtrl::ACCESS_NONE;
    tables.blinkPattern = oneOf(random, std::array{0U, UINT32_MAX, 0x5A0FF0A5U, 0x80000000U});
    for (const std::uint32_t mask : {1U, 2U, 4U, 8U, 0x80000000U})
        tables.files.push_back({static_cast<std::int32_t>(mask), {"led", std::to_string(mask)}, 1});
    for (unsigned row = 0, rows = 2 + random() % 8; row < rows; ++row)
        tables.commands.push_back({oneOf(random, std::array{"a", "b"}),
                                   oneOf(random, std::array{"p", "q", "r", "s", "no way"}), 0,
                                   oneOf(random, std::array{1U, 2U, 3U, 6U, 8U, 0x80000001U}),
                                   static_cast<LedCtrl::ActionKind>(random() % 8),
                                   static_cast<std::int32_t>(random() % 4) - 1,
                                   oneOf(random, std::array{0, 0, 0, 0, 100, 700, -500}),
                                   random() % 2 == 0, std::to_string(row)});
    return profile;
}

/// The sequencer, ticked by hand.
class Engine : public board::TracedLedCtrl {
public:
    Engine(const board::LedSequencerProfile& tables, const board::LedTable& table)
        : TracedLedCtrl(tables, table, {}), m_table(table) {
        runDefaults(TYTime());
    }

    /// The number of the row that the line runs; empty if there is none.
    std::optional<std::size_t> send(std::string line) {
        const std::string copy = line;
        if (!handle(line.data(), TYTime()))
            return std::nullopt;
        const auto& rows = m_table.commands();
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (copy == rows[i].word1 + std::string(" ") + rows[i].word2)
                return i;
        return std::nullopt;
    }

    using LedCtrl::nextOutput; ///< a tick that is not traced
    using TracedLedCtrl::tick; ///< a tick that `shows` knows about

    /// Whether the row shows on one of the LEDs.
    bool shows(std::size_t row, std::uint32_t leds) const {
        // A row that put an LED out still explains that LED after the row has ended.
        const auto isShown = [&](const board::LedCause& cause) {
            return cause.run.row == row && cause.isShown && (cause.ticksLeft || holds(row, 0));
        };
        const auto all = explain();
        return std::any_of(all.begin(), all.end(), [&](const board::LedExplanation& led) {
            return (led.mask & leds) != 0 &&
                   ((led.driver && isShown(*led.driver)) ||
                    std::any_of(led.covers.begin(), led.covers.end(), isShown));
        });
    }

    /// Whether the row's state is on all LEDs, or its endless roll runs.
    bool holds(std::size_t row, std::uint32_t leds) const {
        const LedCtrl::CmdDef& its = m_table.commands()[row];
        if (its.action == ACTION_ON && its.timeMs == 0)
            return (leds & ~view().steadyMask) == 0;
        if (its.action == ACTION_BLINK && its.timeMs == 0)
            return (leds & ~view().blinkMask) == 0;
        const auto isIts = [&](const ActionDesc& action) {
            return action.endless && action.cmd->word1 == its.word1; // pointers: the same row
        };
        return std::any_of(view().actions.begin(), view().actions.end(), isIts);
    }

private:
    const board::LedTable& m_table;
};

std::string randomLine(Random& random) {
    return oneOf(random, std::array{"a", "b"}) + std::string(" ") +
           oneOf(random, std::array{"p", "q", "r", "s"});
}

/// What is claimed about a profile, by the number of the row that each claim is about.
class Claims {
public:
    explicit Claims(const board::Profile& profile) : m_findings(board::checkLeds(profile)) {}

    /// For each row with a finding that contains `text`, what follows that text.
    std::map<std::size_t, std::string> with(const std::string& text) const {
        std::map<std::size_t, std::string> rows;
        for (const board::LedFinding& finding : m_findings)
            if (const auto at = finding.fault.what.find(text); at != std::string::npos)
                rows[std::stoul(finding.fault.place)] = finding.fault.what.substr(at + text.size());
        return rows;
    }

private:
    const std::vector<board::LedFinding> m_findings;
};

/// The mask at the start of a text, or `otherwise` if there is none.
std::uint32_t maskIn(const std::string& text, std::uint32_t otherwise) {
    return text.rfind("0x", 0) == 0 ? static_cast<std::uint32_t>(std::stoul(text, nullptr, 16))
                                    : otherwise;
}

} // namespace

TEST(LedCheckTruth, ARowThatNeverRunsCanBeRemovedAndADarkLedNeverLights) {
    unsigned removed = 0, dark = 0;
    for (unsigned seed = 0; seed < RANDOM_TABLES; ++seed) {
        Random random(seed);
        const board::Profile profile = randomProfile(random);
        const board::LedSequencerProfile& tables = *profile.ledService;
        const Claims claims(profile);
        board::LedSequencerProfile rest = tables;
        const auto neverRun = claims.with("; this row never runs");
        for (auto row = neverRun.rbegin(); row != neverRun.rend(); ++row)
            rest.commands.erase(rest.commands.begin() + static_cast<std::ptrdiff_t>(row->first));
        std::uint32_t unlit = 0;
        for (const auto& [mask, text] : claims.with("no row that runs lights "))
            unlit |= static_cast<std::uint32_t>(mask);
        removed += static_cast<unsigned>(neverRun.size());
        dark += unlit != 0;
        const board::LedTable table(tables), restTable(rest);
        Engine whole(tables, table), without(rest, restTable);
        for (unsigned tick = 0; tick < CHECKED_TICKS; ++tick) {
            const std::uint32_t lit = whole.nextOutput();
            ASSERT_EQ(lit, without.nextOutput()) << "seed " << seed << ", tick " << tick;
            ASSERT_EQ(lit & unlit, 0U) << "seed " << seed << ", tick " << tick;
            const std::string line = randomLine(random);
            whole.send(line);
            without.send(line);
        }
    }
    EXPECT_GT(removed, RANDOM_TABLES / 2);
    EXPECT_GT(dark, RANDOM_TABLES / 4);
}

TEST(LedCheckTruth, AtTheStartADefaultRowShowsUnlessALaterOneEndsOrChangesIt) {
    unsigned claimed = 0, shown = 0, mixes = 0;
    for (unsigned seed = 0; seed < RANDOM_TABLES; ++seed) {
        Random random(seed);
        const board::Profile profile = randomProfile(random);
        const board::LedSequencerProfile& tables = *profile.ledService;
        const Claims claims(profile);
        const auto whole = claims.with("the start does not show this row: ");
        const auto partly = claims.with("the start does not show this row on ");
        const auto mixed = claims.with("the start mixes this row with ");
        const board::LedTable table(tables);
        Engine engine(tables, table);
        engine.tick();
        for (std::size_t row = 0; row < tables.commands.size(); ++row) {
            const bool isWhole = whole.count(row) != 0, isPartly = partly.count(row) != 0;
            const std::uint32_t all = tables.commands[row].mask;
            if (isWhole || isPartly) {
                ++claimed;
                const std::uint32_t taken = isWhole ? all : maskIn(partly.at(row), 0);
                EXPECT_FALSE(engine.shows(row, taken)) << "seed " << seed << ", row " << row;
            }
            if (tables.commands[row].isDefault && startsAction(tables.commands[row]) && !isWhole) {
                EXPECT_TRUE(engine.shows(row, all)) << "seed " << seed << ", row " << row;
            }
            if (mixed.count(row) != 0) {
                ++mixes;
                const std::size_t other = std::stoul(mixed.at(row));
                EXPECT_TRUE(other != row && engine.shows(row, all) && engine.shows(other, all))
                    << "seed " << seed << ", row " << row;
            }
            shown += tables.commands[row].isDefault && engine.shows(row, all);
        }
    }
    EXPECT_GT(claimed, RANDOM_TABLES / 5);
    EXPECT_GT(mixes, 0U);
    EXPECT_GT(shown, RANDOM_TABLES / 4);
}

TEST(LedCheckTruth, WhatNothingEndsGoesOnWhateverLinesFollow) {
    unsigned ran = 0;
    for (unsigned seed = 0; seed < RANDOM_TABLES; ++seed) {
        Random random(seed);
        const board::Profile profile = randomProfile(random);
        const board::LedSequencerProfile& tables = *profile.ledService;
        const auto endless = Claims(profile).with("once it has run, ");
        if (endless.empty())
            continue;
        const board::LedTable table(tables);
        Engine engine(tables, table);
        std::map<std::size_t, std::uint32_t> running;
        const auto start = [&](std::size_t row) {
            if (endless.count(row) != 0)
                running[row] = maskIn(endless.at(row), tables.commands[row].mask);
        };
        for (std::size_t row = 0; row < tables.commands.size(); ++row)
            if (tables.commands[row].isDefault)
                start(row);
        for (unsigned tick = 0; tick < CHECKED_TICKS; ++tick) {
            engine.nextOutput();
            for (const auto& [row, leds] : running)
                ASSERT_TRUE(engine.holds(row, leds)) << "seed " << seed << ", row " << row;
            if (const auto row = engine.send(randomLine(random)))
                start(*row);
        }
        ran += static_cast<unsigned>(running.size());
    }
    EXPECT_GT(ran, RANDOM_TABLES / 10);
}

TEST(LedCheckTruth, ARowBlinksUnlessItsPatternIsFound) {
    for (const std::uint32_t pattern :
         {0U, UINT32_MAX, 1U, 0x80000000U, 0x7FFFFFFFU, 0xFFFFFFFEU}) {
        board::Profile profile;
        board::LedSequencerProfile& tables = profile.ledService.emplace();
        tables.blinkPattern = pattern;
        tables.files.push_back({1, {"led", "0"}, 1});
        tables.commands.push_back({"a", "b", 0, 1, LedCtrl::ACTION_BLINK, 0, 0, true, "0"});
        const board::LedTable table(tables);
        Engine engine(tables, table);
        std::string wave;
        for (unsigned tick = 0; tick < 32 + 66; ++tick)
            wave += engine.nextOutput() != 0 ? '1' : '0';
        const Claims claims(profile);
        wave.erase(0, 32); // nothing blinks before the pattern is loaded
        EXPECT_EQ(claims.with("no lit tick").size(), wave.find('1') == std::string::npos) << wave;
        EXPECT_EQ(claims.with("no dark tick").size(), wave.find('0') == std::string::npos) << wave;
    }
}
