#pragma once

#include "BOARD_API.h"
#include "IUnknown.h"

class String;

/// The board's power supply. Operations fail with code -1 and no text. No operation takes a lock;
/// each reaches the device by itself.
class BOARD_API IPowerStatus : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// Whether the driver has ever been connected and its device file could be opened.
    virtual bool isValid() = 0;

    /// What the kernel driver calls the supply; "" before the driver is connected. Always succeeds.
    virtual XCode getDescription(String& description) = 0;

    /// The status word, whose meaning is the kernel driver's: the number in the first four bytes of
    /// the device file. `status` is 0 on failure: not valid, or the device file can't be opened. A
    /// device that holds no number counts as 0; a negative number is read as unsigned.
    virtual XCode getPowerStatus(unsigned int& status) = 0;
};
