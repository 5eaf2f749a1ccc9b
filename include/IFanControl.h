#pragma once

#include "BOARD_API.h"
#include "IUnknown.h"

class String;

/// The board's fan in four coarse speeds. Every operation but `isValid` fails with code -1 and no
/// text. No operation takes a lock; each reaches the device by itself.
class BOARD_API IFanControl : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// The share of the fan's maximum that is written, and from which share on a speed is reported.
    enum FanSpeed : int {
        FAN_SPEED_FULL = 0, ///< the maximum; from five sixths
        FAN_SPEED_HIGH = 1, ///< two thirds; from three sixths
        FAN_SPEED_LOW = 2,  ///< one third; from one sixth
        FAN_SPEED_OFF = 3,  ///< 0
    };

    /// Whether the driver has ever been connected and its device file could be opened.
    virtual bool isValid() = 0;

    /// What the kernel driver calls the fan; "" before the driver is connected. Always succeeds.
    virtual XCode getDescription(String& description) = 0;

    /// The speed in force, read from the device. `speed` is FAN_SPEED_OFF on failure: not valid, or
    /// the device file can't be opened. A device that holds no number, or that can be opened but
    /// not read, counts as 0.
    virtual XCode getActualFanSpeed(FanSpeed& speed) = 0;

    /// The speed last asked for, FAN_SPEED_OFF at first. `speed` is written always; fails when not
    /// valid.
    virtual XCode getFanSpeed(FanSpeed& speed) = 0;

    /// Sets the speed; a value that is none of the four writes the maximum. The request is
    /// remembered also when it fails: not valid, or the device file can't be opened. Whether the
    /// device took the value is not looked at; `getActualFanSpeed` tells. A pwm of the kernel
    /// refuses all values until its enable file holds 1, and values above 255.
    virtual XCode setFanSpeed(FanSpeed speed) = 0;
};
