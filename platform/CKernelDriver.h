#pragma once

#include "CDriver.h"
#include "IInfo.h"
#include "Mx.h"

/// The framework's base class of kernel-backed drivers. Implements the message channel to the
/// kernel driver and the header row of the information dump.
///
/// Only the host calls `open` and `close`. Once the driver is open, any thread may call the other
/// operations.
class CKernelDriver : public CDriver, public IInfo {
public:
    /// `driverName` is the name that `getDriverName` returns; `endpointName` is the kernel driver's
    /// name on the message channel. Does not contact the kernel driver. `repository` may be null
    /// and is not owned.
    CKernelDriver(IDriverRepository* repository, const String& driverName,
                  const String& endpointName);
    ~CKernelDriver() override;

    /// The identifier of the kind of driver; each kind has its own.
    const VELM_UUID& getDID() const override = 0;

    /// Supports IInfo and the interfaces of CDriver.
    XCode queryInterface(const VELM_UUID& iid, void** object) override;
    unsigned addRef() override;
    unsigned release() override;
    TYLock* getLock() override;

    /// Adds only the header row; its title is the driver's name.
    InfoContainer& getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                           unsigned maxIndex, unsigned index, const String& prefix) const override;

    /// Connects the channel and calls `onConnected`. On failure, closes the channel again and
    /// returns the failing status; if that status has a message, also stores the message in
    /// `error`. An open driver is closed first, so calling `open` again reconnects it to a kernel
    /// driver that disappeared and came back.
    virtual XCode open(String& error);

    /// Closes the channel, then calls `onDisconnected`. Does nothing if the driver is closed.
    virtual void close();

    /// Called by `open` once the channel is connected. Its result decides whether `open` succeeds.
    virtual XCode onConnected(String& error);
    /// Called by `close` after the channel is closed.
    virtual void onDisconnected();

protected:
    ///@{
    /// Send `code` without a value, wait for the answer and store it in `reply`. They fail with a
    /// message and leave `reply` unchanged if the driver is not open, if the endpoint is gone, or
    /// if the endpoint does not answer the code with a value of this type.
    XCode sendReceiveMessage(unsigned code, String& reply);
    XCode sendReceiveMessage(unsigned code, bool& reply);
    XCode sendReceiveMessage(unsigned code, int& reply);
    XCode sendReceiveMessage(unsigned code, unsigned& reply);
    ///@}

private:
    template <class Reply>
    XCode requestValue(unsigned code, Reply& reply);

    String m_endpointName;
    Mx m_channel;
};
