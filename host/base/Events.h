#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "TYTime.h"
#include "base/FileDescriptor.h"

namespace board {

/// What can happen on a hosted board.
namespace event {

struct ButtonPressed {};

struct ButtonReleased {
    std::optional<TYTime> heldFor; ///< empty if the press was not seen
};

/// A line that came through the LED pipe and that a row of the table matches.
struct LedCommand {
    std::string line;
};

struct LedChanged {
    std::string name;
    bool isLit;
};

/// A sensor's temperature has risen above its maximum.
struct TemperatureOver {
    std::string name;
    double celsius;
    unsigned maximum; ///< degrees Celsius
};

/// The temperature has fallen more than the hysteresis below the maximum.
struct TemperatureBack {
    std::string name;
    double celsius;
    unsigned maximum;
};

/// A device can't be read.
struct DeviceGone {
    std::string kind; ///< "fan", "thermal", "power", "led" or "descriptor"
    std::string name;
    std::string reason;
};

struct DeviceBack {
    std::string kind;
    std::string name;
};

/// The status word of a power supply has become 0.
struct PowerLost {
    std::string name;
};

struct PowerBack {
    std::string name;
    unsigned status;
};

/// A fan does not hold the speed that this process has set.
struct FanAstray {
    std::string name;
    std::string set;  ///< "full", "high", "low" or "off"
    std::string held; ///< one of the same words
};

/// The fan now holds the speed that was set, or no set speed is in force any more.
struct FanFollows {
    std::string name;
    std::optional<std::string> set; ///< empty if no speed is in force
    std::string held;
};

/// A fan does not turn although it is not off.
struct FanStopped {
    std::string name;
    std::string level; ///< "full", "high" or "low"
};

/// The fan turns again, or it is off.
struct FanTurns {
    std::string name;
    std::string level;
    unsigned rpm;
};

/// The content of the board descriptor's device has changed.
struct DescriptorChanged {
    unsigned tags;                    ///< how many tags were changed, added or removed
    std::optional<std::string> fault; ///< why the image is corrupt; empty if it is not
};

/// A description, for people, of something that does not work.
struct FaultReport {
    std::string text;
};

/// A line of the log, at a level that BOARD_LOG_LEVEL enables.
struct LogLine {
    std::string text;
};

/// A line that came through the LED pipe and that no row of the table matches.
struct LedCommandUnknown {
    std::string line;
};

/// The LED pipe was removed or replaced, so no lines arrive.
struct LedPipeGone {
    std::string reason; ///< with the path
};

/// Lines are read from the LED pipe again.
struct LedPipeBack {
    std::string writers;      ///< who may write, in words
    bool isTakenOver = false; ///< another service read the lines until now
};

/// The sequencer drives the LEDs, which another program drove until now.
struct LedsTakenOver {};

/// The sequencer can't drive an LED any more.
struct LedFileGone {
    std::string name;
    std::string reason; ///< with the path
};

/// The sequencer drives the LED again.
struct LedFileBack {
    std::string name;
};

} // namespace event

using Event =
    std::variant<event::ButtonPressed, event::ButtonReleased, event::LedCommand, event::LedChanged,
                 event::TemperatureOver, event::TemperatureBack, event::DeviceGone,
                 event::DeviceBack, event::PowerLost, event::PowerBack, event::FanAstray,
                 event::FanFollows, event::FanStopped, event::FanTurns, event::DescriptorChanged,
                 event::FaultReport, event::LogLine, event::LedCommandUnknown, event::LedPipeGone,
                 event::LedPipeBack, event::LedFileGone, event::LedFileBack, event::LedsTakenOver>;

/// The time by the calendar clock.
TYTime calendarTime();

/// Carries events from the services' threads to the thread that handles them.
class EventQueue {
public:
    /// Throws Error if the system has no descriptor left.
    EventQueue();

    /// Stamps the event with the time and keeps it. Any thread; never waits. If nobody takes the
    /// events, the queue keeps a few thousand and counts the rest.
    void push(Event event);

    struct Entry {
        TYTime time; ///< by the calendar clock
        Event event;
    };
    struct Batch {
        std::vector<Entry> entries; ///< in order of arrival
        unsigned lost = 0;          ///< later events that the queue had no room for
    };
    /// Everything that has arrived since the last call.
    Batch take();

    /// Makes the descriptor readable although no event has arrived, so that the thread that takes
    /// the events checks for other changes. Any thread; never waits.
    void wake() const;

    /// Readable while events are waiting, and after `wake`, until the next `take`.
    int descriptor() const { return m_descriptor.number(); }

private:
    const FileDescriptor m_descriptor;
    std::mutex m_mutex; // guards the batch
    Batch m_batch;
};

} // namespace board
