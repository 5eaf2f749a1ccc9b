#include <algorithm>
#include <filesystem>

#include "faults/BoardctlRuns.h"

namespace fs = std::filesystem;
using faults::contains;

namespace {

/// Commands that read, each with the files of the board that it opens.
class ReadingCommands : public faults::BoardctlRuns {
protected:
    ReadingCommands() {
        const std::string profile = m_dir.read("board/board.toml");
        const std::string maximum = "maximum = 255\n";
        m_dir.write("board/board.toml",
                    std::string(profile).insert(profile.find(maximum) + maximum.size(),
                                                "enable = 'dev/mode'\ntach = 'dev/tach'\n"));
        m_dir.write("board/dev/mode", "2\n");
        m_dir.write("board/dev/tach", "900\n");
        m_before = files();
        for (const auto& entry : fs::recursive_directory_iterator(m_dir.path("board")))
            if (entry.is_regular_file())
                fs::permissions(entry,
                                fs::perms::owner_write | fs::perms::group_write |
                                    fs::perms::others_write,
                                fs::perm_options::remove);
    }
};

} // namespace

TEST_P(ReadingCommands, OpenWhatTheyNameAndNothingForWriting) {
    // Permissions would not stop root, so this checks how the command opens each file.
    const std::string command = GetParam().substr(0, GetParam().find(':'));
    const support::Outcome outcome = run(command, "none 0 0", "");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(files(), m_before);
    const std::string folder = m_dir.path("board/");
    std::vector<std::string> opened;
    for (const std::string& call : trace()) {
        EXPECT_FALSE(contains(call, " for writing")) << call;
        const auto at = call.find(folder);
        const std::string file = at == std::string::npos ? "" : call.substr(at + folder.size());
        if (contains(call.substr(0, at), "open") && !file.empty() &&
            std::find(opened.begin(), opened.end(), file) == opened.end())
            opened.push_back(file);
    }
    std::string all = command + ":";
    for (const std::string& file : opened)
        all += " " + file;
    EXPECT_EQ(all, GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Commands, ReadingCommands,
    testing::Values("fan #: board.toml dev/fan dev/tach", "temp #: board.toml dev/temperature",
                    "power #: board.toml dev/power", "led status #: board.toml dev/status",
                    "info #: board.toml dev/fan dev/temperature dev/power dev/status eeprom.bin "
                    "preferences dev/tach image-info",
                    "info --format metrics #: board.toml dev/fan dev/temperature dev/power "
                    "dev/status eeprom.bin preferences dev/tach image-info",
                    "bd show #: board.toml eeprom.bin", "bd raw #: board.toml eeprom.bin",
                    "bd dump #: board.toml eeprom.bin", "bd check #: board.toml eeprom.bin",
                    "bd compare @board/eeprom.bin #: eeprom.bin board.toml",
                    "bd get 45 #: board.toml eeprom.bin", "bd mac list #: board.toml eeprom.bin",
                    "firmware #: board.toml image-info", "leds check #: board.toml",
                    "leds preview --ticks 1 #: board.toml"),
    [](const auto& each) { return faults::nameOf(each.param.substr(0, each.param.find(':'))); });
