#include "CDriverRepository.h"

#include <algorithm>
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

std::vector<TYPtr<IDriver>>::iterator CDriverRepository::find(const String& name) {
    return std::find_if(m_drivers.begin(), m_drivers.end(), [&](const TYPtr<IDriver>& driver) {
        return driver->getDriverName() == name;
    });
}

XCode CDriverRepository::registerDriver(IDriver* driver) {
    if (!driver)
        return XCode(XCode::FAILURE, "NO DRIVER TO REGISTER");
    const TYLockHolder hold(&m_lock);
    const String& name = driver->getDriverName();
    if (find(name) != m_drivers.end())
        return XCode(XCode::FAILURE,
                     String::format("DRIVER '%s' ALREADY REGISTERED", name.c_str()));
    m_drivers.emplace_back(driver);
    driver->setDriverRepository(this);
    return XCode();
}

XCode CDriverRepository::unregisterDriver(const String& name) {
    TYPtr<IDriver> removed; // outlives the lock below, so the driver is released without it
    {
        const TYLockHolder hold(&m_lock);
        const auto found = find(name);
        if (found == m_drivers.end())
            return notFound(name);
        removed = std::move(*found);
        m_drivers.erase(found);
        // Still under the lock, because another thread may register the driver again right
        // afterwards.
        removed->setDriverRepository(nullptr);
    }
    return XCode();
}

XCode CDriverRepository::queryDriver(const String& name, const VELM_UUID& iid, void** object) {
    TYPtr<IDriver> driver;
    {
        const TYLockHolder hold(&m_lock);
        const auto found = find(name);
        if (found != m_drivers.end())
            driver = *found;
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
