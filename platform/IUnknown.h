#pragma once

#include "VELM_UUID.h"
#include "XCode.h"

class TYLock;

/// The operations of every framework object. The order of the virtual operations is part of the
/// binary interface.
class IUnknown {
public:
    static const VELM_UUID& IID();

    /// Asks for the interface `iid`. On success, `*object` is that interface with one reference for
    /// the caller. If the interface is unknown, `*object` is null and the call fails. If `object`
    /// is null, the call only checks whether the interface exists.
    virtual XCode queryInterface(const VELM_UUID& iid, void** object) = 0;

    /// Takes one reference and returns the new count. Any thread.
    virtual unsigned addRef() = 0;

    /// Releases one reference and returns the new count. Releasing the last one destroys the
    /// object. Any thread.
    virtual unsigned release() = 0;

    /// The lock for callers on several threads; null if the object has none.
    virtual TYLock* getLock();

    virtual ~IUnknown();
};
