#include "leds/preview/SteppedLedCtrl.h"

namespace board {

std::optional<std::size_t> SteppedLedCtrl::rowOf(const std::string& line) const {
    const CmdDef* const row = find(line.c_str());
    if (!row)
        return std::nullopt;
    return indexOf(*row);
}

void SteppedLedCtrl::skip(unsigned ticks) {
    for (; ticks > 0; --ticks)
        nextOutput();
}

std::uint32_t SteppedLedCtrl::step() {
    const bool flashes = view().flashMask != 0;
    const std::uint32_t output = advance();
    m_mayDriveOthers = hasChanged() || flashes || m_flashed;
    m_flashed = flashes;
    return output;
}

LedDrive driveOf(const LedCause& cause, const LedSequencerProfile& profile) {
    const LedSequencerProfile::Command& row = profile.commands[cause.run.row];
    switch (cause.action) {
    case LedCtrl::ACTION_ON:
        return {cause.run.row, LedLight::STEADY, row.timeMs != 0};
    case LedCtrl::ACTION_BLINK:
        return {cause.run.row, LedLight::BLINK, row.timeMs != 0};
    case LedCtrl::ACTION_FLASH:
        return {cause.run.row, LedLight::FLASH, false};
    case LedCtrl::ACTION_ROLL_UP:
    case LedCtrl::ACTION_ROLL_DOWN:
        return {cause.run.row, LedLight::ROLL, row.timeMs != 0};
    default:
        return {cause.run.row, LedLight::NONE, false};
    }
}

LedDrive driveOf(const LedExplanation& led, const LedSequencerProfile& profile) {
    if (!led.driver)
        return {};
    return led.isHeld ? driveOf(*led.driver, profile) : LedDrive{led.driver->run.row};
}

} // namespace board
