#include "leds/LedTrace.h"

#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "host/leds/LedModel.h"
#include "host/leds/RandomTables.h"
#include "leds/TracedLedCtrl.h"

using support::below, support::Random, support::randomLine, support::randomTable;

namespace {

/// The library's sequencer without a trace, ticked by hand.
class Plain : public LedCtrl {
public:
    explicit Plain(const std::vector<CmdDef>& rows)
        : LedCtrl(rows.data(), static_cast<unsigned>(rows.size()), nullptr, 0, ACCESS_NONE, 100,
                  support::RANDOM_PATTERN, NotStarted()) {}
    using LedCtrl::handleCmd, LedCtrl::nextOutput, LedCtrl::setupDefault;
};

class Traced : public board::TracedLedCtrl {
public:
    Traced(const board::LedSequencerProfile& profile, const board::LedTable& table)
        : TracedLedCtrl(profile, table, {}) {}
    using TracedLedCtrl::handle, TracedLedCtrl::holds, TracedLedCtrl::rerun, TracedLedCtrl::restore;
    using TracedLedCtrl::runDefaults, TracedLedCtrl::tick;

    /// What it shows with no time limit: steady and blinking LEDs, and endless rolls.
    std::string state() const {
        std::ostringstream text;
        text << std::hex << view().steadyMask << " " << view().blinkMask;
        std::multiset<std::string> rolls;
        for (const ActionDesc& action : view().actions)
            if (action.endless)
                rolls.insert(action.cmd->word2);
        for (const std::string& roll : rolls)
            text << " " << roll;
        return text.str();
    }
};

std::string textOf(const board::LedCause& cause, const board::LedSequencerProfile& profile) {
    const auto& row = profile.commands[cause.run.row];
    EXPECT_EQ(cause.words, row.word1 + " " + row.word2 + " 0");
    EXPECT_EQ(cause.place, row.place);
    return "row " + std::to_string(cause.run.row) + ", line '" +
           (cause.run.isDefault() ? "default " : "") + cause.run.line + "', tick " +
           std::to_string(cause.run.since.seconds) + ", left " +
           (cause.ticksLeft ? std::to_string(*cause.ticksLeft) : "-") +
           (cause.isShown ? "\n" : ", hidden\n");
}

std::string textOf(const board::LedExplanation& led, const board::LedSequencerProfile& profile) {
    std::string text = led.driver ? textOf(*led.driver, profile) : "";
    for (const board::LedCause& cause : led.covers)
        text += textOf(cause, profile);
    return text;
}

} // namespace

TEST(LedTrace, ExplainsRandomTablesAsAModelDoesAndShowsWhatTheLibraryShows) {
    for (unsigned seed = 0; seed < 1000; ++seed) {
        Random random(seed);
        const board::LedSequencerProfile profile = randomTable(random, true);
        const board::LedTable table(profile);
        support::LedModel model(table.commands());
        Plain plain(table.commands());
        Traced traced(profile, table);
        plain.setupDefault();
        model.runDefaults("");
        traced.runDefaults(TYTime());
        const unsigned look = 40 + below(random, 20); // after the blink pattern was loaded
        for (unsigned tick = 0; tick < look + 10; ++tick) {
            for (unsigned lines = below(random, 4); tick != 0 && lines > 1; --lines) {
                std::string line = randomLine(random, profile);
                const auto row = std::find_if(
                    profile.commands.begin(), profile.commands.end(),
                    [&](const auto& each) { return each.word1 + " " + each.word2 == line; });
                plain.handleCmd(line.data());
                EXPECT_EQ(traced.handle(line.data(), TYTime(tick, 0)),
                          row != profile.commands.end());
                if (row != profile.commands.end())
                    model.run(std::size_t(row - profile.commands.begin()), line);
            }
            const std::uint32_t output = plain.nextOutput();
            model.tick();
            traced.tick();
            if (tick % 7 != seed % 7)
                continue;
            for (const board::LedExplanation& led : traced.explain()) {
                ASSERT_EQ(led.isLit, (output & led.mask) != 0)
                    << "table " << seed << ", tick " << tick << ", LED " << led.mask;
                ASSERT_EQ(textOf(led, profile), model.holders(led.mask))
                    << "table " << seed << ", tick " << tick << ", LED " << led.mask;
            }
        }
    }
}

TEST(LedTrace, HoldsAgainAfterARestartWhatHeldWithoutATime) {
    for (unsigned seed = 0; seed < 1000; ++seed) {
        Random random(seed);
        board::LedSequencerProfile profile = randomTable(random, false);
        profile.commands.front().word2.clear(); // its line has one word
        const board::LedTable table(profile);
        Traced before(profile, table), after(profile, table);
        before.runDefaults(TYTime());
        for (unsigned tick = 1; tick < 30; ++tick) {
            std::string line = randomLine(random, profile);
            if (below(random, 3) != 0)
                before.handle(line.data(), TYTime(tick, 0));
            before.tick();
        }
        const std::vector<board::LedHold> holds = before.holds();
        after.runDefaults(TYTime(99, 0));
        after.restore(holds);
        std::string lines, linesAfter;
        for (const board::LedHold& hold : holds)
            lines += hold.line + "@" + std::to_string(hold.since.seconds) + ",";
        for (const board::LedHold& hold : after.holds())
            linesAfter += hold.line + "@" + std::to_string(hold.since.seconds) + ",";
        ASSERT_EQ(after.state(), before.state()) << "table " << seed << ": " << lines;
        ASSERT_EQ(linesAfter, lines) << "table " << seed;
    }
}
