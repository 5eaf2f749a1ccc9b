#pragma once

#include "BOARD_API.h"
#include "VELM_UUID.h"
#include "XCode.h"

class TYLock;

/// Implements what all drivers share: query, reference count and lock. `Base` is the framework's
/// base class of the driver, and `Interfaces` are the interfaces that the driver adds to it. A
/// driver class derives from TDriver and contains only its own operations.
///
/// Every interface inherits IUnknown separately. This class overrides the operations of IUnknown
/// once for all interfaces. The order of the bases is part of the binary interface.
template <class Base, class... Interfaces>
class BOARD_API TDriver : public Base, public Interfaces... {
public:
    using Base::Base;

    /// Asks `Base` first and returns its status if the query succeeds. Otherwise tries `Interfaces`
    /// in the order given. If none of them matches, stores null and returns a failure with code -1
    /// and no text, whatever `Base` returned.
    XCode queryInterface(const VELM_UUID& iid, void** object) override {
        XCode status = Base::queryInterface(iid, object);
        if (status.isSuccess())
            return status;
        if ((offer<Interfaces>(iid, object) || ...))
            return XCode();
        if (object)
            *object = nullptr;
        return XCode(XCode::FAILURE);
    }

    ///@{
    /// Call the same operation of `Base`, so that all interfaces share one count and one lock.
    unsigned addRef() override { return Base::addRef(); }
    unsigned release() override { return Base::release(); }
    TYLock* getLock() override { return Base::getLock(); }
    ///@}

private:
    /// Returns whether `iid` identifies `Interface`. If so, stores this object as that interface in
    /// `*object`, with a new reference, unless `object` is null.
    template <class Interface>
    bool offer(const VELM_UUID& iid, void** object) {
        if (iid != Interface::IID())
            return false;
        if (object) {
            Interface* const face = this;
            face->addRef();
            *object = face;
        }
        return true;
    }
};
