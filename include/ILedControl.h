#pragma once

#include "BOARD_API.h"
#include "IInfo.h"
#include "String.h"

/// One LED. State 0 is off; 1 and 2 are two lit states. Two overlays can take over the LED for a
/// while: they remember its state when they begin and restore it when they end. Meanwhile,
/// `setLedStatus` only replaces the remembered state.
///
/// The first overlay, bi-status, forces state 2. In the second overlay, toggle mode, the client
/// drives the LED with `setLedToggleStatus`. Below, a "capable" LED is an LED for which the kernel
/// driver reports two lit states; only a capable LED can be forced to state 2 or alternate between
/// 1 and 2.
///
/// A state is written as 4 characters, and only the first 4 bytes of the device are read. A state
/// with more than 4 digits is cut to its first 4.
///
/// Operations fail with code -1 and no text if the driver is not valid, if the device file can't be
/// opened, or as described below. Success does not mean that the device accepted a state; read the
/// state back to check.
///
/// No operation takes a lock. If several threads share a driver, they must hold its lock
/// (`getLock()`) during their calls. If clients are using the driver, also hold the lock during
/// `open`, which replaces the path and the capability.
class BOARD_API ILedControl : public IInfo {
public:
    static const VELM_UUID& IID();

    /// True once the driver has connected and opened its device file. Stays true from then on, even
    /// if the file disappears.
    virtual bool isValid() = 0;

    /// The kernel driver's description of the LED; "" before the driver is connected. Always
    /// succeeds.
    virtual XCode getDescription(String& description) = 0;

    /// Reads the state of the LED; `status` is 0 on failure. If the device file can be opened but
    /// not read, or holds no number, the driver uses 0. If the LED's chip is on a bus, a write
    /// returns before the chip has the new state, so a read may return the old state for some
    /// milliseconds.
    virtual XCode getLedStatus(unsigned int& status) const = 0;

    /// Sets the state. While an overlay is on, only remembers the state and succeeds.
    ///
    /// A kernel LED clamps a state above its maximum. With a maximum of 1, states 1 and 2 are
    /// therefore the same; with a maximum of 255, the LED is nearly dark in either state.
    virtual XCode setLedStatus(unsigned int status) = 0;

    /// Switches the bi-status overlay on (any value except 0) or off (0). Switching it on remembers
    /// the current state of the LED and writes 2. If it is already on, switching it on again
    /// therefore remembers 2. Switching it off writes the remembered state. In toggle mode, the
    /// call only records the request.
    ///
    /// Fails and changes nothing if the LED is not capable. If the device file can't be opened, the
    /// call also fails, but the overlay is switched all the same: after a failed
    /// `setLedBiStatus(1)`, `setLedStatus` only remembers its argument until `setLedBiStatus(0)`.
    virtual XCode setLedBiStatus(unsigned int on) = 0;

    /// Writes `status` in toggle mode. On a capable LED, successive calls with 1 write 1 and 2 in
    /// turn, beginning with 1 after construction. Fails outside toggle mode.
    virtual XCode setLedToggleStatus(unsigned int status) = 0;

    /// Turns toggle mode on and remembers the current state of the LED. If that state is 2, the
    /// call does not remember it, but records the bi-status overlay as on. The call does so even if
    /// the LED is not capable; the overlay of such an LED can't be switched off again. Fails if
    /// toggle mode is already on. If the device file can't be opened, the call fails too, but
    /// toggle mode is on.
    virtual XCode enableLedToggle() = 0;

    /// Ends toggle mode. Writes 2 if the bi-status overlay is recorded as on with the value 1;
    /// otherwise writes the remembered state. Fails outside toggle mode. If the device file can't
    /// be opened, the call fails and toggle mode stays on.
    virtual XCode disableLedToggle() = 0;
};
