#include "leds/preview/LedSubtable.h"

#include <algorithm>

#include "leds/LedRow.h"
#include "leds/check/LedRows.h"
#include "leds/preview/SteppedLedCtrl.h"

namespace board {

namespace {

using Row = LedSequencerProfile::Command;

bool startsOrStopsRoll(const Row& row) {
    return isRoll(row) || row.action == LedCtrl::ACTION_ROLL_STOP;
}

/// Whether one of two rows may end what the other has started.
bool isLinked(const Row& a, const Row& b) {
    return (a.group > 0 && a.group == b.group) ||
           (startsOrStopsRoll(a) && startsOrStopsRoll(b) && a.word1 == b.word1 && a.mask == b.mask);
}

/// The same table without files and with another blink pattern.
LedSequencerProfile bareProfile(const LedSequencerProfile& profile, std::uint32_t blinkPattern) {
    LedSequencerProfile bare = profile;
    bare.access = LedCtrl::ACCESS_NONE;
    bare.blinkPattern = blinkPattern;
    bare.files.clear();
    return bare;
}

} // namespace

std::vector<std::size_t> rowsFor(std::uint32_t mask,
                                 const std::vector<LedSequencerProfile::Command>& rows) {
    std::vector<bool> isFound(rows.size());
    std::vector<std::size_t> found;
    const auto add = [&](std::size_t row) {
        isFound[row] = true;
        found.push_back(row);
    };
    for (std::size_t i = 0; i < rows.size(); ++i)
        if ((rows[i].mask & mask) != 0 || rows[i].action == LedCtrl::ACTION_DEFAULTS)
            add(i);
    for (std::size_t next = 0; next < found.size(); ++next)
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (!isFound[i] && isLinked(rows[found[next]], rows[i]))
                add(i);
    std::sort(found.begin(), found.end());
    return found;
}

LedSequencerProfile profileFor(std::uint32_t mask, const std::vector<std::size_t>& rows,
                               const LedSequencerProfile& profile, std::uint32_t blinkPattern) {
    LedSequencerProfile part = bareProfile(profile, blinkPattern);
    part.commands.clear();
    for (const std::size_t row : rows)
        part.commands.push_back(profile.commands[row]);
    for (std::uint32_t bits = mask; bits != 0; bits &= bits - 1)
        part.files.push_back({static_cast<std::int32_t>(bits & -bits), {"led", ""}});
    part.files.push_back({static_cast<std::int32_t>(mask), {"led", ""}});
    return part;
}

std::string blinkPhases(const LedSequencerProfile& profile) {
    const LedSequencerProfile bare = bareProfile(profile, profile.blinkPattern);
    const LedTable table(bare);
    SteppedLedCtrl sequencer(bare, table);
    std::string phases;
    for (unsigned tick = 0; tick < FIRST_BLINK + BLINK_PERIOD; ++tick) {
        sequencer.step();
        phases += (sequencer.view().phase & 1) != 0 ? '1' : '0';
    }
    return phases;
}

std::vector<bool> reachableRows(const LedSequencerProfile& profile) {
    const LedRows rows(profile);
    std::vector<bool> isReachable;
    for (const LedRow& row : profile.commands)
        isReachable.push_back(rows.hasLine(row));
    return isReachable;
}

} // namespace board
