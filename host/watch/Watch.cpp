#include "watch/Watch.h"

#include <utility>

#include "board/Report.h"
#include "devices/DeviceValue.h"
#include "devices/HostedFan.h"
#include "leds/LedLine.h"

namespace board {

namespace {

bool isWatched(DeviceKind kind) {
    return kind != DeviceKind::VOIP && kind != DeviceKind::PREFERENCES;
}

/// Compares the levels too: with a small maximum, a level may read back as another speed.
bool follows(const HostedFan& fan, const Device& device, IFanControl::FanSpeed held) {
    if (!fan.speedInForce() || *fan.speedInForce() == held)
        return true;
    const Result<std::int32_t> level = readFanLevel(device.path, device.maximum);
    return level && static_cast<std::uint32_t>(*level) == fan.levelOf(*fan.speedInForce());
}

} // namespace

Watch::Watch(Host& host, const Profile& profile, EventQueue& events)
    : m_host(host), m_profile(profile), m_events(events), m_alarms(events) {
    for (const Device& device : host.devices())
        if (isWatched(device.kind)) {
            m_places.emplace(device.name, m_devices.size());
            m_devices.push_back({device.kind, device.name, {}, std::nullopt, calendarTime()});
        }
    if (profile.descriptor)
        m_descriptor.emplace(*profile.descriptor);
}

void Watch::look() {
    for (WatchedDevice& device : m_devices)
        lookAt(device);
    if (m_meter)
        m_load = m_meter->next();
    else
        m_meter.emplace(); // a span from the start to the first look is too short
    showAlarms();
}

const WatchedDevice* Watch::find(const std::string& name) const {
    const auto found = m_places.find(name);
    return found != m_places.end() ? &m_devices[found->second] : nullptr;
}

bool Watch::isGone(const std::string& name) const {
    const WatchedDevice* const device = find(name);
    return device && device->fault;
}

void Watch::lookAt(WatchedDevice& device) {
    switch (device.kind) {
    case DeviceKind::FAN:
        return lookAtFan(device);
    case DeviceKind::THERMAL:
        return lookAtThermal(device);
    case DeviceKind::POWER:
        return lookAtPower(device);
    case DeviceKind::LED:
        read(device, readLed);
        return;
    case DeviceKind::DESCRIPTOR:
        return lookAtDescriptor(device);
    case DeviceKind::VOIP:
    case DeviceKind::PREFERENCES:
        return;
    }
}

/// Reads the device. Null if that fails even after the device was looked up again.
template <class Reading>
const Reading* Watch::read(WatchedDevice& device,
                           Reading (*readOnce)(const Host&, const std::string&)) {
    const bool isSearched = device.fault || Host::hasMoved(*m_host.find(device.name));
    if (isSearched)
        m_host.reconnect(device.name);
    Reading reading = readOnce(m_host, device.name);
    if (!isSearched && reading.fault()) {
        m_host.reconnect(device.name);
        reading = readOnce(m_host, device.name);
    }
    note(device, reading.fault());
    device.reading = std::move(reading);
    return device.fault ? nullptr : &std::get<Reading>(device.reading);
}

void Watch::note(WatchedDevice& device, std::optional<std::string> fault) {
    if (fault.has_value() != device.fault.has_value())
        device.since = calendarTime();
    device.fault = std::move(fault);
    const std::string kind = kindName(device.kind);
    m_alarms.judge(Alarm::Kind::DEVICE_GONE, device.name, device.fault.has_value(),
                   event::DeviceGone{kind, device.name, device.fault.value_or("")},
                   event::DeviceBack{kind, device.name});
}

void Watch::lookAtFan(WatchedDevice& device) {
    using Speed = IFanControl::FanSpeed;
    const HostedFan& fan = *m_host.fan(device.name);
    const TYLockHolder hold(m_host.fan(device.name)->getLock()); // nobody sets the speed meanwhile
    const auto* const former = std::get_if<FanReading>(&device.reading);
    const bool wasOff = former && former->value && *former->value == Speed::FAN_SPEED_OFF;
    const FanReading* const reading = read(device, readFan);
    if (!reading)
        return;
    const Speed held = *reading->value;
    const std::optional<Speed> set = fan.speedInForce();
    const std::optional<std::string> setName =
        set ? std::optional<std::string>(speedName(*set)) : std::nullopt;
    m_alarms.judge(Alarm::Kind::FAN_ASTRAY, device.name,
                   !follows(fan, *m_host.find(device.name), held),
                   event::FanAstray{device.name, setName.value_or(""), speedName(held)},
                   event::FanFollows{device.name, setName, speedName(held)});
    if (!reading->rpm)
        return;
    const unsigned rpm = **reading->rpm;
    m_alarms.judge(Alarm::Kind::FAN_STOPPED, device.name,
                   rpm == 0 && held != Speed::FAN_SPEED_OFF && !wasOff,
                   event::FanStopped{device.name, speedName(held)},
                   event::FanTurns{device.name, speedName(held), rpm});
}

void Watch::lookAtThermal(WatchedDevice& device) {
    const TemperatureReading* const reading = read(device, readTemperature);
    if (!reading)
        return;
    const double celsius = static_cast<double>(*reading->value);
    const double maximum = reading->maximum;
    const bool wasOver = m_alarms.has(Alarm::Kind::TEMPERATURE_OVER, device.name);
    const bool isOver =
        celsius > maximum || (wasOver && celsius >= maximum - m_host.find(device.name)->hysteresis);
    m_alarms.judge(Alarm::Kind::TEMPERATURE_OVER, device.name, isOver,
                   event::TemperatureOver{device.name, celsius, reading->maximum},
                   event::TemperatureBack{device.name, celsius, reading->maximum});
}

void Watch::lookAtPower(WatchedDevice& device) {
    const PowerReading* const reading = read(device, readPower);
    if (!reading)
        return;
    m_alarms.judge(Alarm::Kind::POWER_LOST, device.name, *reading->value == 0,
                   event::PowerLost{device.name}, event::PowerBack{device.name, *reading->value});
}

void Watch::lookAtDescriptor(WatchedDevice& device) {
    if (device.fault)
        m_host.reconnect(device.name);
    std::optional<std::string> fault = m_host.faultOf(device.name);
    std::optional<event::DescriptorChanged> change;
    if (!fault) {
        const auto seen = m_descriptor->look(m_host.find(device.name)->path);
        if (seen)
            change = *seen;
        else
            fault = m_profile.descriptor->device.place + ": " + seen.fault();
    }
    const bool isBack = device.fault && !fault;
    note(device, std::move(fault));
    if (change)
        m_events.push(std::move(*change));
    if (isBack || (m_host.isDescriptorAwaited() && m_descriptor->image()))
        pickDescriptorUp();
}

/// Loads a descriptor that has not been loaded before. A list in use stays as it is, because
/// clients may hold pointers into it or have changed it.
void Watch::pickDescriptorUp() const {
    {
        const TYLockHolder hold(m_host.descriptor()->getLock());
        if (m_host.descriptor()->getTags().size() != 0)
            return;
    }
    const Result<void> loaded = loadDescriptor(m_host, {std::chrono::milliseconds(0)});
    if (m_host.isDescriptorAwaited())
        return; // another program still edits the device
    const Result<void> settled = m_host.capacity() ? settleCapacity(m_host) : Result<void>();
    for (const Result<void>& step : {loaded, settled})
        if (!step)
            m_events.push(event::FaultReport{step.fault()});
}

void Watch::sendLedLinesTo(LedLineSink sink, bool showsAlarm) {
    m_sink = std::move(sink);
    m_showsAlarm = showsAlarm;
    showAlarms();
}

void Watch::showAlarms() {
    const bool isAlarmed = !m_alarms.all().empty();
    if (!m_sink || isAlarmed == m_showsAlarm)
        return;
    const auto& line = isAlarmed ? m_profile.watch.onAlarm : m_profile.watch.onClear;
    if (!line || m_sink(ledLine(line->word1, line->word2, line->number)))
        m_showsAlarm = isAlarmed;
}

} // namespace board
