#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/Events.h"
#include "base/Result.h"
#include "board/Firmware.h"
#include "board/Services.h"
#include "status/StatusAnswers.h"
#include "watch/Watch.h"

namespace board {

/// What a host process knows about its board: what its watch saw last, what its services do, and
/// what has happened since it started. No answer touches a device. One thread.
class HostStatus : public StatusAnswers {
public:
    /// All arguments must outlive the object.
    HostStatus(const std::string& profilePath, const Profile& profile, Host& host,
               const Watch& watch);

    /// Sets the services while they run; null before and after that. What failed when they were
    /// started is kept as events, because no client could monitor it at that time.
    void setServices(const Services* services);

    void setFirmware(Result<FirmwareInfo> firmware) { m_firmware = std::move(firmware); }

    /// Keeps and counts an event. Returns it as the method Monitor sends it.
    nlohmann::ordered_json note(const EventQueue::Entry& entry);

    /// Counts events for which the queue had no room.
    void noteLost(unsigned count) { m_lost += count; }

    /// Whether the LED sequencer reads lines from its pipe, according to the events so far.
    bool takesLedLines() const { return m_takesLines; }

    /// One line: "7 devices, 1 alarm: thermal over 85".
    std::string summary() const;

    nlohmann::ordered_json status() const override;
    nlohmann::ordered_json leds() const override;
    std::uint32_t lit() const override;
    nlohmann::ordered_json descriptor() const override;
    std::string metrics() const override;

private:
    void noteFailures(const Services& services);
    nlohmann::ordered_json devicesJson() const;
    nlohmann::ordered_json ledServiceJson() const;
    nlohmann::ordered_json buttonJson() const;
    LedCounts ledCounts() const;
    std::vector<std::string> faultsOf(Services::Kind service) const;

    const std::string m_profilePath;
    const Profile& m_profile;
    Host& m_host;
    const Watch& m_watch;
    const TYTime m_started;
    const Services* m_services = nullptr;
    std::optional<Result<FirmwareInfo>> m_firmware;
    std::deque<nlohmann::ordered_json> m_events; ///< the last ones, the oldest first
    std::optional<bool> m_isPressed;
    bool m_takesLines = false;                      ///< from the LED pipe
    std::optional<std::string> m_pipeFault;         ///< why no LED lines are taken
    std::map<std::string, std::string> m_ledFaults; ///< by the name of an LED whose file is gone
    std::uint64_t m_presses = 0;
    std::uint64_t m_lost = 0;
};

} // namespace board
