#pragma once

#include "CDriver.h"
#include "IInfo.h"
#include "Mx.h"

/// The framework's base of drivers that stand before a kernel driver: a message channel to it, and
/// the information dump's header row.
///
/// `open` and `close` are the host's; the other operations may be called on any thread once it is
/// open.
class CKernelDriver : public CDriver, public IInfo {
public:
    /// `driverName` is what `getDriverName` returns, `endpointName` the kernel driver's name on the
    /// message channel. No contact is made. `repository` may be null and is not counted.
    CKernelDriver(IDriverRepository* repository, const String& driverName,
                  const String& endpointName);
    ~CKernelDriver() override;

    /// Each kind of driver has its own identity.
    const VELM_UUID& getDID() const override = 0;

    /// Answers IInfo besides what CDriver answers.
    XCode queryInterface(const VELM_UUID& iid, void** object) override;
    unsigned addRef() override;
    unsigned release() override;
    TYLock* getLock() override;

    /// The header row alone, titled with the driver's name.
    InfoContainer& getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                           unsigned maxIndex, unsigned index, const String& prefix) const override;

    /// Connects the channel and calls `onConnected`. On failure the channel is closed again, the
    /// failing status is returned and its message, where it has one, is put into `error`. An open
    /// driver is closed first, so that a driver can be opened anew after its kernel driver came
    /// back.
    virtual XCode open(String& error);

    /// Closes the channel, then calls `onDisconnected`. Closed already: does nothing.
    virtual void close();

    /// Called by `open` with the channel connected; what it returns decides.
    virtual XCode onConnected(String& error);
    /// Called by `close` with the channel closed.
    virtual void onDisconnected();

protected:
    ///@{
    /// Sends `code` without a value and waits for the reply, which is put into `reply`. Fails, with
    /// a message and `reply` as it was, when the driver is not open, the endpoint is gone, it does
    /// not answer the code, or it answers with a value of another type.
    XCode sendReceiveMessage(unsigned code, String& reply);
    XCode sendReceiveMessage(unsigned code, bool& reply);
    XCode sendReceiveMessage(unsigned code, int& reply);
    XCode sendReceiveMessage(unsigned code, unsigned& reply);
    ///@}

private:
    template <class Reply>
    XCode ask(unsigned code, Reply& reply);

    String m_endpointName;
    Mx m_channel;
};
