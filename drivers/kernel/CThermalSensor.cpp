#include "CThermalSensor.h"

#include "TKernelDriverImpl.h"

template class TKernelDriver<IThermalSensor>;

VELM_DEFINE_UUID(CThermalSensor::DID(), "41D475E0-5A46-41A4-9C7C-74A34AE298E1", "DID_ThermalSensor")
VELM_DEFINE_UUID(CThermalSensor::CID(), "CC1684B9-8040-49E2-B175-84DC5BF62CD6", "CID_ThermalSensor")
VELM_DEFINE_UUID(IThermalSensor::IID(), "CCC6C8CA-E7E3-458A-9141-3AA10D538879", "IThermalSensor")

namespace {

constexpr unsigned RECORD_WIDTH = 16;

} // namespace

CThermalSensor::CThermalSensor(IDriverRepository* repository, const String& driverName,
                               const String& endpointName)
    : TKernelDriver(repository, driverName, endpointName) {}

const VELM_UUID& CThermalSensor::getDID() const {
    return DID();
}

XCode CThermalSensor::onConnected(String&) {
    return handshake(MSG_GET_MAXIMUM, m_maxTemperature);
}

XCode CThermalSensor::getTemperature(float& temperature) {
    temperature = 0.0F;
    int thousandths = 0;
    XCode status = readDevice(RECORD_WIDTH, thousandths);
    if (status.isSuccess()) {
        // Round to single precision first: clients compare the temperature with figures that were
        // rounded this way.
        const auto rounded = static_cast<float>(thousandths);
        temperature = static_cast<float>(static_cast<double>(rounded) * 0.001);
    }
    return status;
}

XCode CThermalSensor::getMaxTemperature(unsigned int& maximum) {
    maximum = m_maxTemperature;
    return XCode();
}
