#include "leds/check/LedCheck.h"

#include <gtest/gtest.h>

#include "host/leds/LedTables.h"

using support::profileOf;
using support::row;

namespace {

/// Three LEDs, each with a file, and a row that lights them: nothing is wrong.
const std::string LAMPS = "[[leds.file]]\nmask = 1\npath = 'one'\n[[leds.file]]\nmask = 2\npath = "
                          "'two'\n[[leds.file]]\nmask = 4\npath = 'led:four'\n" +
                          row("lamp test", "mask = 7\naction = 'on'\ntime_ms = 500");

/// The findings, one per line, without the name of the profile.
std::string findingsOf(const std::string& text) {
    std::string all;
    for (const board::LedFinding& finding : board::checkLeds(profileOf(text))) {
        const std::string fault = finding.fault.text();
        all += (finding.level == board::LedFinding::Level::MISTAKE ? "error: " : "warning: ") +
               fault.substr(fault.find("leds")) + "\n";
    }
    return all;
}

std::string file(const std::string& mask, const std::string& path) {
    return "[[leds.file]]\nmask = " + mask + "\npath = '" + path + "'\n";
}

std::string inGroup(const std::string& words, const std::string& rest) {
    return row(words, "mask = 1\ngroup = 1\ndefault = true\n" + rest);
}

} // namespace

TEST(LedCheck, FindsEachFaultWithItsPlaceAndNothingInATableThatIsCorrect) {
    const std::string on = "mask = 1\naction = 'on'\n", blink = "mask = 1\naction = 'blink'\n";
    const std::string off = row("x off", "mask = 2\naction = 'off'");
    const std::string roll = row("a roll", "mask = 6\naction = 'roll-up'\ngroup = 1");
    const std::string isDefault = "default = true\n", start = on + isDefault;
    const std::string twin = row("a twin", "mask = 6\naction = 'roll-up'\ngroup = 2");
    const std::string stop = row("a stop", "mask = 6\naction = 'roll-stop'");
    const std::string flash = row("a flash", "mask = 1\naction = 'flash'\ngroup = 2");
    const struct {
        std::string wrong, right, finding;
    } CASES[] = {
        // Rows that no line runs
        {row("a b", on) + row("a b", "mask = 2\naction = 'flash'"),
         row("a b", on) + row("a b", "mask = 2\naction = 'flash'\nnumber = 1"),
         "error: leds.command[1]: its line 'a b 0' runs "},
        {row("a b", on) + row("a b", start), row("a b", on) + row("a c", start),
         " instead; this row runs only as a default row"},
        {row("a b c", on), row("a b", on),
         "error: leds.command[0]: no line can name this row: the word 'b c' can't be sent"},
        {row("a\tb c", on), row("a ", on),
         "error: leds.command[0]: no line can name this row: the word 'a\tb'"},
        {row(std::string(40, 'a') + " " + std::string(40, 'b'), on), row(" ", on),
         "error: leds.command[0]: no line can name this row: the line has 83 bytes"},
        {row("a ", on + "number = 7"), row("a b", on + "number = 7"),
         "error: leds.command[0]: no line can name this row: an empty word"},
        // Masks
        {row("a b", "mask = 9\naction = 'on'"), row("a b", "mask = 5\naction = 'on'"),
         "error: leds.command[0].mask: 0x8 of 0x9 has no file"},
        {row("a b", "mask = 0\naction = 'roll-up'"), roll,
         "error: leds.command[0].mask: the roll has no LED"},
        {row("a b", "mask = 0\naction = 'flash'"), row("a b", "mask = 0\naction = 'defaults'"),
         "error: leds.command[0].mask: is 0"},
        {row("a b", "mask = 7\naction = 'roll-up'\ngroup = 1"),
         roll + row("a c", "mask = 7\naction = 'roll-down'\ngroup = 1"),
         "warning: leds.command[0].mask: the roll begins with 0x2 and lights bit 0 last"},
        // Actions
        {row("a b", "mask = 0\naction = 'defaults'\ndefault = true"),
         row("a b", "mask = 0\naction = 'defaults'"),
         "error: leds.command[0]: a default row with this action"},
        {row("a b", "mask = 1\naction = 9"), row("a b", "mask = 1\naction = 3"),
         "error: leds.command[0].action: 9 is not an action"},
        {"blink_pattern = 0\n" + row("a b", blink), "blink_pattern = 0\n" + row("a b", on),
         "error: leds.command[0].action: blinks with a `blink_pattern` of 0: it has no lit tick"},
        {"blink_pattern = 0xFFFFFFFF\n" + row("a b", blink),
         "blink_pattern = 0x7FFFFFFF\n" + row("a b", blink),
         "error: leds.command[0].action: blinks with a `blink_pattern` of 0xFFFFFFFF: it has no "},
        {row("a b", "mask = 1\naction = 'roll-stop'") + roll,
         row("a c", "mask = 6\naction = 'roll-stop'") + roll,
         "error: leds.command[0]: stops no roll"},
        {row("a b", "mask = 6\naction = 'roll-up'"),
         row("a b", "mask = 6\naction = 'roll-up'\ntime_ms = 500"),
         "error: leds.command[0]: each line starts one more roll"},
        // Groups and times
        {row("a b", on + "group = -1"), row("a b", on + "group = 0"),
         "error: leds.command[0].group: -1 is not a group"},
        {row("a b", on + "time_ms = -1"), row("a b", on + "time_ms = 100"),
         "error: leds.command[0].time_ms: -1 is below 0 and wraps around: the row lasts 0 ticks"},
        {row("a b", "mask = 1\naction = 'flash'\ntime_ms = 100"),
         row("a b", "mask = 1\naction = 'flash'"),
         "error: leds.command[0].time_ms: has no meaning"},
        {row("a b", on + "time_ms = 4295100"), row("a b", on + "time_ms = 4294800"),
         "error: leds.command[0].time_ms: 4295100 is too long and wraps around: the row lasts 2 "
         "ticks, 200 ms (expected at most 4294867)"},
        {row("a b", on + "time_ms = 150"), row("a b", on + "time_ms = 200"),
         "warning: leds.command[0].time_ms: 150 is not a multiple of the tick of 100 ms: the row "
         "lasts 2 ticks, 200 ms"},
        // Default rows
        {inGroup("a b", "action = 'on'") + inGroup("a c", "action = 'on'"),
         inGroup("a b", "action = 'on'") + row("a c", on + "group = 1"),
         "error: leds.command[0].default: the start does not show this row: "},
        {inGroup("a b", "action = 'on'\ntime_ms = 500") + inGroup("a c", "action = 'off'"),
         inGroup("a b", "action = 'off'") + inGroup("a c", "action = 'on'\ntime_ms = 500"),
         "a default row of the same group, ends it before the first tick"},
        {row("a b", start) + row("a c", blink + "default = true"),
         row("a b", start) + row("a c", "mask = 2\naction = 'blink'\ndefault = true"),
         "also a default row, changes its LEDs before the first tick"},
        {row("a b", "mask = 3\naction = 'on'\ndefault = true") +
             row("a c", blink + "default = true"),
         row("a c", blink + "default = true") +
             row("a b", "mask = 2\naction = 'on'\ndefault = true"),
         "warning: leds.command[0].default: the start does not show this row on 0x1: "},
        {row("a b", "mask = 2\naction = 'on'\ndefault = true") + roll + "default = true\n",
         row("a b", "mask = 2\naction = 'on'\ndefault = true") + roll +
             "default = true\ntime_ms = 500\n",
         "a default roll without a time, hides it"},
        {row("a b", start + "time_ms = 500") + row("a c", start + "time_ms = 300"),
         row("a b", start) + row("a c", start + "time_ms = 300"),
         "warning: leds.command[1].default: the start mixes this row with "},
        {roll + isDefault + stop + isDefault, stop + isDefault + roll + isDefault,
         "a default row too, ends it before the first tick"},
        // The flash should end the second roll, which has the same group, but ends the first one.
        {roll + isDefault + twin + isDefault + flash + isDefault,
         roll + isDefault + twin + flash + isDefault,
         "error: leds.command[0].default: the start does not show this row: "},
        // Rows that nothing ends
        {row("a b", "mask = 3\naction = 'on'") + off,
         row("a b", "mask = 3\naction = 'on'") + row("x off", "mask = 3\naction = 'off'"),
         "warning: leds.command[0]: nothing ends this row: once it has run, 0x1 is lit for good"},
        {row("a b", blink) + off,
         row("a b", blink + "group = 1") + off + row("a c", on + "group = 1"),
         "warning: leds.command[0]: nothing ends this row: once it has run, 0x1 blinks for good"},
        {roll + off, roll + off + row("all defaults", "mask = 0\naction = 'defaults'"),
         "warning: leds.command[0]: nothing ends this roll"},
        // When a group is to end a roll, the first roll with the same word and mask ends.
        {roll + row("c roll", "mask = 6\naction = 'roll-up'\ngroup = 2") +
             row("c off", "mask = 1\naction = 'off'\ngroup = 2"),
         roll + row("a up", "mask = 6\naction = 'roll-up'\ngroup = 2") +
             row("a off", "mask = 1\naction = 'off'\ngroup = 2"),
         "warning: leds.command[0]: nothing ends this roll"},
        // Files
        {file("1", "again"), file("8", "eight") + row("a b", "mask = 8\naction = 'flash'"),
         "error: leds.file[0].path: is never written"},
        {file("0", "none"), "", "error: leds.file[0].mask: is 0"},
        {file("3", "pair"), "", "warning: leds.file[0].mask: 0x3 is several LEDs"},
        {file("8", "eight"), file("8", "eight") + row("a b", "mask = 8\naction = 'flash'"),
         "warning: leds.file[0].path: no row that runs lights 0x8"},
        // An LED of the highest bit is written first: its mask is a negative key.
        {file("0x80000000", "x/../two") + row("a b", "mask = 0x80000000\naction = 'flash'"),
         file("0x80000000", "x/two") + row("a b", "mask = 0x80000000\naction = 'flash'"),
         "error: leds.file[0].path: is the file of 0x2 too"},
        {"[[led]]\nname = 'lamp'\ndevice = '/sys/class/leds/four/brightness'\n",
         "[[led]]\nname = 'lamp'\ndevice = '/sys/class/leds/five/brightness'\n",
         "error: leds.file[2].path: is the device of [[led]] 'lamp' too"},
        {"access = 7\n",
         "access = 'none'\n" + file("8", "two") + row("a b", "mask = 8\naction = 'flash'"),
         "error: leds.access: 7 is not an access method"},
    };
    for (const auto& each : CASES) {
        const std::string found = findingsOf("[leds]\n" + each.wrong + LAMPS);
        EXPECT_NE(found.find(each.finding), std::string::npos) << each.finding << "\n" << found;
        EXPECT_EQ(found.find('\n') + 1, found.size()) << "more than one finding: " << found;
        EXPECT_EQ(findingsOf("[leds]\n" + each.right + LAMPS), "") << each.finding;
    }
    EXPECT_NE(findingsOf("[leds]\ntick_ms = 0\n" + LAMPS).find("stays idle"), std::string::npos);
    const std::string hidden = file("8", "eight") + row("a b", on) + //
                               row("a b", "mask = 8\naction = 'flash'");
    EXPECT_NE(findingsOf("[leds]\n" + hidden + LAMPS).find("no row that runs lights 0x8"),
              std::string::npos);
    EXPECT_EQ(findingsOf(""), "");
}
