#include "leds/preview/LedStateSpace.h"

#include <algorithm>
#include <unordered_map>

#include "leds/LedRow.h"
#include "leds/preview/LedSubtable.h"
#include "leds/preview/SteppedLedCtrl.h"

namespace board {

namespace {

constexpr std::size_t MOST_TICKS = 2000000; ///< to run in search of states

/// Two sequencers that handle the same lines. What blinks is dark in one and lit in the other.
class Twins {
public:
    Twins(const LedSequencerProfile& dark, const LedSequencerProfile& light, const LedTable& table)
        : m_dark(dark, table), m_light(light, table) {
        m_light.skip(FIRST_BLINK + 1);
        m_dark.runDefaults();
        m_light.runDefaults();
    }
    void run(const std::string& line) {
        m_dark.run(line);
        m_light.run(line);
    }
    void step() {
        inDark = m_dark.step();
        inLight = m_light.step();
    }
    const SteppedLedCtrl& sequencer() const { return m_dark; }

    std::uint32_t inDark = 0, inLight = 0; ///< what was lit in the last tick

private:
    SteppedLedCtrl m_dark, m_light;
};

/// The limits of a search, shared by the LEDs of a table.
struct Budget {
    std::size_t states = MOST_LED_STATES, ticks = MOST_TICKS;
};

/// Finds the states of one LED.
class LedExplorer {
public:
    LedExplorer(const LedSequencerProfile& profile, const LedWaves& waves, std::uint32_t mask,
                Budget& budget)
        : m_mask(mask), m_waves(waves), m_rows(rowsFor(mask, profile.commands)),
          m_dark(profileFor(mask, m_rows, profile, 0)),
          m_light(profileFor(mask, m_rows, profile, UINT32_MAX)), m_table(m_dark),
          m_budget(budget) {
        const std::vector<bool> isReachable = reachableRows(profile);
        m_machine.mask = mask;
        for (const std::size_t row : m_rows)
            if (isReachable[row])
                m_machine.rows.push_back(row);
    }

    /// False if the budget is used up.
    bool explore() {
        // Begins at the start: most states are reached from there in fewer ticks than from the
        // preview.
        Twins twins(m_dark, m_light, m_table);
        step(twins);
        stateOf(twins, {LedMachine::NOT_LISTED, {}});
        followAll();
        runPreview();
        followAll();
        return !m_isOver;
    }

    LedMachine take() { return std::move(m_machine); }

private:
    /// How a state is reached: from another state, by the lines of one tick.
    struct Way {
        std::uint32_t from; ///< NOT_LISTED for the start
        std::vector<std::size_t> rows;
    };

    bool matters(std::size_t row) const {
        return std::binary_search(m_rows.begin(), m_rows.end(), row);
    }

    void step(Twins& twins) {
        twins.step();
        m_isOver = m_isOver || --m_budget.ticks == 0;
    }

    /// Finds the successors of each state that has not been followed yet.
    void followAll() {
        for (; m_next < m_machine.states.size() && !m_isOver; ++m_next)
            for (std::size_t input = 0; input <= m_machine.rows.size() && !m_isOver; ++input)
                if (!m_isKnown[m_next][input])
                    follow(m_next, input);
    }

    void runPreview() {
        Twins twins(m_dark, m_light, m_table);
        std::uint32_t state = LedMachine::NOT_LISTED;
        auto line = m_waves.lines.begin();
        for (unsigned tick = 0; tick < m_waves.ticks && !m_isOver; ++tick) {
            Way way{state, {}};
            for (; line != m_waves.lines.end() && line->tick <= tick; ++line)
                if (line->row && matters(*line->row)) {
                    twins.run(line->line);
                    way.rows.push_back(*line->row);
                }
            step(twins);
            state = stateOf(twins, way);
            m_machine.run.push_back(state);
        }
    }

    /// Goes from `state` to its successor after `input`, and on from there while the states are
    /// new.
    void follow(std::uint32_t state, std::size_t input) {
        Twins twins(m_dark, m_light, m_table);
        reach(state, twins);
        std::vector<std::size_t> rows;
        if (input > 0) {
            rows.push_back(m_machine.rows[input - 1]);
            run(twins, rows.back());
        }
        if (input > 0 && isDoubled(twins, rows.back())) {
            set(state, input, LedMachine::NOT_LISTED);
            return;
        }
        while (!m_isOver && !m_isKnown[state][input]) {
            step(twins);
            const std::uint32_t next = stateOf(twins, {state, rows});
            set(state, input, next);
            state = next;
            input = 0;
            rows.clear();
        }
    }

    void reach(std::uint32_t state, Twins& twins) {
        std::vector<const Way*> ways;
        for (; state != LedMachine::NOT_LISTED; state = ways.back()->from)
            ways.push_back(&m_ways[state]);
        for (auto way = ways.rbegin(); way != ways.rend() && !m_isOver; ++way) {
            for (const std::size_t row : (*way)->rows)
                run(twins, row);
            step(twins);
        }
    }

    void run(Twins& twins, std::size_t row) const { twins.run(lineOf(m_waves.rows[row])); }

    /// Whether two runs of `row` overlap.
    bool isDoubled(const Twins& twins, std::size_t row) const {
        const auto index = std::lower_bound(m_rows.begin(), m_rows.end(), row) - m_rows.begin();
        const LedCtrl::CmdDef* const known =
            twins.sequencer().rowAt(static_cast<std::size_t>(index));
        const auto& actions = twins.sequencer().view().actions;
        return std::count_if(actions.begin(), actions.end(),
                             [&](const auto& each) { return each.cmd == known; }) > 1;
    }

    void set(std::uint32_t state, std::size_t input, std::uint32_t next) {
        m_machine.states[state].next[input] = next;
        m_isKnown[state][input] = true;
    }

    /// The state that `twins` have reached. Lists the state, with `way`, if it is new.
    std::uint32_t stateOf(const Twins& twins, const Way& way) {
        LedMachine::State state{(twins.inDark & m_mask) != 0,
                                (twins.inLight & m_mask) != 0,
                                {},
                                {},
                                std::vector<std::uint32_t>(m_machine.rows.size() + 1)};
        const std::string key = keyOf(twins, state);
        const auto [known, isNew] =
            m_known.emplace(key, static_cast<std::uint32_t>(m_machine.states.size()));
        if (isNew) {
            if (m_budget.states == 0)
                m_isOver = true;
            else
                --m_budget.states;
            m_isKnown.emplace_back(m_machine.rows.size() + 1);
            m_ways.push_back(way);
            m_machine.states.push_back(std::move(state));
        }
        return known->second;
    }

    /// Everything that decides what the LED shows from now on, as a text. Completes `state`.
    std::string keyOf(const Twins& twins, LedMachine::State& state) const {
        std::string key;
        const auto add = [&](std::uint64_t number) { key += std::to_string(number) + " "; };
        const LedCtrl::View view = twins.sequencer().view();
        const std::uint32_t parts[] = {twins.inDark, twins.inLight, view.steadyMask, view.blinkMask,
                                       view.actionMask};
        for (const std::uint32_t mask : parts)
            add(mask & m_mask);
        for (const LedCtrl::ActionDesc& action : view.actions) {
            add(twins.sequencer().indexOf(*action.cmd));
            add(action.endless ? UINT64_MAX : action.ticksLeft);
            add((action.cmd->ledMask & m_mask) != 0 ? action.rollBit : 0);
        }
        for (const auto& [group, row] : view.groups)
            if (group > 0) {
                key += "g";
                add(static_cast<std::uint64_t>(group));
                add(twins.sequencer().indexOf(*row));
            }
        for (const LedExplanation& bits : twins.sequencer().explainNow()) {
            key += "/";
            if (!bits.isHeld) // what has ended does not matter any more
                continue;
            add(bits.driver->run.row);
            for (const LedCause& cause : bits.covers)
                add(cause.run.row);
            if (bits.mask == m_mask)
                describe(bits, state);
        }
        return key;
    }

    void describe(const LedExplanation& led, LedMachine::State& state) const {
        state.drive = driveOf(led, m_dark);
        state.drive->row = m_rows[state.drive->row];
        for (const LedCause& cause : led.covers) {
            state.covers.push_back(driveOf(cause, m_dark));
            state.covers.back().row = m_rows[state.covers.back().row];
        }
    }

    const std::uint32_t m_mask;
    const LedWaves& m_waves;
    const std::vector<std::size_t> m_rows; ///< those that may affect the LED, in the table's order
    const LedSequencerProfile m_dark, m_light;
    const LedTable m_table;
    Budget& m_budget;
    bool m_isOver = false;
    std::uint32_t m_next = 0; ///< the first state that `followAll` has not followed
    LedMachine m_machine;
    std::vector<Way> m_ways;                  ///< to each state
    std::vector<std::vector<bool>> m_isKnown; ///< which successors of each state are known
    std::unordered_map<std::string, std::uint32_t> m_known;
};

} // namespace

std::optional<std::vector<LedMachine>> exploreLeds(const LedSequencerProfile& profile,
                                                   const LedWaves& waves) {
    Budget budget;
    std::vector<LedMachine> machines;
    for (const LedWave& led : waves.leds) {
        LedExplorer explorer(profile, waves, led.mask, budget);
        if (!explorer.explore())
            return std::nullopt;
        machines.push_back(explorer.take());
    }
    return machines;
}

} // namespace board
