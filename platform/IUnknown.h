#pragma once

#include "VELM_UUID.h"
#include "XCode.h"

class TYLock;

/// What every framework object offers. The order of the virtual operations is part of the binary
/// face.
class IUnknown {
public:
    static const VELM_UUID& IID();

    /// Asks for the face named by `iid`. Success: `*object` is that face with one reference for the
    /// caller. Unknown: null and a failure. `object` may be null; then it only answers whether the
    /// face exists.
    virtual XCode queryInterface(const VELM_UUID& iid, void** object) = 0;

    /// Takes one reference; returns how many there are then. Any thread.
    virtual unsigned addRef() = 0;

    /// Gives one reference back and returns how many are left; the last one destroys the object.
    /// Any thread.
    virtual unsigned release() = 0;

    /// The lock by which callers on several threads take turns; null where the object has none.
    virtual TYLock* getLock();

    virtual ~IUnknown();
};
