#include "profile/Profile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <iterator>
#include <map>
#include <sstream>

#include "base/File.h"
#include "base/Text.h"
#include "profile/LedActions.h"
#include "profile/ProfileReader.h"

namespace board {

namespace {

constexpr std::size_t MAX_PROFILE_SIZE = std::size_t{1024} * 1024;
constexpr std::uint32_t MAX_DESCRIPTOR_SIZE = 65536;
constexpr std::uint32_t MAX_HYSTERESIS = 1000; // degrees
constexpr std::uint32_t MAX_BRIGHTNESS = 9999; // the LED driver writes at most four characters

/// The parser destroys its tables by recursion, so a dotted name with very many parts would exhaust
/// the stack.
void refuseDeepNames(const std::string& path, const std::string& text) {
    constexpr std::ptrdiff_t MAX_DOTS = 256;
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number)
        if (std::count(line.begin(), line.end(), '.') > MAX_DOTS)
            throw ProfileError(path, {path + ":" + std::to_string(number),
                                      "too many dots (expected at most " +
                                          std::to_string(MAX_DOTS) + " in a line)"});
}

toml::table parse(const std::string& path) {
    std::size_t size = 0;
    const FileKind kind = kindOf(path, size);
    if (kind == FileKind::MISSING)
        failWith(path, "can't open", errno);
    if (kind != FileKind::REGULAR) {
        const std::string inside = path + "/board.toml";
        throw Error(
            path + ": is not a file (expected a board profile)" +
            (kindOf(inside) != FileKind::MISSING ? "; did you mean '" + inside + "'?" : ""));
    }
    const std::string text = readFile(path, MAX_PROFILE_SIZE, size);
    refuseDeepNames(path, text);
    try {
        return toml::parse(text, path);
    } catch (const toml::parse_error& error) {
        throw ProfileError(path, {path + ":" + std::to_string(error.source().begin.line),
                                  "not TOML: " + printable(std::string(error.description()))});
    }
}

/// The names under which a host registers drivers. Each may be used once.
class DriverNames {
public:
    void take(const ProfileReader& reader, const std::string& name) {
        const auto [former, isNew] = m_users.emplace(name, reader.placeOf("name"));
        if (!isNew)
            reader.fail("name", "'" + name + "' is already used by " + former->second +
                                    " (expected a unique name)");
    }

private:
    std::map<std::string, std::string> m_users = {{DESCRIPTOR_DRIVER, "the board descriptor"},
                                                  {CAPACITY_DRIVER, "the VoIP figures"}};
};

void readDevice(const ProfileReader& reader, DriverNames& names, DeviceProfile& device) {
    device.name = reader.name("name");
    names.take(reader, device.name);
    device.device = reader.device("device");
    if (reader.has("description"))
        device.description = reader.text("description");
}

void readFan(const ProfileReader& reader, FanProfile& fan) {
    fan.maximum = reader.number("maximum");
    if (reader.has("enable"))
        fan.enable = reader.device("enable");
    if (reader.has("manual"))
        fan.manual = reader.number("manual", 0, INT32_MAX);
    if (reader.has("automatic"))
        fan.automatic = reader.number("automatic", 0, INT32_MAX);
    if (reader.has("on_exit"))
        fan.onExit = static_cast<FanProfile::OnExit>(reader.word(
            "on_exit", {{"restore", static_cast<std::int32_t>(FanProfile::OnExit::RESTORE)},
                        {"keep", static_cast<std::int32_t>(FanProfile::OnExit::KEEP)},
                        {"full", static_cast<std::int32_t>(FanProfile::OnExit::FULL)}}));
    if (reader.has("tach"))
        fan.tach = reader.device("tach");
}

std::uint32_t readOn(const ProfileReader& reader) {
    return reader.has("on") ? reader.number("on", 1, MAX_BRIGHTNESS) : 1;
}

void readLed(const ProfileReader& reader, LedDeviceProfile& led) {
    constexpr std::uint32_t SECOND_LIT_STATE = 2;
    led.biStatus = reader.has("bi_status") && reader.boolean("bi_status");
    led.on = readOn(reader);
    if (led.biStatus && led.on == SECOND_LIT_STATE)
        reader.fail("on", "2 is the second lit state of an LED with bi_status (expected another "
                          "brightness)");
}

DescriptorProfile readDescriptor(const ProfileReader& reader) {
    DescriptorProfile descriptor;
    descriptor.device = reader.device("device");
    if (reader.has("read_chunk"))
        descriptor.readChunk = reader.number("read_chunk", 1, MAX_DESCRIPTOR_SIZE);
    if (reader.has("size"))
        descriptor.size = reader.number("size", 1, MAX_DESCRIPTOR_SIZE);
    return descriptor;
}

LedSequencerProfile::Command readCommand(const ProfileReader& reader) {
    LedSequencerProfile::Command command;
    command.place = reader.where();
    command.word1 = reader.text("word1");
    command.word2 = reader.text("word2");
    if (reader.has("number"))
        command.number = reader.signedNumber("number");
    command.mask = reader.number("mask");
    command.action = static_cast<LedCtrl::ActionKind>(reader.wordOrNumber("action", LED_ACTIONS));
    if (reader.has("group"))
        command.group = reader.signedNumber("group");
    if (reader.has("time_ms"))
        command.timeMs = reader.signedNumber("time_ms");
    command.isDefault = reader.has("default") && reader.boolean("default");
    return command;
}

LedSequencerProfile::File readLedFile(const ProfileReader& reader) {
    LedSequencerProfile::File file{static_cast<std::int32_t>(reader.number("mask")),
                                   reader.device("path"), readOn(reader)};
    file.place = reader.where();
    if (reader.has("name"))
        file.name = reader.name("name");
    if (reader.has("color"))
        file.color = static_cast<LedColor>(reader.word("color", LED_COLORS));
    return file;
}

LedSequencerProfile readLeds(const ProfileReader& reader) {
    LedSequencerProfile leds;
    leds.place = reader.where();
    if (reader.has("tick_ms"))
        leds.tickMs =
            reader.number("tick_ms", 0, UINT32_MAX / 1000); // more would wrap in microseconds
    if (reader.has("blink_pattern"))
        leds.blinkPattern = reader.number("blink_pattern");
    if (reader.has("access"))
        leds.access = static_cast<LedCtrl::AccessMethod>(reader.wordOrNumber(
            "access", {{"files", LedCtrl::ACCESS_FILES}, {"none", LedCtrl::ACCESS_NONE}}));
    if (reader.has("group")) {
        leds.group = reader.name("group");
        leds.groupPlace = reader.where("group");
    }
    for (const ProfileReader& file : reader.tables("file", {"mask", "path", "on", "name", "color"}))
        leds.files.push_back(readLedFile(file));
    for (const ProfileReader& command :
         reader.tables("command", {"word1", "word2", "number", "mask", "action", "group", "time_ms",
                                   "default"}))
        leds.commands.push_back(readCommand(command));
    return leds;
}

/// The decimal number in `word`; empty if `word` is not a number of 32 bits.
std::optional<std::int32_t> toNumber(const std::string& word) {
    std::int32_t number = 0;
    const char* const end = word.data() + word.size();
    const auto [last, error] = std::from_chars(word.data(), end, number);
    return error == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

LedLineProfile readLedLine(const ProfileReader& reader, const char* key) {
    constexpr std::size_t MOST_BYTES = 79; // the sequencer reads 80, with the newline
    const std::string line = reader.text(key);
    const auto isControl = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < ' ' || byte == 0x7F;
    };
    std::istringstream text(line);
    const std::vector<std::string> words(std::istream_iterator<std::string>(text), {});
    const bool isLine = (words.size() == 2 || (words.size() == 3 && toNumber(words[2]))) &&
                        std::none_of(line.begin(), line.end(), isControl);
    if (!isLine)
        reader.fail(key, "'" + line +
                             "' is not a line for the LEDs (expected two words and, if "
                             "the row has one, a number)");
    LedLineProfile read{words[0], words[1], std::nullopt, reader.where(key)};
    if (words.size() == 3)
        read.number = toNumber(words[2]);
    if (join(words, " ").size() > MOST_BYTES)
        reader.fail(key, "has " + std::to_string(line.size()) + " bytes (expected at most " +
                             std::to_string(MOST_BYTES) + ")");
    return read;
}

WatchProfile readWatch(const ProfileReader& reader) {
    constexpr double SHORTEST = 0.1, LONGEST = 86400, MS = 1000;
    WatchProfile watch;
    if (reader.has("period_s"))
        watch.period = std::chrono::milliseconds(
            std::lround(reader.decimal("period_s", SHORTEST, LONGEST) * MS));
    if (reader.has("on_alarm"))
        watch.onAlarm = readLedLine(reader, "on_alarm");
    if (reader.has("on_clear"))
        watch.onClear = readLedLine(reader, "on_clear");
    return watch;
}

} // namespace

Profile Profile::load(const std::string& path) {
    const toml::table document = parse(path);
    const ProfileSource source{path, folderOf(path)};
    const ProfileReader root(source, document, "",
                             {"fan", "thermal", "power", "led", "descriptor", "voip", "preferences",
                              "button", "firmware", "leds", "watch", "simulated"});
    Profile profile;
    profile.simulated = root.has("simulated") && root.boolean("simulated");
    DriverNames names;
    for (const ProfileReader& reader :
         root.tables("fan", {"name", "device", "description", "maximum", "enable", "manual",
                             "automatic", "on_exit", "tach"})) {
        FanProfile& fan = profile.fans.emplace_back();
        readDevice(reader, names, fan);
        readFan(reader, fan);
    }
    for (const ProfileReader& reader :
         root.tables("thermal", {"name", "device", "description", "maximum", "hysteresis"})) {
        ThermalProfile& thermal = profile.thermals.emplace_back();
        readDevice(reader, names, thermal);
        thermal.maximum = reader.number("maximum");
        if (reader.has("hysteresis"))
            thermal.hysteresis = reader.number("hysteresis", 0, MAX_HYSTERESIS);
    }
    for (const ProfileReader& reader : root.tables("power", {"name", "device", "description"}))
        readDevice(reader, names, profile.powers.emplace_back());
    for (const ProfileReader& reader :
         root.tables("led", {"name", "device", "description", "bi_status", "on"})) {
        LedDeviceProfile& led = profile.leds.emplace_back();
        readDevice(reader, names, led);
        readLed(reader, led);
    }
    if (const auto reader = root.table("descriptor", {"device", "read_chunk", "size"}))
        profile.descriptor = readDescriptor(*reader);
    if (const auto reader = root.table("voip", {"border_controller", "default_sip_legs"})) {
        profile.voip.emplace();
        if (reader->has("border_controller"))
            profile.voip->borderController = reader->boolean("border_controller");
        if (reader->has("default_sip_legs"))
            profile.voip->defaultSipLegs = reader->number("default_sip_legs");
    }
    if (const auto reader = root.table("preferences", {"file"}))
        profile.preferences = reader->path("file");
    if (const auto reader = root.table("button", {"device"}))
        profile.button = reader->path("device");
    if (const auto reader = root.table("firmware", {"info"}))
        profile.firmware = reader->path("info");
    if (const auto reader =
            root.table("leds", {"tick_ms", "blink_pattern", "access", "group", "file", "command"}))
        profile.ledService = readLeds(*reader);
    if (const auto reader = root.table("watch", {"period_s", "on_alarm", "on_clear"}))
        profile.watch = readWatch(*reader);
    return profile;
}

} // namespace board
