#include "simulation/SimulatedBoard.h"

#include <cerrno>
#include <cmath>
#include <filesystem>
#include <iterator>

#include <sys/stat.h>
#include <unistd.h>

#include "base/Error.h"
#include "base/File.h"
#include "base/FileReplacement.h"

namespace fs = std::filesystem;

namespace board {

namespace {

constexpr char PROFILE[] = R"(# A simulated board. Paths are relative to this file.
simulated = true

[[fan]]
name = "fan"
device = "dev/fan"
description = "Main fan"
maximum = 255

[[thermal]]
name = "thermal"
device = "dev/temperature"
description = "Board sensor"
maximum = 85

[[power]]
name = "power"
device = "dev/power"
description = "Supply"

[[led]]
name = "status"
device = "dev/status"
description = "Status LED"
bi_status = true

[descriptor]
device = "eeprom.bin"
read_chunk = 128
size = 512

[voip]
border_controller = false
default_sip_legs = 30

[preferences]
file = "preferences"

[button]
device = "dev/button"

[firmware]
info = "image-info"

[leds]
tick_ms = 100
blink_pattern = 0x0F0F0F0F
access = "files"

[[leds.file]]
mask = 0x01
path = "leds/power"
color = "green"

[[leds.file]]
mask = 0x02
path = "leds/line"
color = "yellow"

[[leds.file]]
mask = 0x04
path = "leds/alarm"
color = "red"

[[leds.file]]
mask = 0x10
path = "leds/bar1"
color = "blue"

[[leds.file]]
mask = 0x20
path = "leds/bar2"
color = "blue"

[[leds.file]]
mask = 0x40
path = "leds/bar3"
color = "blue"

[[leds.file]]
mask = 0x80
path = "leds/bar4"
color = "blue"

[[leds.command]]
word1 = "system"
word2 = "boot"
mask = 0x01
action = "blink"
group = 1
default = true

[[leds.command]]
word1 = "system"
word2 = "ready"
mask = 0x01
action = "on"
group = 1

[[leds.command]]
word1 = "line"
word2 = "ring"
mask = 0x02
action = "blink"
group = 2
time_ms = 3000

[[leds.command]]
word1 = "line"
word2 = "call"
mask = 0x02
action = "on"
group = 2

[[leds.command]]
word1 = "line"
word2 = "idle"
mask = 0x02
action = "off"
group = 2

[[leds.command]]
word1 = "alarm"
word2 = "once"
mask = 0x04
action = "flash"

[[leds.command]]
word1 = "search"
word2 = "start"
mask = 0xF0
action = "roll-up"
group = 3

[[leds.command]]
word1 = "search"
word2 = "stop"
mask = 0xF0
action = "roll-stop"
group = 3

[[leds.command]]
word1 = "lamp"
word2 = "test"
mask = 0xF7
action = "on"
time_ms = 1000

[[leds.command]]
word1 = "all"
word2 = "defaults"
mask = 0
action = "defaults"
)";

constexpr const char* LEDS[] = {"power", "line", "alarm", "bar1", "bar2", "bar3", "bar4"};

constexpr char FIRMWARE[] = "5.2\nBranch\n1234\n\n\nboard\ndev\nsimulated\n";

constexpr char PREFERENCES[] =
    "# Overrides of the board's figures, for example:\n# voip.sip-legs = 240\n";

constexpr std::size_t EEPROM_SIZE = 512;

// Each chunk has an identifier, a length that includes these four bytes, and data, all big-endian.
// The rest of the EEPROM, after the terminator, is erased.
constexpr unsigned char EEPROM[] = {
    0x00, 0x2D, 0x00, 0x08, 0x12, 0x34, 0xAB, 0xCD, // platform 12 34, product ab cd
    0x00, 0x01, 0x00, 0x0C, 0x02, 0x00, 0x00, 0x00, 0x00, 0x07, 0x00, 0x00, // MAC, interface 0
    0x00, 0x01, 0x00, 0x0C, 0x02, 0x00, 0x00, 0x00, 0x00, 0x08, 0x00, 0x01, // MAC, interface 1
    0x00, 0x02, 0x00, 0x08, 0xC0, 0x00, 0x02, 0x0A,                         // 192.0.2.10
    0x00, 0x05, 0x00, 0x0E, 'S',  'I',  'M',  '-',  '0',  '0',  '0',  '0',  '0', '1', // a text
    0x80, 0x0E, 0x00, 0x08, 0x00, 0x00, 0x00, 0x78, // 120 DSP channels
    0x80, 0x1A, 0x00, 0x08, 0x00, 0x00, 0x00, 0xF0, // 240 SIP legs
    0x00, 0x00, 0x00, 0x04,                         // the end
};

void makePipe(const fs::path& path) {
    if (!tryMakePipe(path.string(), 0666))
        failWith(path.string(), "can't make the pipe", errno);
}

std::string eepromContent() {
    const std::string erased(EEPROM_SIZE - std::size(EEPROM), '\xFF');
    return std::string(std::begin(EEPROM), std::end(EEPROM)) + erased;
}

void fillUsual(const fs::path& root) {
    makeFolder(root / "dev");
    makeFolder(root / "leds");
    writeFile(root / "dev/fan", "0\n");
    writeFile(root / "dev/temperature", "41500\n");
    writeFile(root / "dev/power", "1\n");
    writeFile(root / "dev/status", "0\n");
    for (const std::string name : LEDS) {
        makePipe(root / "leds" / name);
        writeFile(root / "leds" / (name + ".state"), "0");
    }
    writeFile(root / "eeprom.bin", eepromContent());
    writeFile(root / "image-info", FIRMWARE);
    writeFile(root / "preferences", PREFERENCES);
    makePipe(root / "dev/button");
    writeFile(root / "board.toml", PROFILE);
}

} // namespace

SimulatedBoard SimulatedBoard::create(const std::string& directory) {
    return create(directory, [](const std::string& root) { fillUsual(root); });
}

SimulatedBoard SimulatedBoard::create(const std::string& directory,
                                      const std::function<void(const std::string& root)>& fill) {
    const fs::path root = directory;
    std::error_code error;
    const bool isNew = !fs::exists(root, error);
    if (isNew)
        makeFolder(directory);
    else if (!fs::is_directory(root, error))
        throw Error(directory + ": is not a folder");
    else if (const auto found = tryExamine(directory + "/");
             !found || found->owner != ::geteuid() || (found->mode & S_IWOTH) != 0)
        throw Error(directory + ": another user could put links into this folder (expected a new "
                                "one, or one of this user that others can't write to)");
    else if (!fs::is_empty(root, error) || error)
        throw Error(
            directory + ": " +
            (error ? error.message() : "the folder is not empty (expected a new or empty one)"));

    try {
        fill(directory);
    } catch (...) {
        for (const fs::path& entry : fs::directory_iterator(root, error))
            fs::remove_all(entry, error);
        if (isNew)
            fs::remove(root, error);
        throw;
    }
    return SimulatedBoard(directory);
}

std::string SimulatedBoard::profile() const {
    return (fs::path(m_directory) / "board.toml").string();
}

std::string SimulatedBoard::fanRecord() const {
    constexpr std::size_t MOST = 4096; // a record has 16 bytes
    return readFile(m_directory + "/dev/fan", MOST);
}

void SimulatedBoard::setTemperature(double celsius) const {
    replaceFile(m_directory + "/dev/temperature",
                std::to_string(std::lround(celsius * 1000)) + "\n");
}

ScratchBoard::Folder::Folder() {
    std::error_code error;
    const fs::path parent = fs::temp_directory_path(error);
    if (error)
        throw Error("no folder for temporary files: " + error.message() + " (set TMPDIR)");
    path = makeUniqueFolder((parent / "board-").string());
}

ScratchBoard::Folder::~Folder() {
    std::error_code ignored; // the system cleans its temporary folder anyway
    fs::remove_all(path, ignored);
}

ScratchBoard::ScratchBoard() : m_board(SimulatedBoard::create(m_folder.path)) {}

} // namespace board
