#include "leds/check/LedRowCheck.h"

#include "LedCtrl.h"

namespace board {

namespace {

class RowCheck {
public:
    RowCheck(const LedSequencerProfile& tables, const LedRows& rows, LedFindings& findings)
        : m_tables(tables), m_rows(rows), m_findings(findings), m_shown(shownLeds(tables)) {}

    void check(const LedRow& row) {
        checkWords(row);
        checkMask(row);
        checkTime(row);
        checkAction(row);
        if (row.group < 0)
            mistake(row, "group",
                    std::to_string(row.group) +
                        " is not a group: rows with this number do not end each other (expected 0 "
                        "or more)");
    }

private:
    void mistake(const LedRow& row, const char* key, const std::string& what) {
        m_findings.add(LedFinding::Level::MISTAKE, row, key, what);
    }
    void doubt(const LedRow& row, const char* key, const std::string& what) {
        m_findings.add(LedFinding::Level::DOUBT, row, key, what);
    }

    void checkWords(const LedRow& row) {
        const char* const effect =
            row.isDefault ? "; this row runs only as a default row" : "; this row never runs";
        if (const auto why = LedRows::whyUnsendable(row))
            mistake(row, "", "no line can name this row: " + *why + effect);
        else if (const LedRow* const former = m_rows.formerOf(row))
            mistake(row, "",
                    "its line '" + lineOf(row) + "' runs " + former->place + " instead" + effect);
    }

    void checkMask(const LedRow& row) {
        if (row.action == LedCtrl::ACTION_DEFAULTS || row.action == LedCtrl::ACTION_ROLL_STOP)
            return;
        if (row.mask == 0)
            mistake(row, "mask",
                    isRoll(row) ? "the roll has no LED: it shows nothing"
                                : "is 0: the row shows nothing");
        if (const std::uint32_t dark = row.mask & ~m_shown)
            mistake(row, "mask",
                    hexOf(dark) + " of " + hexOf(row.mask) +
                        " has no file: the row shows nothing there");
        const std::uint32_t later = row.mask & ~1U;
        if (row.action == LedCtrl::ACTION_ROLL_UP && later != row.mask && later != 0)
            doubt(row, "mask",
                  "the roll begins with " + hexOf(later & (~later + 1)) +
                      " and lights bit 0 last (for a bar of LEDs, use bits from 1 up)");
    }

    void checkAction(const LedRow& row) {
        if (row.action < LedCtrl::ACTION_ON || row.action > LedCtrl::ACTION_DEFAULTS)
            mistake(row, "action",
                    std::to_string(row.action) + " is not an action: the row does nothing");
        if (row.action == LedCtrl::ACTION_BLINK && m_tables.blinkPattern == 0)
            mistake(row, "action",
                    "blinks with a `blink_pattern` of 0: it has no lit tick, so this row never "
                    "lights its LEDs");
        if (row.action == LedCtrl::ACTION_BLINK && m_tables.blinkPattern == UINT32_MAX)
            mistake(row, "action",
                    "blinks with a `blink_pattern` of 0xFFFFFFFF: it has no dark tick, so the LEDs "
                    "are lit without blinking");
        if (isEndlessRoll(row) && row.mask != 0 && row.group <= 0)
            mistake(row, "",
                    "each line starts one more roll, which only a roll-stop ends, so ticks take "
                    "longer and longer (expected a group above 0 or a time)");
        if (row.action == LedCtrl::ACTION_DEFAULTS && row.isDefault)
            mistake(row, "",
                    "a default row with this action would run the defaults without end; it is "
                    "skipped");
        if (row.action == LedCtrl::ACTION_ROLL_STOP && m_rows.countRolls(row.word1, row.mask) == 0)
            mistake(row, "",
                    "stops no roll (expected one with the first word '" + row.word1 +
                        "' and mask " + hexOf(row.mask) + ")");
    }

    void checkTime(const LedRow& row) {
        const std::uint32_t tickUs = m_tables.tickUs();
        if (row.timeMs == 0 || tickUs == 0)
            return;
        if (!startsAction(row)) {
            mistake(row, "time_ms", "has no meaning for this action: it is ignored");
            return;
        }
        // The sequencer rounds up to whole ticks in 32 bits of microseconds.
        const auto longest = static_cast<std::int32_t>((UINT32_MAX - tickUs) / 1000);
        const std::uint32_t timeUs = 1000U * static_cast<std::uint32_t>(row.timeMs);
        const std::uint32_t ticks = (tickUs - 1 + timeUs) / tickUs;
        const std::string time = std::to_string(row.timeMs);
        const std::string lasts = "the row lasts " + std::to_string(ticks) +
                                  (ticks == 1 ? " tick, " : " ticks, ") +
                                  std::to_string(std::uint64_t{ticks} * m_tables.tickMs) + " ms";
        if (row.timeMs < 0)
            mistake(row, "time_ms", time + " is below 0 and wraps around: " + lasts);
        else if (row.timeMs > longest)
            mistake(row, "time_ms",
                    time + " is too long and wraps around: " + lasts + " (expected at most " +
                        std::to_string(longest) + ")");
        else if (timeUs % tickUs != 0)
            doubt(row, "time_ms",
                  time + " is not a multiple of the tick of " + std::to_string(m_tables.tickMs) +
                      " ms: " + lasts);
    }

    const LedSequencerProfile& m_tables;
    const LedRows& m_rows;
    LedFindings& m_findings;
    const std::uint32_t m_shown; ///< the LEDs that have a file
};

} // namespace

void checkLedRows(const LedSequencerProfile& tables, const LedRows& rows, LedFindings& findings) {
    RowCheck check(tables, rows, findings);
    for (const LedRow& row : tables.commands)
        check.check(row);
}

} // namespace board
