#include "Mx.h"

#include <map>
#include <mutex>
#include <utility>

#include "TYThread.h"

struct Mx::Endpoint {
    Endpoint(const String& n, Handler h) : name(n), handler(std::move(h)) {}

    const String name;
    // The mutex is recursive, so that a handler may withdraw its own endpoint.
    std::recursive_mutex mutex;
    bool published = true;
    const Handler handler;
};

struct Mx::Registry {
    std::mutex mutex;
    std::map<String, std::shared_ptr<Endpoint>> endpoints;
};

Mx::Registry& Mx::registry() {
    // Never destroyed: drivers that outlive main may still use their channels.
    static Registry* const registry = new Registry;
    return *registry;
}

XCode Mx::publish(const String& endpoint, Handler handler) {
    if (!handler)
        return XCode(XCode::FAILURE,
                     String::format("ENDPOINT '%s' HAS NO HANDLER", endpoint.c_str()));
    auto published = std::make_shared<Endpoint>(endpoint, std::move(handler));
    const std::lock_guard<std::mutex> hold(registry().mutex);
    if (!registry().endpoints.emplace(endpoint, std::move(published)).second)
        return XCode(XCode::FAILURE,
                     String::format("ENDPOINT '%s' ALREADY PUBLISHED", endpoint.c_str()));
    return XCode();
}

XCode Mx::withdraw(const String& endpoint) {
    std::shared_ptr<Endpoint> withdrawn;
    {
        const std::lock_guard<std::mutex> hold(registry().mutex);
        const auto found = registry().endpoints.find(endpoint);
        if (found == registry().endpoints.end())
            return XCode(XCode::FAILURE,
                         String::format("ENDPOINT '%s' NOT FOUND", endpoint.c_str()));
        withdrawn = std::move(found->second);
        registry().endpoints.erase(found);
    }
    const std::lock_guard<std::recursive_mutex> hold(withdrawn->mutex);
    withdrawn->published = false;
    return XCode();
}

Mx::Mx() = default;
Mx::~Mx() = default;

XCode Mx::connect(const String& endpoint) {
    const std::lock_guard<std::mutex> hold(registry().mutex);
    const auto found = registry().endpoints.find(endpoint);
    if (found == registry().endpoints.end())
        return XCode(XCode::FAILURE, String::format("ENDPOINT '%s' NOT FOUND", endpoint.c_str()));
    m_endpoint = found->second;
    return XCode();
}

void Mx::disconnect() {
    m_endpoint.reset();
}

bool Mx::isConnected() const {
    return m_endpoint != nullptr;
}

XCode Mx::sendReceive(const MxMsg& request, MxMsg& reply) {
    const std::shared_ptr<Endpoint> endpoint = m_endpoint;
    if (!endpoint)
        return XCode(XCode::FAILURE, "CHANNEL NOT CONNECTED");
    const std::lock_guard<std::recursive_mutex> hold(endpoint->mutex);
    if (!endpoint->published)
        return XCode(XCode::FAILURE,
                     String::format("ENDPOINT '%s' WITHDRAWN", endpoint->name.c_str()));

    MxMsg answer(request.getCode());
    XCode status;
    {
        const TYThread::Undisturbed undisturbed; // the thread must not be stopped in host code
        status = endpoint->handler(request, answer);
    }
    if (!status.isSuccess())
        return status;
    if (!answer.hasValue())
        return XCode(XCode::FAILURE, String::format("ENDPOINT '%s' DOES NOT ANSWER CODE %u",
                                                    endpoint->name.c_str(), request.getCode()));
    reply = std::move(answer);
    return XCode();
}
