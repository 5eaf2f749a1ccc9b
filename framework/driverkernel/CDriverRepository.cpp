#include "CDriverRepository.h"

#include <atomic>

#include "DRIVER.h"
#include "String.h"
#include "TYLockHolder.h"

IDriverRepository::~IDriverRepository() = default;

namespace {

XCode notFound(const String& name) {
    return XCode(XCode::FAILURE, String::format("DRIVER '%s' NOT FOUND", name.c_str()));
}

} // namespace

XCode CDriverRepository::registerDriver(IDriver* driver) {
    if (!driver)
        return XCode(XCode::FAILURE, "NO DRIVER TO REGISTER");
    const TYLockHolder hold(&m_lock);
    const String& name = driver->getDriverName();
    const auto [place, isNew] = m_places.emplace(name, m_drivers.end());
    if (!isNew)
        return XCode(XCode::FAILURE,
                     String::format("DRIVER '%s' ALREADY REGISTERED", name.c_str()));
    try {
        place->second = m_drivers.emplace(m_drivers.end(), driver);
    } catch (...) {
        m_places.erase(place);
        throw;
    }
    driver->setDriverRepository(this);
    return XCode();
}

XCode CDriverRepository::unregisterDriver(const String& name) {
    TYPtr<IDriver> removed; // outlives the lock below, so the driver is released after the lock
    {
        const TYLockHolder hold(&m_lock);
        const auto found = m_places.find(name);
        if (found == m_places.end())
            return notFound(name);
        removed = std::move(*found->second);
        m_drivers.erase(found->second);
        m_places.erase(found);
        // Done under the lock, because another thread may register the driver again as soon as the
        // lock is free.
        removed->setDriverRepository(nullptr);
    }
    return XCode();
}

XCode CDriverRepository::queryDriver(const String& name, const VELM_UUID& iid, void** object) {
    TYPtr<IDriver> driver;
    {
        const TYLockHolder hold(&m_lock);
        const auto found = m_places.find(name);
        if (found != m_places.end())
            driver = *found->second;
    }
    if (driver)
        return driver->queryInterface(iid, object);
    if (object)
        *object = nullptr;
    return notFound(name);
}

void CDriverRepository::getDriverNames(VELM_List<String>& names) {
    const TYLockHolder hold(&m_lock);
    for (const TYPtr<IDriver>& driver : m_drivers)
        names.append(driver->getDriverName());
}

TYLock* CDriverRepository::getLock() {
    return &m_lock;
}

namespace DRIVER {

namespace {

std::atomic<IDriverRepository*> replacement{nullptr};

} // namespace

IDriverRepository* INSTANCE() {
    // Never destroyed: a driver that outlives main may still use it.
    static CDriverRepository* const own = new CDriverRepository;
    IDriverRepository* const other = replacement.load(std::memory_order_acquire);
    return other ? other : own;
}

IDriverRepository* SET_INSTANCE(IDriverRepository* repository) {
    return replacement.exchange(repository, std::memory_order_acq_rel);
}

} // namespace DRIVER
