#include "CFanControl.h"

#include "TKernelDriverImpl.h"

template class TKernelDriver<IFanControl>;

VELM_DEFINE_UUID(CFanControl::DID(), "D929FF9E-CA63-4E4D-91E4-ABA61F54A9B2", "DID_FanControl")
VELM_DEFINE_UUID(CFanControl::CID(), "1807B51F-7188-443E-A8B1-B306E5C69A99", "CID_FanControl")
VELM_DEFINE_UUID(IFanControl::IID(), "4AE0E766-3CB0-4E28-BC31-D8DAC47E682F", "IFanControl")

namespace {

constexpr unsigned RECORD_WIDTH = 16;

} // namespace

CFanControl::CFanControl(IDriverRepository* repository, const String& driverName,
                         const String& endpointName)
    : TKernelDriver(repository, driverName, endpointName) {}

const VELM_UUID& CFanControl::getDID() const {
    return DID();
}

XCode CFanControl::onConnected(String&) {
    return handshake(MSG_GET_MAXIMUM, m_maxSpeed);
}

XCode CFanControl::getActualFanSpeed(FanSpeed& speed) {
    speed = FAN_SPEED_OFF;
    int number = 0;
    XCode status = readDevice(RECORD_WIDTH, number);
    if (!status.isSuccess())
        return status;
    // A negative number becomes a large one, which means full speed.
    const auto value = static_cast<unsigned>(number);
    const unsigned sixth = m_maxSpeed / 6;
    speed = value < sixth       ? FAN_SPEED_OFF
            : value < 3 * sixth ? FAN_SPEED_LOW
            : value < 5 * sixth ? FAN_SPEED_HIGH
                                : FAN_SPEED_FULL;
    return status;
}

XCode CFanControl::getFanSpeed(FanSpeed& speed) {
    speed = m_fanSpeed;
    return isValid() ? XCode() : XCode(XCode::FAILURE);
}

XCode CFanControl::setFanSpeed(FanSpeed speed) {
    m_fanSpeed = speed;
    unsigned value = m_maxSpeed;
    if (speed == FAN_SPEED_HIGH)
        value = m_maxSpeed / 3 * 2;
    else if (speed == FAN_SPEED_LOW)
        value = m_maxSpeed / 3;
    else if (speed == FAN_SPEED_OFF)
        value = 0;
    return writeDevice(RECORD_WIDTH, value);
}
