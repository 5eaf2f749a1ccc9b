#pragma once

#include "BOARD_API.h"
#include "IPowerStatus.h"
#include "TKernelDriver.h"

extern template class TKernelDriver<IPowerStatus>;

/// The power supply driver: reads one number.
class BOARD_API CPowerStatus : public TKernelDriver<IPowerStatus> {
public:
    static const VELM_UUID& DID();
    static const VELM_UUID& CID();

    /// `driverName` is the name in the repository, `endpointName` the kernel driver's name on the
    /// message channel; both are copied. Does not contact the kernel driver.
    CPowerStatus(IDriverRepository* repository, const String& driverName,
                 const String& endpointName);

    const VELM_UUID& getDID() const override;
    XCode onConnected(String& error) override;
    XCode getPowerStatus(unsigned int& status) override;
};
