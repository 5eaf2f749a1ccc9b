#pragma once

#include "BOARD_API.h"
#include "VELM_UUID.h"
#include "XCode.h"

class TYLock;

/// What all drivers share: query, reference count and lock, for a driver that adds `Interfaces` to
/// the framework's base `Base`. A driver class derives from this and holds only its own operations.
///
/// Every interface inherits IUnknown separately, so each of its operations must be overridden once
/// for all of them. The order of the bases is part of the binary interface.
template <class Base, class... Interfaces>
class BOARD_API TDriver : public Base, public Interfaces... {
public:
    using Base::Base;

    /// Lets `Base` answer first and returns its success unchanged. Otherwise tries `Interfaces` in
    /// the order given. If none matches, it stores null and returns the plain failure; the failure
    /// of `Base` is dropped.
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
    /// The base's, shared by all interfaces.
    unsigned addRef() override { return Base::addRef(); }
    unsigned release() override { return Base::release(); }
    TYLock* getLock() override { return Base::getLock(); }
    ///@}

private:
    /// Returns this object as `Interface` if `iid` identifies that interface.
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
