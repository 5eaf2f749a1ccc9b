#pragma once

#include "BOARD_API.h"
#include "ILedControl.h"
#include "TKernelDriver.h"

extern template class TKernelDriver<ILedControl>;

/// The LED driver: writes and reads one number of up to 4 characters.
class BOARD_API CLedControl : public TKernelDriver<ILedControl> {
public:
    static const VELM_UUID& DID();
    static const VELM_UUID& CID();

    /// `driverName` is the name in the repository, `endpointName` the kernel driver's name on the
    /// message channel; both are copied. Does not contact the kernel driver.
    CLedControl(IDriverRepository* repository, const String& driverName,
                const String& endpointName);

    const VELM_UUID& getDID() const override;
    XCode onConnected(String& error) override;

    /// Adds a header row with the driver's name and, one level deeper, the rows "Description" and
    /// "Status". The status is "on" or "off"; an LED that can't be read shows "off".
    InfoContainer& getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                           unsigned maxIndex, unsigned index, const String& prefix) const override;

    XCode getLedStatus(unsigned int& status) const override;
    XCode setLedStatus(unsigned int status) override;
    XCode setLedBiStatus(unsigned int on) override;
    XCode setLedToggleStatus(unsigned int status) override;
    XCode enableLedToggle() override;
    XCode disableLedToggle() override;

    /// Writes `status` to the device file, even while an overlay (see ILedControl) is on. Success
    /// does not mean that the device accepted the state.
    XCode realSetLedStatus(unsigned int status);

private:
    bool m_biCapable = false;
    unsigned m_savedStatus = 0;
    unsigned m_biStatus = 0;
    bool m_togglePhase = false;
    bool m_toggleEnabled = false;
};
