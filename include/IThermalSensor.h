#pragma once

#include "BOARD_API.h"
#include "IUnknown.h"
#include "String.h"

/// A temperature sensor of the board. Every operation except `isValid` returns a status; a failure
/// has code -1 and no text.
///
/// No operation takes a lock. Hold `getLock()` around calls on a driver that several threads share,
/// and around `open` while clients use the driver, because `open` replaces the path and the
/// maximum.
class BOARD_API IThermalSensor : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// Whether the driver has ever connected and could then open its device file.
    virtual bool isValid() = 0;

    /// The kernel driver's description of the sensor; "" before the driver is connected. Always
    /// succeeds.
    virtual XCode getDescription(String& description) = 0;

    /// Reads the current temperature in degrees Celsius from the first 16 bytes of the device,
    /// which hold it in thousandths of a degree. A device that can be opened but holds no number or
    /// can't be read counts as 0. Fails, with `temperature` 0, if the driver is not valid or the
    /// device file can't be opened.
    virtual XCode getTemperature(float& temperature) = 0;

    /// The highest allowed temperature, in whatever unit the kernel driver uses; 0 before the
    /// driver is connected. Always succeeds.
    virtual XCode getMaxTemperature(unsigned int& maximum) = 0;
};
