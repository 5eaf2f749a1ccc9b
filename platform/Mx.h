#pragma once

#include <functional>
#include <memory>

#include "MxMsg.h"
#include "String.h"

/// A client's end of the kernel message channel, and the place where a host publishes the other
/// ends.
///
/// An endpoint is a named handler. Handlers of one endpoint run one at a time, on the thread that
/// sends. Every operation may be called on any thread; one channel object is used by one thread at
/// a time.
class Mx {
public:
    /// Answers one request by setting a value in `reply`. A reply left without a value means that
    /// the endpoint does not answer this code; a failure is passed on to the sender.
    using Handler = std::function<XCode(const MxMsg& request, MxMsg& reply)>;

    /// Makes `handler` answer under `endpoint`. Fails with "ENDPOINT '%s' ALREADY PUBLISHED" or,
    /// where it is empty, "ENDPOINT '%s' HAS NO HANDLER".
    static XCode publish(const String& endpoint, Handler handler);

    /// Takes the endpoint away; when it returns, its handler runs on no other thread and never
    /// again. Fails with "ENDPOINT '%s' NOT FOUND".
    static XCode withdraw(const String& endpoint);

    Mx();
    ~Mx();
    Mx(const Mx&) = delete;
    Mx& operator=(const Mx&) = delete;

    /// Binds to a published endpoint. Fails with "ENDPOINT '%s' NOT FOUND".
    XCode connect(const String& endpoint);
    void disconnect();
    bool isConnected() const;

    /// Sends `request` and waits for the answer. Fails with a text, and `reply` as it was, when the
    /// channel is not connected, the endpoint was withdrawn, or it does not answer the code.
    XCode sendReceive(const MxMsg& request, MxMsg& reply);

private:
    struct Endpoint;
    struct Registry;
    static Registry& registry();

    std::shared_ptr<Endpoint> m_endpoint;
};
