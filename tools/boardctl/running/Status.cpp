#include <sstream>
#include <string>

#include "base/Text.h"
#include "output/Json.h"
#include "output/OutputFile.h"
#include "output/Rows.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "running/RunningHost.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

/// The status of a host as rows for people.
class StatusRows {
public:
    StatusRows(const ordered_json& status, const ordered_json& leds) {
        add(0, "Board",
            textOf(status, "profile") +
                (textOf(status, "simulated") == "true" ? ", simulated" : ""));
        if (const std::string product = textOf(status, "product"); !product.empty())
            add(0, "Product", product);
        add(0, "Host",
            "version " + textOf(status, "version") + ", started at " + textOf(status, "started"));
        const ordered_json firmware = status.value("firmware", ordered_json());
        if (firmware.is_object())
            add(0, "Firmware", textOf(firmware, "version"));
        addServices(status);
        addList("Devices", listOf(status, "devices"), [&](const ordered_json& device) {
            add(1, textOf(device, "kind") + " '" + textOf(device, "name") + "'",
                deviceText(device));
        });
        addList("Alarms", listOf(status, "alarms"), [&](const ordered_json& alarm) {
            add(1, textOf(alarm, "device"),
                textOf(alarm, "text") + ", since " + textOf(alarm, "since"));
        });
        addList("LEDs", leds, [&](const ordered_json& led) {
            const auto drive = led.find("drive");
            add(1, textOf(led, "name"),
                litText(led) +
                    (drive != led.end() && drive->is_object() ? ", " + driveText(*drive) : ""));
        });
        addList("Last events", listOf(status, "events"), [&](const ordered_json& event) {
            add(1, textOf(event, "time"), textOf(event, "text"));
        });
    }

    const InfoContainer& rows() const { return m_rows; }

private:
    void add(unsigned level, const std::string& key, const std::string& value) {
        m_rows.add(level, 0, key.c_str(), value.c_str());
    }

    template <class Add>
    void addList(const char* title, const ordered_json& list, Add addElement) {
        add(0, title, list.empty() ? "none" : "");
        for (const ordered_json& element : list)
            addElement(element);
    }

    void addServices(const ordered_json& status) {
        const ordered_json leds = status.value("leds", ordered_json()),
                           button = status.value("button", ordered_json()),
                           cpu = status.value("cpu", ordered_json()),
                           counters = status.value("counters", ordered_json());
        if (leds.is_object()) {
            const std::string pipe = textOf(leds, "pipe");
            std::string faults;
            for (const ordered_json& fault : listOf(leds, "faults"))
                faults += withComma(fault.is_string() ? fault.get<std::string>() : "");
            add(0, "LED sequencer",
                std::string(textOf(leds, "running") == "true" ? "running" : "not running") +
                    (pipe.empty() ? "" : ", commands are read from " + pipe) + faults);
            add(0, "LED lines",
                textOf(counters, "led_lines_handled") + " handled, " +
                    textOf(counters, "led_lines_unknown") + " matched no row");
        }
        if (button.is_object())
            add(0, "Button",
                std::string(textOf(button, "watched") == "true" ? "watched" : "not watched") +
                    (textOf(button, "pressed") == "true" ? ", pressed" : "") + ", " +
                    textOf(counters, "button_presses") + " presses so far" +
                    withComma(textOf(button, "fault")));
        const std::string last = textOf(cpu, "last"), fault = textOf(cpu, "fault");
        add(0, "CPU load", !fault.empty() ? fault : last.empty() ? "not yet known" : last + " %");
        if (const std::string dropped = textOf(counters, "events_dropped");
            !dropped.empty() && dropped != "0")
            add(0, "Dropped events", dropped);
    }

    static std::string withComma(const std::string& text) {
        return text.empty() ? "" : ", " + text;
    }

    static std::string deviceText(const ordered_json& device) {
        const std::string value = textOf(device, "value"), unit = textOf(device, "unit"),
                          maximum = textOf(device, "maximum");
        const bool isCount = unit == "celsius" || unit == "rpm";
        return textOf(device, "state") + " since " + textOf(device, "since") +
               withComma(textOf(device, "level")) +
               withComma(value.empty() ? ""
                         : isCount     ? value + " " + unit
                                       : unit + " " + value) +
               withComma(maximum.empty() ? "" : "maximum " + maximum) +
               withComma(textOf(device, "fault")) + withComma(textOf(device, "description"));
    }

    InfoContainer m_rows;
};

struct StatusWords {
    std::string output; ///< empty: standard output
};

/// Makes each line safe to print, because a host of another user may send anything.
std::string printableLines(const std::string& text) {
    std::istringstream lines(text);
    std::string shown;
    for (std::string line; std::getline(lines, line);)
        shown += board::printable(line) + "\n";
    return shown;
}

std::string answerOf(board::FoundHost& host, const Options& options) {
    if (options.json)
        return jsonText(host.status);
    if (options.metrics)
        return printableLines(textOf(host.client.call("Metrics"), "text"));
    return rowsText(StatusRows(host.status, listOf(host.client.call("Leds"), "leds")).rows());
}

int status(const Options& options, const StatusWords& words) {
    board::FoundHost host = runningHost(options);
    printOrReplace(words.output, answerOf(host, options));
    return DONE;
}

} // namespace

void addStatus(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<StatusWords, status>(
        app, options, "status", "Show what the running host of the board knows");
    addOutputOption(command, words.output);
}

} // namespace boardctl
