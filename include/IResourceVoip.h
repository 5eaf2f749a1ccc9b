#pragma once

#include "BOARD_API.h"
#include "IUnknown.h"

/// How much VoIP work the board can carry.
///
/// No operation takes a lock. The figures change only when the host determines them. If the host
/// may determine them again while clients on other threads use the driver, the host and the clients
/// must hold the driver's lock (`getLock()`) during their calls.
class BOARD_API IResourceVoip : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// The number of DSP channels: 0xFFFFFFFF if the board does not state it, 0 before the host has
    /// determined the figures.
    virtual unsigned getDspChannelCount() const = 0;

    /// The number of call legs that the board may hold at once; 0 before the host has determined
    /// the figures.
    virtual unsigned getSipLegCount() const = 0;
};
