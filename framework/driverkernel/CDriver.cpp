#include "CDriver.h"

CDriver::CDriver(const VELM_UUID& did, const String& driverName)
    : m_did(did), m_driverName(driverName) {}

CDriver::~CDriver() = default;

XCode CDriver::queryInterface(const VELM_UUID& iid, void** object) {
    // A driver has several IUnknown bases. Always return the IUnknown base of IDriver, so that two
    // IUnknown pointers are equal exactly if they refer to the same driver.
    IDriver* const face = iid == IUnknown::IID() || iid == IDriver::IID() ? this : nullptr;
    if (object) {
        if (face)
            face->addRef();
        *object = iid == IUnknown::IID() ? static_cast<void*>(static_cast<IUnknown*>(face)) : face;
    }
    return face ? XCode() : XCode(XCode::FAILURE);
}

unsigned CDriver::addRef() {
    return m_count.fetch_add(1, std::memory_order_relaxed) + 1;
}

unsigned CDriver::release() {
    // Test the value that the atomic returned. Reading the count again could touch a deleted
    // object.
    const unsigned left = m_count.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0)
        delete this;
    return left;
}

TYLock* CDriver::getLock() {
    return &m_lock;
}

const VELM_UUID& CDriver::getDID() const {
    return m_did;
}

const String& CDriver::getDriverName() const {
    return m_driverName;
}

IDriverRepository* CDriver::getDriverRepository() {
    return m_repository.load(std::memory_order_acquire);
}

void CDriver::setDriverRepository(IDriverRepository* repository) {
    m_repository.store(repository, std::memory_order_release);
}
