#pragma once

#include <functional>
#include <memory>

#include "MxMsg.h"
#include "String.h"

/// A client's end of the kernel message channel. `publish` creates the other end, an endpoint.
///
/// An endpoint is a handler with a name. Calls to an endpoint's handler run one at a time, each on
/// the thread that sends the request. Any thread may use this class, but only one thread at a time
/// may use the same object.
class Mx {
public:
    /// Answers one request by setting a value in `reply`. A reply without a value means that the
    /// endpoint does not know the code of the request. If the handler returns a failure, the sender
    /// receives it.
    using Handler = std::function<XCode(const MxMsg& request, MxMsg& reply)>;

    /// Makes `handler` answer the requests to `endpoint`. Fails with "ENDPOINT '%s' ALREADY
    /// PUBLISHED", or with "ENDPOINT '%s' HAS NO HANDLER" if `handler` is empty.
    static XCode publish(const String& endpoint, Handler handler);

    /// Removes the endpoint. When the call returns, no other thread is running the handler, and the
    /// handler is never called again. Fails with "ENDPOINT '%s' NOT FOUND".
    static XCode withdraw(const String& endpoint);

    Mx();
    ~Mx();
    Mx(const Mx&) = delete;
    Mx& operator=(const Mx&) = delete;

    /// Connects to a published endpoint. Fails with "ENDPOINT '%s' NOT FOUND".
    XCode connect(const String& endpoint);
    void disconnect();
    bool isConnected() const;

    /// Sends `request` and waits for the answer. Fails with a text, and leaves `reply` unchanged,
    /// if the channel is not connected, the endpoint was withdrawn, or the endpoint does not know
    /// the code. If the handler itself fails, returns its failure and leaves `reply` unchanged.
    XCode sendReceive(const MxMsg& request, MxMsg& reply);

private:
    struct Endpoint;
    struct Registry;
    static Registry& registry();

    std::shared_ptr<Endpoint> m_endpoint;
};
