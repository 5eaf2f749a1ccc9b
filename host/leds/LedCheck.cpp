#include "leds/LedCheck.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <tuple>

#include "LedCtrl.h"
#include "String.h"
#include "leds/LedPipe.h"

namespace board {

namespace {

using Row = LedSequencerProfile::Command;

std::string hex(std::uint32_t mask) {
    return String::format("0x%X", mask).c_str();
}

bool isRoll(const Row& row) {
    return row.action == LedCtrl::ACTION_ROLL_UP || row.action == LedCtrl::ACTION_ROLL_DOWN;
}

bool takesTime(const Row& row) {
    return row.action == LedCtrl::ACTION_ON || row.action == LedCtrl::ACTION_BLINK || isRoll(row);
}

class Check {
public:
    explicit Check(const LedSequencerProfile& profile) : m_profile(profile) {}

    std::vector<ProfileFault> run() {
        if (m_profile.tickUs() == 0)
            note(m_profile.place + ".tick_ms",
                 std::to_string(m_profile.tickMs) +
                     " is not a tick that the service can use: it stays idle");
        if (m_profile.access != LedCtrl::ACCESS_FILES && m_profile.access != LedCtrl::ACCESS_NONE)
            note(m_profile.place + ".access",
                 std::to_string(m_profile.access) + " is not an access method: nothing is shown");
        for (const LedSequencerProfile::File& file : m_profile.files)
            checkFile(file);
        for (const Row& row : m_profile.commands)
            checkRow(row);
        return std::move(m_notes);
    }

private:
    void note(const std::string& place, const std::string& what) {
        m_notes.push_back({place, what});
    }

    void checkFile(const LedSequencerProfile::File& file) {
        const auto mask = static_cast<std::uint32_t>(file.mask);
        m_shown |= mask;
        if (mask == 0)
            note(file.path.place, "the mask is 0: this LED is never lit");
        const auto [former, isNew] = m_files.insert({mask, &file});
        if (!isNew)
            note(former->second->path.place,
                 "is never written: " + file.path.path + " has the same mask");
        former->second = &file;
    }

    void checkRow(const Row& row) {
        checkWords(row);
        checkMask(row);
        checkTime(row);
        if (row.action < LedCtrl::ACTION_ON || row.action > LedCtrl::ACTION_DEFAULTS)
            note(row.place + ".action",
                 std::to_string(row.action) + " is not an action: the row does nothing");
        if (isRoll(row) && row.mask != 0 && row.timeMs == 0 && row.group <= 0)
            note(row.place, "each line starts one more roll, which only a roll-stop ends, so ticks "
                            "take longer and longer (expected a group above 0 or a time)");
        if (row.action == LedCtrl::ACTION_DEFAULTS && row.isDefault)
            note(row.place, "a default row with this action would run the defaults without end; it "
                            "is skipped");
        const auto isRollOfRow = [&](const Row& other) {
            return isRoll(other) && other.word1 == row.word1 && other.mask == row.mask;
        };
        const auto& rows = m_profile.commands;
        if (row.action == LedCtrl::ACTION_ROLL_STOP &&
            std::none_of(rows.begin(), rows.end(), isRollOfRow))
            note(row.place, "stops no roll (expected one with the first word '" + row.word1 +
                                "' and mask " + hex(row.mask) + ")");
    }

    void checkWords(const Row& row) {
        try {
            // A line may end before its second word or have no word at all.
            const bool isShort = row.word2.empty() && row.number == 0;
            if (!isShort)
                static_cast<void>(ledLine(row.word1, row.word2, row.number));
            else if (!row.word1.empty())
                static_cast<void>(ledLine(row.word1, "x", {}));
        } catch (const std::invalid_argument& error) {
            note(row.place, std::string("no line can name this row: ") + error.what());
        }
        const auto [former, isNew] = m_rows.insert({{row.word1, row.word2, row.number}, &row});
        if (!isNew)
            note(row.place, "no line reaches this row: '" + row.word1 + " " + row.word2 + " " +
                                std::to_string(row.number) + "' is " + former->second->place);
    }

    void checkMask(const Row& row) {
        if (row.action == LedCtrl::ACTION_DEFAULTS || row.action == LedCtrl::ACTION_ROLL_STOP)
            return;
        if (row.mask == 0)
            note(row.place + ".mask", isRoll(row) ? "the roll has no LED: it shows nothing"
                                                  : "is 0: the row shows nothing");
        if (const std::uint32_t dark = row.mask & ~m_shown)
            note(row.place + ".mask", "no file shows " + hex(dark) + " of " + hex(row.mask));
    }

    void checkTime(const Row& row) {
        // The sequencer rounds up to whole ticks in 32 bits of microseconds.
        const auto longest = static_cast<std::int32_t>((UINT32_MAX - m_profile.tickUs()) / 1000);
        if (row.timeMs < 0)
            note(row.place + ".time_ms", std::to_string(row.timeMs) + " is below 0");
        else if (row.timeMs != 0 && !takesTime(row))
            note(row.place + ".time_ms", "has no meaning for this action");
        else if (row.timeMs > longest)
            note(row.place + ".time_ms", std::to_string(row.timeMs) +
                                             " is too long (expected at most " +
                                             std::to_string(longest) + ")");
    }

    struct Key {
        std::string word1, word2;
        std::int32_t number;
        bool operator<(const Key& other) const {
            return std::tie(word1, word2, number) <
                   std::tie(other.word1, other.word2, other.number);
        }
    };

    const LedSequencerProfile& m_profile;
    std::uint32_t m_shown = 0;
    std::map<std::uint32_t, const LedSequencerProfile::File*> m_files;
    std::map<Key, const Row*> m_rows;
    std::vector<ProfileFault> m_notes;
};

} // namespace

std::vector<ProfileFault> checkLeds(const LedSequencerProfile& profile) {
    return Check(profile).run();
}

bool hasRow(const LedSequencerProfile& profile, const std::string& word1, const std::string& word2,
            std::optional<std::int32_t> number) {
    return std::any_of(profile.commands.begin(), profile.commands.end(),
                       [&](const LedSequencerProfile::Command& row) {
                           return row.word1 == word1 && row.word2 == word2 &&
                                  row.number == number.value_or(0);
                       });
}

} // namespace board
