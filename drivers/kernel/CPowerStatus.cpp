#include "CPowerStatus.h"

#include "TKernelDriverImpl.h"

template class TKernelDriver<IPowerStatus>;

VELM_DEFINE_UUID(CPowerStatus::DID(), "69FA45E2-7FE9-4B4D-AC53-E2785F48609A", "DID_PowerStatus")
VELM_DEFINE_UUID(CPowerStatus::CID(), "6774D356-556C-4DE2-B8B5-A46E775A1F24", "CID_PowerStatus")
VELM_DEFINE_UUID(IPowerStatus::IID(), "B82FD170-ED93-4447-9787-4CAE0DD2FB34", "IPowerStatus")

namespace {

constexpr unsigned RECORD_WIDTH = 4;

} // namespace

CPowerStatus::CPowerStatus(IDriverRepository* repository, const String& driverName,
                           const String& endpointName)
    : TKernelDriver(repository, driverName, endpointName) {}

const VELM_UUID& CPowerStatus::getDID() const {
    return DID();
}

XCode CPowerStatus::onConnected(String&) {
    return handshake();
}

XCode CPowerStatus::getPowerStatus(unsigned int& status) {
    status = 0;
    int number = 0;
    XCode result = readDevice(RECORD_WIDTH, number);
    status = static_cast<unsigned>(number);
    return result;
}
