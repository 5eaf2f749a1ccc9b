#pragma once

#include <list>
#include <map>

#include "IDriver.h"
#include "IDriverRepository.h"
#include "String.h"
#include "TYPtr.h"
#include "TYRecursiveLock.h"

/// The repository behind DRIVER::INSTANCE(). Keeps one counted reference to each driver, in the
/// order of registration. The repository does not hold its lock while it releases or queries a
/// driver, because a driver's destructor or query may take another lock and call the repository
/// again.
class CDriverRepository : public IDriverRepository {
public:
    XCode registerDriver(IDriver* driver) override;
    XCode unregisterDriver(const String& name) override;
    XCode queryDriver(const String& name, const VELM_UUID& iid, void** object) override;
    void getDriverNames(VELM_List<String>& names) override;
    TYLock* getLock() override;

private:
    using Drivers = std::list<TYPtr<IDriver>>;

    TYRecursiveLock m_lock;
    Drivers m_drivers;
    std::map<String, Drivers::iterator> m_places; ///< the entries of m_drivers by driver name
};
