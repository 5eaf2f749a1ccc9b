#pragma once

#include "BOARD_API.h"
#include "IThermalSensor.h"
#include "TKernelDriver.h"

extern template class TKernelDriver<IThermalSensor>;

/// The thermal sensor driver: reads one number in thousandths of a degree.
class BOARD_API CThermalSensor : public TKernelDriver<IThermalSensor> {
public:
    static const VELM_UUID& DID();
    static const VELM_UUID& CID();

    /// `driverName` is the name in the repository, `endpointName` the kernel driver's name on the
    /// message channel; both are copied. Does not contact the kernel driver.
    CThermalSensor(IDriverRepository* repository, const String& driverName,
                   const String& endpointName);

    const VELM_UUID& getDID() const override;
    XCode onConnected(String& error) override;
    XCode getTemperature(float& temperature) override;
    XCode getMaxTemperature(unsigned int& maximum) override;

private:
    unsigned m_maxTemperature = 0;
};
