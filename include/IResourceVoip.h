#pragma once

#include "BOARD_API.h"
#include "IUnknown.h"

/// How much VoIP work the board can carry.
///
/// No operation takes a lock. The figures change only when the host determines them. If it may do
/// so again while several threads share the driver, host and clients hold `getLock()` around their
/// calls.
class BOARD_API IResourceVoip : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// DSP channels; 4294967295 (0xFFFFFFFF) if the board does not state them, 0 before the host
    /// has determined them.
    virtual unsigned getDspChannelCount() const = 0;

    /// Call legs that the board may hold at once; 0 before the host has determined the figures.
    virtual unsigned getSipLegCount() const = 0;
};
