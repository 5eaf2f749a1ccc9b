#pragma once

#include <atomic>

#include "IDriver.h"
#include "String.h"
#include "TYRecursiveLock.h"

/// The framework's base class of all drivers. Holds the identity, name, repository, reference count
/// and lock. A new object has one reference, which belongs to its creator. Cannot be copied or
/// moved.
class CDriver : public IDriver {
public:
    /// Both arguments are copied.
    CDriver(const VELM_UUID& did, const String& driverName);
    ~CDriver() override;
    CDriver(const CDriver&) = delete;
    CDriver& operator=(const CDriver&) = delete;

    /// Supports IUnknown and IDriver.
    XCode queryInterface(const VELM_UUID& iid, void** object) override;
    unsigned addRef() override;
    unsigned release() override;
    /// The driver's own recursive lock.
    TYLock* getLock() override;

    const VELM_UUID& getDID() const override;
    const String& getDriverName() const override;
    IDriverRepository* getDriverRepository() override;
    void setDriverRepository(IDriverRepository* repository) override;

private:
    std::atomic<unsigned> m_count{1};
    VELM_UUID m_did;
    String m_driverName;
    std::atomic<IDriverRepository*> m_repository{nullptr};
    TYRecursiveLock m_lock;
};
