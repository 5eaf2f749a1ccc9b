#pragma once

#include "BOARD_API.h"
#include "IUnknown.h"
#include "String.h"

/// A temperature sensor of the board. Every operation except `isValid` returns a status; a failure
/// has code -1 and no text.
///
/// No operation takes a lock. If several threads share a driver, they must hold its lock
/// (`getLock()`) during their calls. If clients are using the driver, also hold the lock during
/// `open`, which replaces the path and the maximum.
class BOARD_API IThermalSensor : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// True once the driver has connected and opened its device file. Stays true from then on, even
    /// if the file disappears.
    virtual bool isValid() = 0;

    /// The kernel driver's description of the sensor; "" before the driver is connected. Always
    /// succeeds.
    virtual XCode getDescription(String& description) = 0;

    /// Reads the current temperature in degrees Celsius. The first 16 bytes of the device hold it
    /// as a number of thousandths of a degree. If the device file can be opened but not read, or
    /// holds no number, the driver uses 0. Fails and sets `temperature` to 0 if the driver is not
    /// valid or the device file can't be opened.
    virtual XCode getTemperature(float& temperature) = 0;

    /// The highest allowed temperature, in whatever unit the kernel driver uses; 0 before the
    /// driver is connected. Always succeeds.
    virtual XCode getMaxTemperature(unsigned int& maximum) = 0;
};
