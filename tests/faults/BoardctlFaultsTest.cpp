#include <gtest/gtest.h>

#include "faults/Sweep.h"

using faults::Command;
using faults::Sweep;

namespace {

const std::string BOARD = "@board/board.toml";

const Command COMMANDS[] = {
    {"Info", {"info", "--board", BOARD}},
    {"InfoJson", {"info", "--board", BOARD, "--format", "json"}},
    {"InfoMetrics", {"info", "--board", BOARD, "--format", "metrics"}},
    {"Fan", {"fan", "--board", BOARD, "--format", "json"}},
    {"FanOfAScratchBoard", {"fan"}},
    {"FanSet", {"fan", "full", "--board", BOARD}},
    {"Temp", {"temp", "--board", BOARD}},
    {"Power", {"power", "--board", BOARD, "--format", "json"}},
    {"Led", {"led", "status", "--board", BOARD}},
    {"LedSet", {"led", "status", "2", "--board", BOARD, "--format", "json"}},
    {"LedOverlay", {"led", "status", "bi", "on", "--for", "1", "--board", BOARD}},
    {"LedOverlayEnd", {"led", "status", "bi", "off", "--board", BOARD}},
    {"LedBlink", {"led", "status", "blink", "2", "10", "--board", BOARD}},
    {"BdShow", {"bd", "show", "@image"}},
    {"BdShowOfABoard", {"bd", "show", "--board", BOARD, "--format", "json"}},
    {"BdRaw", {"bd", "raw", "@image"}},
    {"BdDump", {"bd", "dump", "@image"}},
    {"BdCheckOfABoard", {"bd", "check", "--board", BOARD, "--format", "json"}},
    {"BdGet", {"bd", "get", "45", "-i", "@image", "--format", "json"}},
    {"BdMacList", {"bd", "mac", "list", "--board", BOARD}},
    {"BdBuild", {"bd", "build", "@tags.json", "-o", "@image", "--format", "json"}, "image"},
    {"BdBuildANewFile", {"bd", "build", "@tags.json", "-o", "@new"}},
    {"BdSet", {"bd", "set", "45=hex:00000001", "-i", "@image"}, "image"},
    {"BdSetThroughALink", {"bd", "set", "5=text:two", "-i", "@link", "--backup", "@kept"}, "image"},
    {"BdSetOfABoard",
     {"bd", "set", "45=hex:00000001", "--board", BOARD, "-y", "--format", "json"},
     "board/eeprom.bin"},
    {"BdAdd", {"bd", "add", "9=u16:1", "-i", "@image", "--format", "json"}, "image"},
    {"BdInsertOfABoard",
     {"bd", "insert", "0", "9=u16:1", "--board", BOARD, "-y"},
     "board/eeprom.bin"},
    {"BdRemove", {"bd", "remove", "5", "-i", "@image"}, "image"},
    {"BdMacSet", {"bd", "mac", "set", "0", "02:00:00:00:00:0a", "-i", "@image"}, "image"},
    {"BdMacAddOfABoard",
     {"bd", "mac", "add", "02:00:00:00:00:0a", "--board", BOARD, "-y", "--backup", "@kept"},
     "board/eeprom.bin"},
    {"LedsCheck", {"leds", "check", "--board", BOARD, "--format", "json"}},
    {"LedsPreview", {"leds", "preview", "--ticks", "4", "--board", BOARD, "--format", "json"}},
    {"Cpu", {"cpu", "--period", "0.1"}},
    {"CpuJson", {"cpu", "--format", "json"}},
    {"Firmware", {"firmware", "@board/image-info"}},
    {"FirmwareOfABoard", {"firmware", "--board", BOARD, "--format", "json"}},
    {"SimCreate", {"sim", "create", "@made"}},
};

class BoardctlFaults : public testing::TestWithParam<Command> {};

} // namespace

TEST_P(BoardctlFaults, EndWithTheWholeResultOrAMessageAndEverythingAsItWas) {
    Sweep(GetParam()).run();
}

TEST_P(BoardctlFaults, AreToldWhereStandardOutputTakesNothing) {
    Sweep(GetParam()).runWithoutOutput();
}

INSTANTIATE_TEST_SUITE_P(Commands, BoardctlFaults, testing::ValuesIn(COMMANDS),
                         [](const auto& each) { return each.param.name; });
