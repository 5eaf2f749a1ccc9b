#include "output/ReportRows.h"

#include <string>
#include <unordered_map>
#include <vector>

#include "output/Readings.h"

namespace boardctl {

namespace {

/// Adds what is known of a device that can't be read, apart from its description.
template <class Reading>
void addLimits(InfoContainer&, const Reading&) {}
void addLimits(InfoContainer& rows, const board::TemperatureReading& temperature) {
    rows.add(1, 0, "Maximum", std::to_string(temperature.maximum).c_str());
}

/// Readings by the name of their driver.
template <class Reading>
class Readings {
public:
    explicit Readings(const std::vector<Reading>& readings) {
        for (const Reading& reading : readings)
            m_readings.emplace(reading.name, &reading);
    }

    void addRows(InfoContainer& rows, const std::string& driver, const char* key) const {
        const auto found = m_readings.find(driver);
        if (found == m_readings.end())
            return;
        const Reading& reading = *found->second;
        if (!reading.description.empty())
            rows.add(1, 0, "Description", reading.description.c_str());
        if (reading.value)
            rows.add(1, 0, key, toText(reading).c_str());
        else
            addLimits(rows, reading);
    }

private:
    std::unordered_map<std::string, const Reading*> m_readings;
};

} // namespace

InfoContainer dumpOf(const board::Report& report) {
    const Readings fans(report.fans);
    const Readings temperatures(report.temperatures);
    const Readings powers(report.powers);
    InfoContainer rows;
    for (const board::DriverReport& driver : report.drivers) {
        for (const auto& row : driver.rows.getRows())
            rows.add(row.level, row.index, row.key, row.value);
        // An LED's driver prints its state itself; the other drivers print only a header.
        fans.addRows(rows, driver.name, "Speed");
        temperatures.addRows(rows, driver.name, "Temperature");
        powers.addRows(rows, driver.name, "Status");
    }
    if (report.cpuSinceBoot && *report.cpuSinceBoot) {
        rows.add(0, 0, "CPU load", "");
        rows.add(1, 0, "Since boot", (std::to_string(**report.cpuSinceBoot) + " %").c_str());
    }
    if (report.firmware && *report.firmware) {
        rows.add(0, 0, "Firmware", "");
        rows.add(1, 0, "Version", (*report.firmware)->version.c_str());
    }
    return rows;
}

} // namespace boardctl
