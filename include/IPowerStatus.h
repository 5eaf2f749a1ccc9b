#pragma once

#include "BOARD_API.h"
#include "IUnknown.h"
#include "String.h"

/// The board's power supply. Every operation except `isValid` returns a status; a failure has code
/// -1 and no text.
///
/// No operation takes a lock. Hold `getLock()` around calls on a driver that several threads share,
/// and around `open` while clients use the driver, because `open` replaces the path.
class BOARD_API IPowerStatus : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// Whether the driver has ever connected and could then open its device file.
    virtual bool isValid() = 0;

    /// The kernel driver's description of the supply; "" before the driver is connected. Always
    /// succeeds.
    virtual XCode getDescription(String& description) = 0;

    /// Reads the status word: the number in the first 4 bytes of the device. The kernel driver
    /// defines what it means; a negative number is converted to unsigned. A device that can be
    /// opened but holds no number or can't be read counts as 0. Fails, with `status` 0, if the
    /// driver is not valid or the device file can't be opened.
    virtual XCode getPowerStatus(unsigned int& status) = 0;
};
