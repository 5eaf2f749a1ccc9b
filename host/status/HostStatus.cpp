#include "status/HostStatus.h"

#include <utility>

#include "base/Text.h"
#include "board/Metrics.h"
#include "board/Report.h"
#include "client/StatusPlaces.h"
#include "client/UtcText.h"
#include "leds/LedPipe.h"
#include "status/Descriptions.h"
#include "status/HostJson.h"
#include "watch/EventWords.h"
#include "watch/JsonValues.h"

using nlohmann::ordered_json;

namespace board {

namespace {

/// How many events are kept for Status.
constexpr std::size_t MOST_EVENTS = 50;

/// What is wrong with the device, without the measured value, which would change at each look.
std::string briefOf(const Alarm& alarm, const Profile& profile) {
    switch (alarm.kind) {
    case Alarm::Kind::DEVICE_GONE:
        return "gone";
    case Alarm::Kind::TEMPERATURE_OVER:
        for (const ThermalProfile& sensor : profile.thermals)
            if (sensor.name == alarm.device)
                return "over " + std::to_string(sensor.maximum);
        return "over its maximum";
    case Alarm::Kind::POWER_LOST:
        return "lost";
    case Alarm::Kind::FAN_ASTRAY:
        return "does not follow";
    case Alarm::Kind::FAN_STOPPED:
        return "stands still";
    }
    return alarm.type;
}

} // namespace

HostStatus::HostStatus(const std::string& profilePath, const Profile& profile, Host& host,
                       const Watch& watch)
    : m_profilePath(reportedProfile(profilePath)), m_profile(profile), m_host(host), m_watch(watch),
      m_started(calendarTime()) {}

void HostStatus::setServices(const Services* services) {
    if (services && !m_services)
        noteFailures(*services);
    m_services = services;
    m_takesLines = services && services->leds() && services->leds()->writers();
    if (services && services->leds())
        m_pipeFault = services->leds()->pipeFault();
}

void HostStatus::noteFailures(const Services& services) {
    for (const Services::Failure& failure : services.failures()) {
        const char* const kind = failure.service == Services::Kind::BUTTON ? "button: " : "leds: ";
        static_cast<void>(note({calendarTime(), event::FaultReport{kind + failure.text}}));
    }
}

ordered_json HostStatus::note(const EventQueue::Entry& entry) {
    if (std::holds_alternative<event::ButtonPressed>(entry.event)) {
        ++m_presses;
        m_isPressed = true;
    } else if (std::holds_alternative<event::ButtonReleased>(entry.event)) {
        m_isPressed = false;
    } else if (const auto* const gone = std::get_if<event::LedPipeGone>(&entry.event)) {
        m_pipeFault = gone->reason;
        m_takesLines = false;
    } else if (std::holds_alternative<event::LedPipeBack>(entry.event)) {
        m_pipeFault.reset();
        m_takesLines = true;
    } else if (const auto* const led = std::get_if<event::LedFileGone>(&entry.event)) {
        m_ledFaults[led->name] = led->reason;
    } else if (const auto* const found = std::get_if<event::LedFileBack>(&entry.event)) {
        m_ledFaults.erase(found->name);
    }
    const EventWords words = wordsOf(entry.event);
    ordered_json event = {
        {"event", words.type}, {"time", utcText(entry.time)}, {"text", words.text}};
    event.update(words.fields);
    m_events.push_back(event);
    if (m_events.size() > MOST_EVENTS)
        m_events.pop_front();
    return event;
}

std::string HostStatus::summary() const {
    const std::size_t devices = m_host.devices().size(), alarms = m_watch.alarms().size();
    std::string text = std::to_string(devices) + (devices == 1 ? " device, " : " devices, ");
    if (alarms == 0)
        return text + "no alarm";
    std::vector<std::string> texts;
    for (const Alarm& alarm : m_watch.alarms())
        texts.push_back(printable(alarm.device) + " " + briefOf(alarm, m_profile));
    text += std::to_string(alarms) + (alarms == 1 ? " alarm: " : " alarms: ");
    return text + join(texts, "; ");
}

ordered_json HostStatus::status() const {
    ordered_json product = nullptr;
    if (m_host.descriptor())
        if (const auto identifier = identityOf(*m_host.descriptor()).product)
            product = identifierText(*identifier);
    ordered_json firmware = nullptr;
    if (m_firmware && *m_firmware)
        firmware = {{"version", (*m_firmware)->version}};
    ordered_json alarms = ordered_json::array();
    for (const Alarm& alarm : m_watch.alarms())
        alarms.push_back(toJson(alarm));
    const LedCounts lines = ledCounts();
    return {{"product", product},
            {"profile", m_profilePath},
            {"simulated", m_profile.simulated},
            {"version", STATUS_VERSION},
            {"firmware", firmware},
            {"started", utcText(m_started)},
            {"devices", devicesJson()},
            {"alarms", alarms},
            {"leds", ledServiceJson()},
            {"button", buttonJson()},
            {"cpu", toJson(m_watch.load())},
            {"counters",
             {{"led_lines_handled", lines.handled},
              {"led_lines_unknown", lines.unknown},
              {"button_presses", m_presses},
              {"events_dropped", m_lost}}},
            {"events", m_events}};
}

ordered_json HostStatus::devicesJson() const {
    ordered_json devices = ordered_json::array();
    for (const WatchedDevice& watched : m_watch.devices())
        if (const Device* const device = m_host.find(watched.name))
            devices.push_back(toJson(*device, &watched, m_started));
    for (const Device& device : m_host.devices())
        if (device.kind == DeviceKind::PREFERENCES)
            devices.push_back(toJson(device, nullptr, m_started));
    return devices;
}

std::vector<std::string> HostStatus::faultsOf(Services::Kind service) const {
    std::vector<std::string> faults;
    if (m_services)
        for (const Services::Failure& failure : m_services->failures())
            if (failure.service == service)
                faults.push_back(failure.text);
    return faults;
}

ordered_json HostStatus::ledServiceJson() const {
    if (!m_profile.ledService)
        return nullptr;
    const LedService* const leds = m_services ? m_services->leds() : nullptr;
    std::vector<std::string> faults = faultsOf(Services::Kind::LEDS);
    if (m_pipeFault)
        faults.push_back(*m_pipeFault);
    for (const auto& [name, fault] : m_ledFaults)
        faults.push_back(String::format("LED '%s': %s", name.c_str(), fault.c_str()).c_str());
    return {{"running", leds != nullptr},
            {"pipe", m_takesLines ? ordered_json(LED_PIPE) : ordered_json(nullptr)},
            {"tick_ms", m_profile.ledService->tickMs},
            {"faults", faults}};
}

ordered_json HostStatus::buttonJson() const {
    if (!m_profile.button)
        return nullptr;
    const bool isWatched = m_services && m_services->watchesButton();
    std::vector<std::string> faults = faultsOf(Services::Kind::BUTTON);
    if (m_services && !isWatched && faults.empty()) // the watch has ended since the start
        faults.push_back(m_profile.button->path + ": is no longer watched");
    return {{"watched", isWatched},
            {"pressed", orNull(m_isPressed)},
            {"fault", faults.empty() ? ordered_json(nullptr) : ordered_json(join(faults, "; "))}};
}

ordered_json HostStatus::leds() const {
    ordered_json leds = ordered_json::array();
    if (!m_services || !m_services->leds())
        return leds;
    for (const LedExplanation& led : m_services->leds()->explain())
        leds.push_back(toJson(led, *m_profile.ledService));
    return leds;
}

std::uint32_t HostStatus::lit() const {
    return m_services && m_services->leds() ? m_services->leds()->lit() : 0;
}

ordered_json HostStatus::descriptor() const {
    ordered_json tags = ordered_json::array(), fault = nullptr;
    if (const std::string* const bytes = m_watch.descriptorImage()) {
        const TagImage image(*bytes);
        for (const ImageTag& tag : image.tags())
            tags.push_back(toJson(tag));
        fault = orNull(image.fault());
    }
    for (const WatchedDevice& device : m_watch.devices())
        if (device.kind == DeviceKind::DESCRIPTOR && device.fault)
            fault = *device.fault;
    return {{"tags", tags}, {"fault", fault}};
}

LedCounts HostStatus::ledCounts() const {
    return m_services && m_services->leds() ? m_services->leds()->counts() : LedCounts();
}

std::string HostStatus::metrics() const {
    Report report;
    for (const WatchedDevice& device : m_watch.devices()) {
        report.drivers.push_back({device.name, {}, device.fault});
        if (const auto* const fan = std::get_if<FanReading>(&device.reading))
            report.fans.push_back(*fan);
        else if (const auto* const sensor = std::get_if<TemperatureReading>(&device.reading))
            report.temperatures.push_back(*sensor);
        else if (const auto* const power = std::get_if<PowerReading>(&device.reading))
            report.powers.push_back(*power);
        else if (const auto* const led = std::get_if<LedReading>(&device.reading))
            report.leds.push_back(*led);
    }
    if (m_host.descriptor())
        report.identity = identityOf(*m_host.descriptor());
    if (m_host.capacity()) {
        const Result<void> settled = settleCapacity(m_host);
        report.drivers.push_back(
            {CAPACITY_DRIVER, {}, settled ? std::nullopt : std::optional(settled.fault())});
        if (settled)
            report.capacity = CapacityReport{dspChannelsOf(*m_host.capacity()),
                                             m_host.capacity()->getSipLegCount()};
    }
    report.firmware = m_firmware;
    report.cpuSinceBoot = cpuLoadSinceBoot();

    HostFigures figures;
    figures.started = std::chrono::system_clock::from_time_t(m_started.seconds);
    for (const Alarm& alarm : m_watch.alarms())
        figures.alarms.push_back({alarm.type, alarm.device});
    const LedCounts lines = ledCounts();
    figures.ledLines = lines.handled;
    figures.unknownLedLines = lines.unknown;
    figures.buttonPresses = m_presses;
    figures.lostEvents = m_lost;
    return toMetrics(m_host, report, m_profile.simulated, &figures);
}

} // namespace board
