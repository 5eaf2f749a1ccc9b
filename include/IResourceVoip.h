#pragma once

#include "BOARD_API.h"
#include "IUnknown.h"

/// How much VoIP work the board can carry.
class BOARD_API IResourceVoip : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// DSP channels; 4294967295 (0xFFFFFFFF) where the board does not say, 0 before the figures are
    /// settled.
    virtual unsigned getDspChannelCount() const = 0;

    /// Call legs that the board may hold at once; 0 before the figures are settled.
    virtual unsigned getSipLegCount() const = 0;
};
