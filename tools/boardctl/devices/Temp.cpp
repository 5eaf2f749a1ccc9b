#include "board/Readings.h"
#include "devices/SensorCommand.h"
#include "program/Commands.h"

namespace boardctl {

void addTemp(CLI::App& app, Options& options) {
    addSensorCommand(app, options, "temp", board::DeviceKind::THERMAL,
                     "Read the temperature sensors", &board::readTemperature);
}

} // namespace boardctl
