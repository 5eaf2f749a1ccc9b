#pragma once

#include "BOARD_API.h"
#include "IInfo.h"
#include "String.h"

/// One LED: state 0 is off, 1 and 2 are two lit states. Two overlays can take the LED over for a
/// while and then restore the state that was last requested; meanwhile `setLedStatus` only
/// remembers its argument.
///
/// The bi-status overlay forces state 2. In toggle mode the client drives the LED with
/// `setLedToggleStatus`. Both use state 2 only if the kernel driver reports that the LED has it
/// (the LED is "bi-status capable").
///
/// The device holds a state as 4 characters: a state of more digits is cut to its first 4, and only
/// the first 4 bytes are read.
///
/// Operations fail with code -1 and no text if the driver is not valid, if the device file can't be
/// opened, or as described below. Success does not mean that the device accepted a state: read it
/// back to find out.
///
/// No operation takes a lock. Hold `getLock()` around calls on a driver that several threads share,
/// and around `open` while clients use the driver: it replaces the path and the capability.
class BOARD_API ILedControl : public IInfo {
public:
    static const VELM_UUID& IID();

    /// Whether the driver has ever been connected and its device file could be opened.
    virtual bool isValid() = 0;

    /// The kernel driver's description of the LED; "" before the driver is connected. Always
    /// succeeds.
    virtual XCode getDescription(String& description) = 0;

    /// Reads the state of the LED; `status` is 0 on failure. A device that can be opened but holds
    /// no number or can't be read counts as 0. For an LED on a bus, a write returns before the
    /// chip has the new state, so a read may return the old state for some milliseconds.
    virtual XCode getLedStatus(unsigned int& status) const = 0;

    /// Sets the state. While an overlay is on, it remembers the state instead and succeeds.
    ///
    /// A kernel LED clamps a state above its maximum. With a maximum of 1, states 1 and 2 are
    /// therefore the same; with a maximum of 255, the LED is nearly dark in either state.
    virtual XCode setLedStatus(unsigned int status) = 0;

    /// Switches the bi-status overlay on (any value except 0) or off. On: remembers the current
    /// state of the LED and writes 2, so a second call remembers that 2. Off: writes the remembered
    /// state. In toggle mode it only records the request.
    ///
    /// On an LED that is not capable it fails and changes nothing. If the device can't be written
    /// it also fails, but the switch has taken effect: after a failed `setLedBiStatus(1)` the
    /// overlay is on, and `setLedStatus` only remembers until `setLedBiStatus(0)`.
    virtual XCode setLedBiStatus(unsigned int on) = 0;

    /// Writes `status` in toggle mode. On a capable LED, successive calls with 1 write 1 and 2 in
    /// turn, beginning with 1 after construction. Fails outside toggle mode.
    virtual XCode setLedToggleStatus(unsigned int status) = 0;

    /// Turns toggle mode on and remembers the current state of the LED. If the LED shows 2, the
    /// bi-status overlay counts as on instead. This also happens to an LED that is not capable, and
    /// nothing can turn the overlay of such an LED off again. Fails if toggle mode is already on.
    /// If the LED can't be read, the call fails too, but toggle mode is on.
    virtual XCode enableLedToggle() = 0;

    /// Writes 2 if the bi-status overlay was switched on with exactly 1, otherwise the remembered
    /// state, and turns toggle mode off. Fails outside toggle mode; if the write fails, toggle mode
    /// stays on.
    virtual XCode disableLedToggle() = 0;
};
