#pragma once

#include "BOARD_API.h"
#include "IUnknown.h"
#include "String.h"

/// The board's fan, with four coarse speeds. Every operation except `isValid` returns a status; a
/// failure has code -1 and no text.
///
/// No operation takes a lock. If several threads share a driver, they must hold its lock
/// (`getLock()`) during their calls. If clients are using the driver, also hold the lock during
/// `open`, which replaces the path and the maximum.
class BOARD_API IFanControl : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// Each comment below states the number that is written for the speed, and the lowest number in
    /// the device that reads back as that speed. `maximum` is the maximum that the kernel driver
    /// reported. Divisions are integer divisions, done from left to right.
    ///
    /// A speed can read back as another speed: with a maximum of 11, HIGH writes 6, which reads
    /// back as FULL. With a maximum below 6, every number reads back as FULL.
    enum FanSpeed : int {
        FAN_SPEED_FULL = 0, ///< writes maximum; reads back from 5 * (maximum / 6)
        FAN_SPEED_HIGH = 1, ///< writes maximum / 3 * 2; reads back from 3 * (maximum / 6)
        FAN_SPEED_LOW = 2,  ///< writes maximum / 3; reads back from maximum / 6
        FAN_SPEED_OFF = 3,  ///< writes 0; reads back from 0
    };

    /// True once the driver has connected and opened its device file. Stays true from then on, even
    /// if the file disappears.
    virtual bool isValid() = 0;

    /// The kernel driver's description of the fan; "" before the driver is connected. Always
    /// succeeds.
    virtual XCode getDescription(String& description) = 0;

    /// Reads the current speed from the device: the number in its first 16 bytes. A negative number
    /// is compared as unsigned and therefore reads as FAN_SPEED_FULL. If the device file can be
    /// opened but not read, or holds no number, the driver uses 0. Fails and sets `speed` to
    /// FAN_SPEED_OFF if the driver is not valid or the device file can't be opened.
    virtual XCode getActualFanSpeed(FanSpeed& speed) = 0;

    /// Sets `speed` to the speed last requested, or to FAN_SPEED_OFF before the first request. If
    /// the driver is not valid, sets `speed` all the same, but fails.
    virtual XCode getFanSpeed(FanSpeed& speed) = 0;

    /// Sets the speed by writing a record of 16 bytes. A value outside the enumeration writes the
    /// maximum. Fails if the driver is not valid or the device file can't be opened; even then,
    /// `getFanSpeed` returns the requested speed.
    ///
    /// Success does not mean that the device accepted the value; call `getActualFanSpeed` to check.
    /// A kernel pwm file rejects every value until its enable file holds 1, and always rejects
    /// values above 255.
    virtual XCode setFanSpeed(FanSpeed speed) = 0;
};
