#pragma once

#include "BOARD_API.h"
#include "IUnknown.h"
#include "String.h"

/// The board's power supply. Every operation except `isValid` returns a status; a failure has code
/// -1 and no text.
///
/// No operation takes a lock. If several threads share a driver, they must hold its lock
/// (`getLock()`) during their calls. If clients are using the driver, also hold the lock during
/// `open`, which replaces the path.
class BOARD_API IPowerStatus : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// True once the driver has connected and opened its device file. Stays true from then on, even
    /// if the file disappears.
    virtual bool isValid() = 0;

    /// The kernel driver's description of the supply; "" before the driver is connected. Always
    /// succeeds.
    virtual XCode getDescription(String& description) = 0;

    /// Reads the status word: the number in the first 4 bytes of the device. The kernel driver
    /// defines its meaning; a negative number is converted to unsigned. If the device file can be
    /// opened but not read, or holds no number, the driver uses 0. Fails and sets `status` to 0 if
    /// the driver is not valid or the device file can't be opened.
    virtual XCode getPowerStatus(unsigned int& status) = 0;
};
