#include "board/BoardCheck.h"

#include "PREFERENCES.h"
#include "base/File.h"
#include "board/EventTap.h"
#include "board/Firmware.h"
#include "board/Report.h"
#include "descriptor/DescriptorCheck.h"
#include "descriptor/DescriptorSource.h"
#include "devices/DeviceFile.h"
#include "devices/DeviceValue.h"
#include "leds/LedPipe.h"
#include "leds/LedRow.h"
#include "leds/check/LedCheck.h"
#include "leds/check/LedDeviceCheck.h"

namespace board {

void BoardCheck::add(Level level, const NamedPath& entry, const std::string& what) {
    m_findings.push_back({level, {entry.place, what}});
}

/// Calls `look`. If it throws an Error, adds a finding about the entry.
template <class Look>
void BoardCheck::look(const NamedPath& entry, Look look) {
    try {
        look();
    } catch (const Error& error) {
        add(Level::ERROR, entry, error.what());
    }
}

/// The path of the entry's device. If no device file is found, adds a finding and returns nothing.
std::optional<std::string> BoardCheck::deviceOf(const NamedPath& entry) {
    std::optional<std::string> device;
    look(entry, [&] {
        const std::string path = m_locator.locate(entry.path);
        expectKind(path, {FileKind::REGULAR, FileKind::CHARACTER_DEVICE, FileKind::BLOCK_DEVICE},
                   "a device file (expected a file or a device)");
        device = path;
    });
    return device;
}

template <class Value>
void BoardCheck::expectValue(const NamedPath& entry, const Result<Value>& value) {
    if (!value)
        add(Level::ERROR, entry, value.fault());
}

void BoardCheck::check(const FanProfile& fan) {
    if (const auto path = deviceOf(fan.device)) {
        expectValue(fan.device, readFanLevel(*path, fan.maximum));
        look(fan.device, [&] { expectWritable(*path); });
    }
    if (fan.enable)
        if (const auto path = deviceOf(*fan.enable)) {
            expectValue(*fan.enable, readFanMode(*path));
            look(*fan.enable, [&] { expectWritable(*path); });
        }
    if (fan.tach)
        if (const auto path = deviceOf(*fan.tach))
            expectValue(*fan.tach, readRpm(*path));
}

void BoardCheck::check(const ThermalProfile& sensor) {
    if (const auto path = deviceOf(sensor.device))
        expectValue(sensor.device, readThousandths(*path));
}

void BoardCheck::check(const PowerProfile& power) {
    if (const auto path = deviceOf(power.device))
        expectValue(power.device, readPowerStatus(*path));
}

void BoardCheck::check(const LedDeviceProfile& led) {
    if (const auto path = deviceOf(led.device)) {
        expectValue(led.device, readBrightness(*path));
        look(led.device, [&] { expectWritable(*path); });
        expectRange(led, *path);
    }
}

void BoardCheck::expectRange(const LedDeviceProfile& led, const std::string& path) {
    const auto maximum = maximumOf(path);
    if (!maximum)
        return;
    expectValue(led.device, *maximum);
    if (!*maximum)
        return;
    const std::string holds =
        ", but " + maximumFileOf(path) + " holds " + std::to_string(**maximum);
    if (led.on > **maximum)
        add(Level::ERROR, led.device, "`on` is " + std::to_string(led.on) + holds);
    if (led.biStatus && **maximum < 2)
        add(Level::ERROR, led.device, "`bi_status` needs a brightness of 2" + holds);
}

void BoardCheck::check(const DescriptorProfile& descriptor) {
    look(descriptor.device, [&] {
        const std::string path = m_locator.locate(descriptor.device.path);
        auto source = DescriptorSource::ofBoard(path, descriptor.readChunk, descriptor.size);
        source.waitForLock({DESCRIPTOR_WAIT});
        for (const Finding& finding : checkImage(source.load(), true))
            if (finding.weight == Finding::Weight::CORRUPT ||
                finding.weight == Finding::Weight::WARNING)
                add(finding.weight == Finding::Weight::CORRUPT ? Level::ERROR : Level::WARNING,
                    descriptor.device,
                    path + ": at " + std::to_string(finding.offset) + ": " + finding.text);
        const off_t size = trySize(path);
        if (isDevice(path) && size > 0 && size < static_cast<off_t>(descriptor.size))
            add(Level::WARNING, descriptor.device,
                path + ": has " + std::to_string(size) + " bytes, but `size` is " +
                    std::to_string(descriptor.size) + ": the rest of a longer image is lost");
    });
}

void BoardCheck::checkLedTables(const Profile& profile) {
    const std::string& group = profile.ledService->group;
    if (!group.empty() && !tryFindGroup(group))
        m_findings.push_back(
            {Level::ERROR,
             {profile.ledService->groupPlace, "this machine has no group '" + group +
                                                  "', so no LED commands are "
                                                  "taken"}});
    const auto addMistakes = [&](Level level, std::vector<LedFinding> findings) {
        for (LedFinding& finding : findings)
            if (finding.level == LedFinding::Level::MISTAKE)
                m_findings.push_back({level, std::move(finding.fault)});
    };
    addMistakes(Level::ERROR, checkLedDevices(*profile.ledService, m_locator));
    addMistakes(Level::WARNING, checkLeds(profile));
}

void BoardCheck::checkWatch(const Profile& profile) {
    for (const auto& line : {profile.watch.onAlarm, profile.watch.onClear}) {
        if (!line)
            continue;
        if (!profile.ledService)
            m_findings.push_back(
                {Level::WARNING, {line->place, "is never run: LED lines need a table [leds]"}});
        else if (!hasRow(*profile.ledService, line->word1, line->word2, line->number))
            m_findings.push_back(
                {Level::WARNING, {line->place, "has no effect: no row of [leds] has this line"}});
    }
}

void BoardCheck::checkPreferences(const NamedPath& file) {
    look(file, [&] {
        expectKind(file.path, {FileKind::REGULAR}, "a file (expected lines 'key = value')");
        // The library logs what it ignores in the file. These log lines become findings.
        EventQueue messages;
        {
            const EventTap tap(messages);
            String error;
            if (!PREFERENCES::LOAD(file.path.c_str(), error).isSuccess())
                throw Error(error.c_str());
            unsigned ignored = 0;
            for (const char* key : {PREFERENCES::VOIP_DSP_CHANNELS, PREFERENCES::VOIP_SIP_LEGS})
                PREFERENCES::READPREF_UINT(key, ignored, 0, 0, UINT32_MAX);
            PREFERENCES::CLEAR();
        }
        for (const EventQueue::Entry& entry : messages.take().entries)
            if (const auto* const fault = std::get_if<event::FaultReport>(&entry.event))
                add(Level::WARNING, file, fault->text);
    });
}

void BoardCheck::checkButton(const NamedPath& button) {
    look(button, [&] {
        expectKind(button.path, {FileKind::PIPE, FileKind::CHARACTER_DEVICE},
                   "a button (expected a pipe or a character device)");
        expectReadable(button.path);
        if (kindOf(button.path) == FileKind::PIPE) // a host opens it for writing, too
            expectWritable(button.path);
    });
}

void BoardCheck::check(const Profile& profile) {
    const auto checkAll = [&](const auto& entries) {
        for (const auto& entry : entries)
            check(entry);
    };
    checkAll(profile.fans);
    checkAll(profile.thermals);
    checkAll(profile.powers);
    checkAll(profile.leds);
    if (profile.descriptor)
        check(*profile.descriptor);
    if (profile.preferences)
        checkPreferences(*profile.preferences);
    if (profile.button)
        checkButton(*profile.button);
    if (profile.firmware)
        expectValue(*profile.firmware, readFirmware(profile.firmware->path));
    if (profile.ledService)
        checkLedTables(profile);
    checkWatch(profile);
}

} // namespace board
