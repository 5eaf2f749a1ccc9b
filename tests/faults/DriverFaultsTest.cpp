#include <functional>

#include <gtest/gtest.h>

#include "CBoardDescrTamarin.h"
#include "faults/Faults.h"
#include "faults/Sweep.h"
#include "support/DriverFixtures.h"
#include "support/TempDir.h"

using faults::Attempt;
using faults::Expected;
using faults::sweep;
using support::fromHex;
using support::str;

TEST(DescriptorFaults, KeepTheListOrChangeItAndLoseNothing) {
    const support::TempDir dir;
    const std::string LONG = "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11"; // allocated
    const std::string DATA = "/18:" + LONG, MAC = "1/8:02 00 00 00 00 07 00 00,";
    const std::string START = "45/4:12 34 AB CD,", REST = "9/1:01,5" + DATA + ",";
    const std::string BEFORE = START + REST, TAG = "10" + DATA + ",", EMPTY = "10/0:,";
    const std::string LOADED = "10/2:01 02,11" + DATA + ",0/0:,";
    const std::string PART = "(10/2:01 02,)?(11" + DATA + ",)?";
    const std::string OPEN = "-1 FAILED TO OPEN DEVICE '.*eeprom' " + BEFORE;
    const std::string path = dir.path("eeprom");
    const auto data = fromHex(LONG);
    const auto image = fromHex("00 0A 00 06 01 02 00 0B 00 16 " + LONG + " 00 00 00 04");
    const std::string written = "00 2D 00 08 12 34 AB CD 00 09 00 06 01 00 00 05 00 16 " + LONG;
    const auto asText = [](const TString<char>& bytes) {
        return std::string(bytes.data(), bytes.length());
    };
    const struct {
        std::function<XCode(CBoardDescr&, String&)> step;
        Expected expected;
    } ROWS[] = {
        {[&](auto& board, auto&) { return board.insertTag(1, 10, data); },
         {{"new", "thrown  " + BEFORE + "|0  " + START + EMPTY + REST},
          {"", "0  " + START + TAG + REST}}},
        {[&](auto& board, auto& error) { return board.setTag(5, 0, image, error); },
         {{"new", "-?[01].* " + START + "9/1:01,5/0:,"}, {"", "0  " + START + "9/1:01,5/32:.*"}}},
        {[&](auto& board, auto&) { return board.addMacAddress("02:00:00:00:00:07", 0); },
         {{"new", ".* " + BEFORE + "(1/0:,|" + MAC + ")?"}, {"", "0  " + BEFORE + MAC}}},
        {[&](auto& board, auto& error) { return board.readBD(error); },
         {{"open", OPEN},
          {"read.* E", "-1 FAILED TO READ DEVICE '.*eeprom' " + BEFORE},
          {"new", "thrown  (" + BEFORE + "|" + PART + ")|0  " + LOADED},
          {"", "0  " + LOADED}}},
        {[&](auto& board, auto& error) { return board.writeBD(error); },
         {{"open", OPEN},
          {"write.* E", "-1 FAILED TO WRITE DEVICE '.*eeprom' " + BEFORE},
          {"short", "0  " + BEFORE},
          {"new", "thrown  " + BEFORE},
          {"", "0  " + BEFORE + written}}},
    };
    for (const auto& [step, expected] : ROWS)
        sweep(
            [&, step = step](const Attempt& attempt) {
                dir.write("eeprom", asText(image));
                CBoardDescr board(path.c_str(), 4, 512);
                for (const auto& [id, bytes] :
                     {std::pair(45, "12 34 AB CD"), {9, "01"}, {5, LONG.c_str()}})
                    EXPECT_TRUE(
                        board.addTag(static_cast<unsigned short>(id), fromHex(bytes)).isSuccess());
                String error;
                std::string text = attempt([&] { return step(board, error); });
                text += " " + str(error) + " ";
                for (const std::string& tag : support::tagsOf(board))
                    text += tag + ",";
                const std::string held = dir.read("eeprom");
                if (held != asText(image))
                    text += support::toHex(
                        TString<char>(held.data(), static_cast<unsigned>(held.size())));
                EXPECT_TRUE(board.addTag(7, fromHex("02")).isSuccess());
                EXPECT_EQ(support::tagsOf(board).back(), "7/1:02");
                return text;
            },
            expected);
    sweep(
        [](const Attempt& attempt) {
            return attempt([&] {
                CREATE_BD()->release();
                return XCode();
            });
        },
        {{"new", "thrown"}, {"", "0"}});
}
