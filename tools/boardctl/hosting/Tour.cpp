#include "hosting/Tour.h"

#include "base/Error.h"
#include "board/Report.h"
#include "leds/LedLine.h"
#include "leds/LedPipe.h"
#include "output/Readings.h"
#include "simulation/SimulatedButton.h"

using namespace std::chrono_literals;
using nlohmann::ordered_json;

namespace boardctl {

namespace {

bool isWorkingFan(const board::Device& device) {
    return device.kind == board::DeviceKind::FAN && !device.fault;
}

class Tour {
public:
    explicit Tour(const TourStage& stage) : m_stage(stage) {}

    bool play() {
        say("The tour: every part of the board in about ten seconds.");
        const bool wentOn = capacity() && fans() &&
                            (!m_scratch || (temperature() && leds() && button())) && system();
        if (wentOn)
            say("That was the tour.");
        return wentOn;
    }

private:
    void say(const std::string& text) {
        m_stage.lines.print("tour", "-- " + text, {{"text", text}});
    }

    bool goesOn(std::chrono::milliseconds span) { return !m_stage.pause(span); }

    bool capacity() {
        const CResourceVoip* const voip = m_stage.board.host().capacity();
        if (!voip)
            return true;
        const std::optional<unsigned> channels = board::dspChannelsOf(*voip);
        say("The VoIP capacity was read from the board descriptor: " +
            (channels ? std::to_string(*channels) : "an unknown number of") + " DSP channels, " +
            std::to_string(voip->getSipLegCount()) + " SIP legs.");
        return goesOn(200ms);
    }

    /// Steps each fan through its speeds, slowly enough to follow. Then applies `on_exit` of
    /// the profile to the fans.
    bool fans() {
        bool wentOn = true;
        for (const board::Device& device : m_stage.board.host().devices())
            if (isWorkingFan(device))
                wentOn = wentOn && fan(device.name);
        for (const std::string& fault : m_stage.board.host().giveBack())
            m_stage.lines.fault(fault, {{"kind", "fan"}, {"error", fault}});
        return wentOn;
    }

    bool fan(const std::string& name) {
        say("The fan '" + name + "' is set and read back through its driver.");
        const board::FanReading former = board::readFan(m_stage.board.host(), name);
        bool wentOn = true;
        for (const auto speed : {IFanControl::FAN_SPEED_LOW, IFanControl::FAN_SPEED_HIGH,
                                 IFanControl::FAN_SPEED_FULL}) {
            stepFan(name, speed);
            wentOn = goesOn(300ms);
            if (!wentOn)
                break;
        }
        stepFan(name, former.value ? *former.value : IFanControl::FAN_SPEED_OFF);
        return wentOn;
    }

    void stepFan(const std::string& name, IFanControl::FanSpeed speed) {
        const board::FanReading reading = board::setFan(m_stage.board.host(), name, speed);
        std::string seen = reading.value
                               ? std::string("reads back ") + board::speedName(*reading.value)
                               : reading.value.fault();
        if (reading.value && m_scratch)
            seen = "the device file holds " + std::string(m_scratch->fanRecord().c_str()) + ", " +
                   seen;
        ordered_json fields = toJson(reading);
        fields["requested"] = board::speedName(speed);
        m_stage.lines.print(
            "fan", "fan '" + name + "': set to " + board::speedName(speed) + ", " + seen, fields);
    }

    bool temperature() {
        say("The temperature rises: the simulated sensor's file changes, the driver reads it.");
        for (const double celsius : {45.0, 52.5, 41.5}) {
            m_scratch->setTemperature(celsius);
            const auto reading = board::readTemperature(m_stage.board.host(), "thermal");
            m_stage.lines.print("temperature",
                                "temperature '" + reading.name + "': " + toText(reading),
                                toJson(reading));
            if (!goesOn(250ms))
                return false;
        }
        return true;
    }

    bool command(const std::string& what, const std::string& line, std::chrono::milliseconds span) {
        say(what);
        try {
            board::sendLedLine(line);
        } catch (const board::Error& error) {
            m_stage.lines.fault(error.what(), {{"error", error.what()}});
        }
        return goesOn(span);
    }

    bool leds() {
        if (!m_stage.takesCommands) {
            say("The LEDs accept no commands here; skipping that part.");
            return true;
        }
        return command("A line in the pipe " + std::string(board::LED_PIPE) +
                           " rolls a light over four LEDs.",
                       "search start", 1200ms) &&
               command(
                   "The line rings: its LED blinks for three seconds and then stops on its own.",
                   "line ring", 1200ms) &&
               command("An alarm flashes for one tick.", "alarm once", 400ms) &&
               command("All LEDs light up for a second; their former patterns continue underneath.",
                       "lamp test", 1300ms) &&
               command("The rolling light stops.", "search stop", 100ms) &&
               command("The power LED stops blinking: a command replaces the previous one of its "
                       "group.",
                       "system ready", 500ms);
    }

    bool button() {
        if (!m_stage.watchesButton) {
            say("The button is not watched here; skipping that part.");
            return true;
        }
        say("The service button is pressed for half a second.");
        try {
            const board::SimulatedButton finger(m_stage.board.profile().button->path);
            finger.press();
            const bool wentOn = goesOn(500ms);
            finger.release();
            return wentOn && goesOn(100ms);
        } catch (const board::Error& error) {
            m_stage.lines.fault(error.what(), {{"error", error.what()}});
            return true;
        }
    }

    /// Measures the CPU load of this machine.
    bool system() {
        board::CpuMeter meter;
        if (!goesOn(500ms))
            return false;
        const board::Result<board::CpuReading> cpu = meter.next();
        m_stage.lines.print("cpu", "CPU load over half a second: " + toText(cpu), toJson(cpu));
        return true;
    }

    const TourStage& m_stage;
    /// If null, the tour shows only the capacity, the fans and the CPU load.
    const board::SimulatedBoard* const m_scratch = m_stage.board.scratch();
};

} // namespace

std::vector<std::string> tourFans(const Board& board) {
    std::vector<std::string> fans;
    for (const board::Device& device : board.host().devices())
        if (isWorkingFan(device))
            fans.push_back("fan '" + device.name + "'");
    return fans;
}

bool playTour(const TourStage& stage) {
    return Tour(stage).play();
}

} // namespace boardctl
