#include "output/ReportRows.h"

#include "output/Readings.h"

namespace boardctl {

namespace {

/// What is known of a device that can't be read, other than its description.
template <class Reading>
void addLimits(InfoContainer&, const Reading&) {}
void addLimits(InfoContainer& rows, const board::TemperatureReading& temperature) {
    rows.add(1, 0, "Maximum", std::to_string(temperature.maximum).c_str());
}

template <class Reading>
void addRows(InfoContainer& rows, const std::vector<Reading>& readings, const String& driver,
             const char* key) {
    for (const Reading& reading : readings)
        if (driver == String(reading.name.c_str())) {
            if (!reading.description.empty())
                rows.add(1, 0, "Description", reading.description.c_str());
            if (reading.value)
                rows.add(1, 0, key, toText(reading).c_str());
            else
                addLimits(rows, reading);
        }
}

} // namespace

InfoContainer dumpOf(const board::Report& report) {
    InfoContainer rows;
    for (const board::DriverReport& driver : report.drivers) {
        for (const auto& row : driver.rows.getRows())
            rows.add(row.level, row.index, row.key, row.value);
        // An LED's driver prints its state itself; the other drivers print only a header.
        addRows(rows, report.fans, driver.name.c_str(), "Speed");
        addRows(rows, report.temperatures, driver.name.c_str(), "Temperature");
        addRows(rows, report.powers, driver.name.c_str(), "Status");
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
