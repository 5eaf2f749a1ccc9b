#pragma once

#include "VELM_UUID.h"
#include "XCode.h"

class TYLock;

/// The operations that every framework object has. The order of the virtual operations is part of
/// the binary interface.
class IUnknown {
public:
    static const VELM_UUID& IID();

    /// Asks for the interface `iid`. On success, `*object` is that interface with one reference for
    /// the caller. If the interface is unknown, `*object` is null and the call fails. If `object`
    /// is null, the call only checks whether the interface exists.
    virtual XCode queryInterface(const VELM_UUID& iid, void** object) = 0;

    /// Takes one reference and returns the new count. May be called on any thread.
    virtual unsigned addRef() = 0;

    /// Releases one reference and returns the new count. Releasing the last reference destroys the
    /// object. May be called on any thread.
    virtual unsigned release() = 0;

    /// The object's lock, for callers that share the object with other threads; null if the object
    /// has no lock.
    virtual TYLock* getLock();

    virtual ~IUnknown();
};
