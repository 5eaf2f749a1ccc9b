#pragma once

#include "TYPPtr.h"
#include "VELM_List.h"
#include "XCode.h"

class IDriver;
class String;
class TYLock;
class VELM_UUID;

/// Holds drivers by name, so that clients can look them up. Any thread may call any operation.
class IDriverRepository {
public:
    virtual ~IDriverRepository();

    /// Stores `driver` under its name, takes one reference, and sets itself as the driver's
    /// repository. Fails if the name is taken ("DRIVER '%s' ALREADY REGISTERED") or `driver` is
    /// null.
    virtual XCode registerDriver(IDriver* driver) = 0;

    /// Removes the driver and releases the reference. Fails with "DRIVER '%s' NOT FOUND".
    virtual XCode unregisterDriver(const String& name) = 0;

    /// Asks the driver `name` for the interface `iid`. On success, `*object` is the interface with
    /// one reference for the caller. On failure, `*object` is null. An unknown name fails with
    /// "DRIVER '%s' NOT FOUND"; an unknown interface fails with the driver's own failure.
    virtual XCode queryDriver(const String& name, const VELM_UUID& iid, void** object) = 0;

    /// Appends the names of all drivers, in the order in which they were registered.
    virtual void getDriverNames(VELM_List<String>& names) = 0;

    /// The repository's own lock, for callers that need several calls to be atomic. Never null.
    virtual TYLock* getLock() = 0;

    /// Does the same as `queryDriver`, but stores the interface in a counted reference, which is
    /// empty on failure.
    template <class Interface>
    XCode getInterface(const String& name, TYPPtr<Interface>& face) {
        void* object = nullptr;
        XCode status = queryDriver(name, Interface::IID(), &object);
        face = TYPPtr<Interface>::adopt(status.isSuccess() ? static_cast<Interface*>(object)
                                                           : nullptr);
        return status;
    }
};
