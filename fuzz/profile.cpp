// Loads arbitrary bytes as a board profile: the result must be one error with file and line, or a
// profile whose fields are valid. If the profile loads, it must also load with a comment added, and
// fail with an unknown key added.

#include <algorithm>
#include <cstdint>
#include <set>

#include <sys/mman.h>
#include <unistd.h>

#include "Oracle.h"
#include "base/Error.h"
#include "leds/check/LedCheck.h"
#include "profile/Profile.h"

using board::Profile;
using fuzz::expect;

namespace {

bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// Loads `text` into `profile`. Returns the error message without the file's name; "" on success.
std::string load(const std::string& text, Profile& profile) {
    static const int file = ::memfd_create("profile", MFD_CLOEXEC);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    if (::ftruncate(file, 0) != 0 ||
        ::pwrite(file, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
        std::abort();
    try {
        profile = Profile::load(path);
        return "";
    } catch (const board::Error& error) {
        const std::string what = error.what();
        expect(what.rfind(path + ":", 0) == 0, "an error begins with the file");
        return what.substr(path.size());
    }
}

void checkComplaint(const std::string& complaint, const std::string& text) {
    expect(std::none_of(complaint.begin(), complaint.end(), isControl), "an error is one line");
    std::size_t digits = 0;
    const unsigned long line =
        std::stoul(complaint.substr(1), &digits); // throws if there are no digits
    const auto lines = static_cast<unsigned long>(std::count(text.begin(), text.end(), '\n')) + 1;
    expect(line >= 1 && line <= lines, "an error has a line of the file");
    expect(complaint.compare(1 + digits, 2, ": ") == 0 && complaint.size() > digits + 3,
           "and says what is wrong there");
}

void checkPath(const board::NamedPath& path) {
    expect(!path.path.empty() && path.path.find('\0') == std::string::npos, "a path is not empty");
    expect(path.place.find("/proc/self/fd/") == 0, "a path knows where it was named");
}

void checkProfile(const Profile& profile) {
    std::set<std::string> names = {board::DESCRIPTOR_DRIVER, board::CAPACITY_DRIVER};
    const auto checkAll = [&](const auto& devices) {
        for (const board::DeviceProfile& device : devices) {
            expect(!device.name.empty() &&
                       std::none_of(device.name.begin(), device.name.end(), isControl),
                   "a name can be shown");
            expect(names.insert(device.name).second, "names are unique");
            expect(device.description.find('\0') == std::string::npos, "a description is a text");
            checkPath(device.device);
        }
    };
    checkAll(profile.fans);
    checkAll(profile.thermals);
    checkAll(profile.powers);
    checkAll(profile.leds);
    for (const board::FanProfile& fan : profile.fans)
        for (const auto* const path : {&fan.enable, &fan.tach})
            if (*path)
                checkPath(**path);
    for (const board::LedDeviceProfile& led : profile.leds)
        expect(led.on >= 1 && led.on <= 9999 && !(led.biStatus && led.on == 2),
               "the brightness of a lit LED fits its driver's record");
    if (profile.descriptor) {
        checkPath(profile.descriptor->device);
        expect(profile.descriptor->readChunk >= 1 && profile.descriptor->readChunk <= 65536,
               "a descriptor is read 1 to 65536 bytes at a time");
        expect(profile.descriptor->size >= 1 && profile.descriptor->size <= 65536,
               "a descriptor has 1 to 65536 bytes");
    }
    for (const auto* const path : {&profile.preferences, &profile.button, &profile.firmware})
        if (*path)
            checkPath(**path);
    if (!profile.ledService)
        return;
    const board::LedSequencerProfile& leds = *profile.ledService;
    expect(std::uint64_t{leds.tickMs} * 1000 <= UINT32_MAX, "a tick fits its microseconds");
    for (const board::LedSequencerProfile::File& file : leds.files)
        checkPath(file.path);
    for (const board::LedSequencerProfile::Command& row : leds.commands)
        expect(row.word1.find('\0') == std::string::npos &&
                   row.word2.find('\0') == std::string::npos,
               "words are texts");
    for (const board::LedFinding& finding : board::checkLeds(profile))
        expect(finding.fault.place.rfind("/proc/self/fd/", 0) == 0,
               "a mistake in a table has its place");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text = fuzz::textOf(bytes, size);
    Profile profile;
    const std::string complaint = load(text, profile);
    if (!complaint.empty()) {
        checkComplaint(complaint, text);
        return 0;
    }
    checkProfile(profile);
    Profile same;
    expect(load(text + "\n# \u00e9\u3042 [x", same).empty(), "a comment changes nothing");
    expect(same.fans.size() == profile.fans.size() && same.leds.size() == profile.leds.size() &&
               same.ledService.has_value() == profile.ledService.has_value(),
           "a comment changes nothing");
    const std::string unknown = load(text + "\n[nonsense]\n", same);
    checkComplaint(unknown, text + "\n");
    expect(unknown.find(": nonsense: unknown key (expected fan, ") != std::string::npos,
           "an unknown key is named");
    return 0;
}
