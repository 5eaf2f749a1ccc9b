#pragma once

#include "BOARD_API.h"
#include "IInfo.h"

/// One LED: 0 is off, 1 and 2 are two lit states. Two overlays take the LED over for a while and
/// then give back the state last asked for; meanwhile `setLedStatus` only remembers.
///
/// The bi-status overlay forces state 2; the toggle lets the client drive the LED with
/// `setLedToggleStatus`. Both overlays use state 2 only where the kernel driver says that the LED
/// has it (it is "bi-status capable").
///
/// Operations fail with code -1 and no text: not valid, device file not to be opened, or as said
/// below. No operation takes a lock; callers that combine overlays on several threads hold the one
/// from `getLock()`.
class BOARD_API ILedControl : public IInfo {
public:
    static const VELM_UUID& IID();

    /// Whether the driver has ever been connected and its device file could be opened.
    virtual bool isValid() = 0;

    /// What the kernel driver calls the LED; "" before the driver is connected. Always succeeds.
    virtual XCode getDescription(String& description) = 0;

    /// The state that the device shows; `status` is 0 on failure. A device that holds no number, or
    /// that can be opened but not read, counts as 0. The kernel writes a LED that is behind a bus
    /// after it has taken the state, so that the former one may be read for some milliseconds.
    virtual XCode getLedStatus(unsigned int& status) const = 0;

    /// Sets the state, or remembers it while an overlay is on (and then succeeds). Of a state above
    /// its maximum, a LED of the kernel shows the maximum: one with a maximum of 1 has no second
    /// lit state, and one of 255 is next to dark in both.
    virtual XCode setLedStatus(unsigned int status) = 0;

    /// Switches the bi-status overlay on (any value but 0) or off. On: remembers what the LED shows
    /// and writes 2; a second call remembers that 2. Off: writes the remembered state. In toggle
    /// mode the wish is only recorded. Fails, without a change, on a LED without a second lit
    /// state.
    virtual XCode setLedBiStatus(unsigned int on) = 0;

    /// Writes `status` in toggle mode; 1 alternates with 2 from call to call on a capable LED,
    /// beginning with 1 after construction. Fails outside toggle mode.
    virtual XCode setLedToggleStatus(unsigned int status) = 0;

    /// Begins toggle mode and remembers what the LED shows; a LED that shows 2 counts from then on
    /// as under the bi-status overlay, also one without that capability, where nothing takes the
    /// overlay off again. Fails when toggle mode is on. Where the LED can't be read it fails too,
    /// but toggle mode is on.
    virtual XCode enableLedToggle() = 0;

    /// Gives back 2 where the bi-status overlay is on with exactly 1, else the remembered state,
    /// and ends toggle mode. Fails outside toggle mode; where the write fails toggle mode stays on.
    virtual XCode disableLedToggle() = 0;
};
