#pragma once

#include "BOARD_API.h"
#include "IFanControl.h"
#include "TKernelDriver.h"

extern template class TKernelDriver<IFanControl>;

/// The fan driver: writes and reads one number between 0 and the kernel driver's maximum.
class BOARD_API CFanControl : public TKernelDriver<IFanControl> {
public:
    static const VELM_UUID& DID();
    static const VELM_UUID& CID();

    /// `driverName` is the name in the repository, `endpointName` the kernel driver's name on the
    /// message channel; both are copied. Does not contact the kernel driver.
    CFanControl(IDriverRepository* repository, const String& driverName,
                const String& endpointName);

    const VELM_UUID& getDID() const override;
    XCode onConnected(String& error) override;
    XCode getActualFanSpeed(FanSpeed& speed) override;
    XCode getFanSpeed(FanSpeed& speed) override;
    XCode setFanSpeed(FanSpeed speed) override;

private:
    unsigned m_maxSpeed = 0;
    FanSpeed m_fanSpeed = FAN_SPEED_OFF;
};
