#pragma once

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "board/CpuMeter.h"
#include "board/Host.h"
#include "board/Readings.h"
#include "profile/Profile.h"
#include "watch/Alarms.h"
#include "watch/DescriptorWatch.h"

namespace board {

/// What a watch knows about a device.
struct WatchedDevice {
    DeviceKind kind;
    std::string name;
    /// The last reading. It contains the fault if the device could not be read. A descriptor has no
    /// reading.
    std::variant<std::monostate, FanReading, TemperatureReading, PowerReading, LedReading> reading;
    std::optional<std::string> fault; ///< why the device can't be read
    /// Since when the device can or can't be read, by the calendar clock. At first, this is when
    /// the watch began.
    TYTime since;
};

/// Looks at the fans, sensors, supplies, LEDs and the descriptor of a hosted board. Each change
/// since the last look becomes one event; the first look compares with a board on which everything
/// works. A device that can't be read is looked up and connected again at each look.
///
/// A sensor that was above its maximum counts as over it until it is below the maximum minus the
/// hysteresis. A fan counts as following its setting if it holds the speed that this process has
/// set. If no set speed is in force, any speed is accepted. A fan that has just been switched on
/// may be at rest for one look. While a device can't be read, its other alarms stay as they are.
///
/// One thread. Memory is bounded by the number of devices.
class Watch {
public:
    /// Passes a line to the LED sequencer, which handles it like a line from its pipe. Returns
    /// false if the line can't be sent now. The next look then tries again if the line still
    /// applies.
    using LedLineSink = std::function<bool(const std::string& line)>;

    /// All arguments must outlive the object.
    Watch(Host& host, const Profile& profile, EventQueue& events);

    void look();

    /// From now on, passes the profile's lines to `sink`: `on_alarm` when the first alarm begins,
    /// `on_clear` when the last alarm ends. An empty `sink` drops the lines. `showsAlarm` means
    /// that the LEDs show an alarm already, from before a restart. A line that applies now is
    /// passed at once: `on_alarm` if there are alarms that the LEDs don't show, `on_clear` if the
    /// LEDs show an alarm but there is none.
    void sendLedLinesTo(LedLineSink sink, bool showsAlarm = false);

    /// In the host's order. Before the first look, all of them count as working.
    const std::vector<WatchedDevice>& devices() const { return m_devices; }

    bool watches(const std::string& name) const { return find(name) != nullptr; }
    /// Whether the device could not be read at the last look.
    bool isGone(const std::string& name) const;

    const std::vector<Alarm>& alarms() const { return m_alarms.all(); }

    /// The bytes that a load of the descriptor would read, as of the last look that could read
    /// them; null if no look could, or if the board has no descriptor.
    const std::string* descriptorImage() const {
        return m_descriptor ? m_descriptor->image() : nullptr;
    }

    /// The load of the processors between the last two looks; a fault before the second look.
    const Result<CpuReading>& load() const { return m_load; }

private:
    const WatchedDevice* find(const std::string& name) const;
    void lookAt(WatchedDevice& device);
    void lookAtFan(WatchedDevice& device);
    void lookAtThermal(WatchedDevice& device);
    void lookAtPower(WatchedDevice& device);
    void lookAtDescriptor(WatchedDevice& device);
    template <class Reading>
    const Reading* read(WatchedDevice& device,
                        Reading (*readOnce)(const Host&, const std::string&));
    void note(WatchedDevice& device, std::optional<std::string> fault);
    void pickDescriptorUp() const;
    void showAlarms();

    Host& m_host;
    const Profile& m_profile;
    EventQueue& m_events;
    Alarms m_alarms;
    std::vector<WatchedDevice> m_devices;
    std::unordered_map<std::string, std::size_t> m_places; ///< of the devices, by name
    std::optional<DescriptorWatch> m_descriptor;
    std::optional<CpuMeter> m_meter;
    Result<CpuReading> m_load = Fault{"has not been measured"};
    LedLineSink m_sink;
    bool m_showsAlarm = false; ///< the LEDs show that there are alarms
};

} // namespace board
