#include "CKernelDriver.h"

#include "InfoContainer.h"

// The concrete class overrides getDID, so the identifier passed to CDriver is never visible.
CKernelDriver::CKernelDriver(IDriverRepository* repository, const String& driverName,
                             const String& endpointName)
    : CDriver(VELM_UUID(VELM_UUID::Value{}, ""), driverName), m_endpointName(endpointName) {
    CDriver::setDriverRepository(repository);
}

CKernelDriver::~CKernelDriver() = default;

XCode CKernelDriver::queryInterface(const VELM_UUID& iid, void** object) {
    XCode status = CDriver::queryInterface(iid, object);
    if (status.isSuccess() || iid != IInfo::IID())
        return status;
    if (object) {
        addRef();
        *object = static_cast<IInfo*>(this);
    }
    return XCode();
}

unsigned CKernelDriver::addRef() {
    return CDriver::addRef();
}

unsigned CKernelDriver::release() {
    return CDriver::release();
}

TYLock* CKernelDriver::getLock() {
    return CDriver::getLock();
}

InfoContainer& CKernelDriver::getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                                      unsigned maxIndex, unsigned index,
                                      const String& prefix) const {
    if (level <= maxLevel && index <= maxIndex)
        container.add(level, index, String(prefix).concat(getDriverName()), String::EMPTY());
    return container;
}

XCode CKernelDriver::open(String& error) {
    close();
    XCode status = m_channel.connect(m_endpointName);
    if (status.isSuccess()) {
        status = onConnected(error);
        if (!status.isSuccess())
            m_channel.disconnect();
    }
    if (!status.isSuccess() && !status.getMessage().isEmpty())
        error = status.getMessage();
    return status;
}

void CKernelDriver::close() {
    if (!m_channel.isConnected())
        return;
    m_channel.disconnect();
    onDisconnected();
}

XCode CKernelDriver::onConnected(String&) {
    return XCode();
}

void CKernelDriver::onDisconnected() {}

template <class Reply>
XCode CKernelDriver::requestValue(unsigned code, Reply& reply) {
    MxMsg answer;
    XCode status = m_channel.sendReceive(MxMsg(code), answer);
    return status.isSuccess() ? answer.get(reply) : status;
}

XCode CKernelDriver::sendReceiveMessage(unsigned code, String& reply) {
    return requestValue(code, reply);
}

XCode CKernelDriver::sendReceiveMessage(unsigned code, bool& reply) {
    return requestValue(code, reply);
}

XCode CKernelDriver::sendReceiveMessage(unsigned code, int& reply) {
    return requestValue(code, reply);
}

XCode CKernelDriver::sendReceiveMessage(unsigned code, unsigned& reply) {
    return requestValue(code, reply);
}
