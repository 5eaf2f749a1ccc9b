#include "board/Readings.h"
#include "devices/SensorCommand.h"
#include "program/Commands.h"

namespace boardctl {

void addPower(CLI::App& app, Options& options) {
    addSensorCommand<board::DeviceKind::POWER, board::readPower>(app, options, "power",
                                                                 "Read the power status");
}

} // namespace boardctl
