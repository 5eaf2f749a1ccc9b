#pragma once

#include "BOARD_API.h"
#include "IUnknown.h"

class String;

/// A temperature sensor of the board. Operations fail with code -1 and no text. No operation takes
/// a lock; each reaches the device by itself.
class BOARD_API IThermalSensor : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// Whether the driver has ever been connected and its device file could be opened.
    virtual bool isValid() = 0;

    /// What the kernel driver calls the sensor; "" before the driver is connected. Always succeeds.
    virtual XCode getDescription(String& description) = 0;

    /// The temperature now, in degrees Celsius, read from the device in thousandths. `temperature`
    /// is 0 on failure: not valid, or the device file can't be opened. A device that holds no
    /// number, or that can be opened but not read, counts as 0.
    virtual XCode getTemperature(float& temperature) = 0;

    /// The highest temperature as the kernel driver states it, in the unit that it uses; 0 before
    /// the driver is connected. Always succeeds.
    virtual XCode getMaxTemperature(unsigned int& maximum) = 0;
};
