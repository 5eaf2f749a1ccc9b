#include "board/Readings.h"
#include "devices/SensorCommand.h"
#include "program/Commands.h"

namespace boardctl {

void addPower(CLI::App& app, Options& options) {
    addSensorCommand(app, options, "power", board::DeviceKind::POWER, "Read the power status",
                     &board::readPower);
}

} // namespace boardctl
