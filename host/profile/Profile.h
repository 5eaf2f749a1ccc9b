#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "LedCtrl.h"
#include "profile/LedColors.h"
#include "profile/NamedPath.h"

namespace board {

/// The repository names of the drivers that a board has at most once.
constexpr char DESCRIPTOR_DRIVER[] = "board-descr-driver";
constexpr char CAPACITY_DRIVER[] = "resource-driver";

/// A device behind a kernel driver. `device` is anything that DeviceLocator can locate: a path,
/// "hwmon:NAME/FILE" or "led:NAME". Names are unique among all devices of a board.
struct DeviceProfile {
    std::string name;        ///< the driver's name in the repository
    NamedPath device;        ///< the device file
    std::string description; ///< for people; may be empty
};

struct FanProfile : DeviceProfile {
    /// What a host does at its end with a fan whose speed it has set.
    enum class OnExit : std::int32_t {
        RESTORE, ///< restores the speed and the mode that it found
        KEEP,    ///< leaves the fan as it is
        FULL,    ///< sets full speed
    };

    std::uint32_t maximum = 0;       ///< the value that means full speed
    std::optional<NamedPath> enable; ///< a file that selects manual or automatic control
    std::uint32_t manual = 1;        ///< what `enable` must hold before the fan obeys
    std::uint32_t automatic = 2;     ///< what `enable` holds if the chip controls the fan
    OnExit onExit = OnExit::RESTORE;
    std::optional<NamedPath> tach; ///< a file with the speed in revolutions per minute
};

struct ThermalProfile : DeviceProfile {
    std::uint32_t maximum = 0;    ///< highest temperature, in the unit that clients expect
    std::uint32_t hysteresis = 2; ///< degrees below `maximum` at which an alarm ends
};

struct PowerProfile : DeviceProfile {};

/// One LED behind a kernel driver.
struct LedDeviceProfile : DeviceProfile {
    bool biStatus = false; ///< has two lit states
    std::uint32_t on = 1;  ///< the brightness that means lit, 1 to 9999; not 2 if biStatus
};

/// The EEPROM that holds the board descriptor.
struct DescriptorProfile {
    NamedPath device;
    std::uint32_t readChunk = 128; ///< bytes per read, 1 to 65536
    std::uint32_t size = 512;      ///< bytes, 1 to 65536
};

struct VoipProfile {
    bool borderController = false;
    std::uint32_t defaultSipLegs = 0; ///< used if the descriptor has no number
};

/// The LED sequencer's tables. Numbers that have no meaning for the sequencer are kept as they are,
/// so that tables with mistakes can be tried.
struct LedSequencerProfile {
    struct File {
        std::int32_t mask = 0; ///< the LED, as a bit of 32
        NamedPath path;
        std::uint32_t on = 1;  ///< the brightness that means lit, 1 to 9999
        std::string name = {}; ///< for people; if empty, the path names the LED
        LedColor color = LedColor::UNKNOWN;
        std::string place = {}; ///< "FILE:LINE: leds.file[N]", for messages
    };
    struct Command {
        std::string word1;
        std::string word2;
        std::int32_t number = 0;
        std::uint32_t mask = 0;
        LedCtrl::ActionKind action = LedCtrl::ACTION_ON;
        std::int32_t group = 0;
        std::int32_t timeMs = 0;
        bool isDefault = false;
        std::string place; ///< "FILE:LINE: leds.command[N]", for messages
    };
    /// The tick in microseconds. The sequencer computes it in 32 bits, so a tick that is too long
    /// wraps around. If the result is 0, the sequencer stays idle.
    std::uint32_t tickUs() const { return tickMs * 1000U; }

    std::string place;      ///< "FILE:LINE: leds", for messages
    std::string group;      ///< may write to the pipe, like its owner; if empty, see LedPipeClaim
    std::string groupPlace; ///< "FILE:LINE: leds.group", for messages
    std::uint32_t tickMs = 100;
    std::uint32_t blinkPattern = 0x0F0F0F0F;
    LedCtrl::AccessMethod access = LedCtrl::ACCESS_FILES;
    std::vector<File> files;
    std::vector<Command> commands;
};

/// A line for the LED sequencer. The words are short and plain enough to be sent through the pipe.
struct LedLineProfile {
    std::string word1;
    std::string word2;
    std::optional<std::int32_t> number;
    std::string place; ///< "FILE:LINE: KEY", for messages
};

/// How a host watches its devices.
struct WatchProfile {
    std::chrono::milliseconds period{5000}; ///< between two looks, 100 ms to a day
    std::optional<LedLineProfile> onAlarm;  ///< handled when the first alarm begins
    std::optional<LedLineProfile> onClear;  ///< handled when the last alarm ends
};

/// A board's description, from a TOML file. Paths in the file are relative to its folder; here they
/// are resolved.
///
/// Drivers keep pointers into the profile's texts, so the profile must outlive everything created
/// from it, and must not be changed or moved.
struct Profile {
    std::vector<FanProfile> fans;
    std::vector<ThermalProfile> thermals;
    std::vector<PowerProfile> powers;
    std::vector<LedDeviceProfile> leds;
    std::optional<DescriptorProfile> descriptor;
    std::optional<VoipProfile> voip;
    std::optional<NamedPath> preferences; ///< a file
    std::optional<NamedPath> button;      ///< a device file
    std::optional<NamedPath> firmware;    ///< the information file
    std::optional<LedSequencerProfile> ledService;
    WatchProfile watch;
    bool simulated = false; ///< true if no value of this board is measured

    /// Reads the file `path`. Throws Error if it can't be read, is not a regular file or is larger
    /// than 1 MiB. Throws ProfileError if it is not TOML, or if it has a line with more than 256
    /// dots, an unknown key, a missing key, a value of the wrong type, a number out of range, or a
    /// name that is empty or not unique. The message is one line: "FILE:LINE: KEY: what is wrong
    /// (expected ...)".
    static Profile load(const std::string& path);
};

} // namespace board
