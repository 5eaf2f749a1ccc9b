#pragma once

#include "TYPPtr.h"
#include "VELM_List.h"
#include "XCode.h"

class IDriver;
class String;
class TYLock;
class VELM_UUID;

/// Where drivers are kept by name and clients ask for them. Every operation may be called on any
/// thread.
class IDriverRepository {
public:
    virtual ~IDriverRepository();

    /// Keeps `driver` under its own name, with one reference of the repository's, and makes this
    /// its repository. Fails when the name is taken ("DRIVER '%s' ALREADY REGISTERED") or `driver`
    /// is null.
    virtual XCode registerDriver(IDriver* driver) = 0;

    /// Forgets the driver and gives the reference back. Fails with "DRIVER '%s' NOT FOUND".
    virtual XCode unregisterDriver(const String& name) = 0;

    /// Asks the driver called `name` for the face `iid`. On success `*object` carries one reference
    /// for the caller. Unknown name: null, "DRIVER '%s' NOT FOUND"; unknown face: null, the
    /// driver's own failure.
    virtual XCode queryDriver(const String& name, const VELM_UUID& iid, void** object) = 0;

    /// Appends the names of all drivers, in the order in which they were registered.
    virtual void getDriverNames(VELM_List<String>& names) = 0;

    /// The repository's own lock, for callers that need several calls to be one. Never null.
    virtual TYLock* getLock() = 0;

    /// `queryDriver` with a counted reference. `face` is empty on failure.
    template <class Interface>
    XCode getInterface(const String& name, TYPPtr<Interface>& face) {
        void* object = nullptr;
        XCode status = queryDriver(name, Interface::IID(), &object);
        face = TYPPtr<Interface>::adopt(status.isSuccess() ? static_cast<Interface*>(object)
                                                           : nullptr);
        return status;
    }
};
