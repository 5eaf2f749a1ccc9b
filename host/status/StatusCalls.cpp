#include "status/StatusCalls.h"

#include <algorithm>
#include <iterator>

#include "status/Descriptions.h"

using nlohmann::ordered_json;

namespace board {

namespace {

constexpr char HOST[] = "org.boarddrivers.Host";
constexpr char SERVICE[] = "org.varlink.service";

varlink::Reply failure(const char* interface, const char* name, const ordered_json& parameters) {
    return {parameters, false, std::string(interface) + "." + name};
}

varlink::Reply success(const ordered_json& parameters) {
    return {parameters, false, ""};
}

varlink::Reply invalidParameter(const std::string& name) {
    return failure(SERVICE, "InvalidParameter", {{"parameter", name}});
}

varlink::Reply info() {
    return success({{"vendor", "boarddrivers"},
                    {"product", "boardctl"},
                    {"version", STATUS_VERSION},
                    {"url", ""},
                    {"interfaces", {SERVICE, HOST}}});
}

varlink::Reply description(const ordered_json& parameters) {
    const std::string& interface = parameters.at("interface").get_ref<const std::string&>();
    if (interface == HOST)
        return success({{"description", HOST_DESCRIPTION}});
    if (interface == SERVICE)
        return success({{"description", SERVICE_DESCRIPTION}});
    return failure(SERVICE, "InterfaceNotFound", {{"interface", interface}});
}

} // namespace

struct StatusCalls::Method {
    const char* interface;
    const char* name;
    const char* parameter; ///< a string; null if the method has no parameter
    bool isRequired;       ///< the parameter must be present
    bool needsMore;
    varlink::Reply (*reply)(const StatusCalls& calls, const ordered_json& parameters);
};

const StatusCalls::Method StatusCalls::METHODS[] = {
    {SERVICE, "GetInfo", nullptr, false, false,
     [](const StatusCalls&, const ordered_json&) { return info(); }},
    {SERVICE, "GetInterfaceDescription", "interface", true, false,
     [](const StatusCalls&, const ordered_json& parameters) { return description(parameters); }},
    {HOST, "Status", nullptr, false, false,
     [](const StatusCalls& calls, const ordered_json&) {
         return success(calls.m_answers.status());
     }},
    {HOST, "Leds", "name", false, false,
     [](const StatusCalls& calls, const ordered_json& parameters) {
         return calls.leds(parameters);
     }},
    {HOST, "Metrics", nullptr, false, false,
     [](const StatusCalls& calls, const ordered_json&) {
         return success({{"text", calls.m_answers.metrics()}});
     }},
    {HOST, "Descriptor", nullptr, false, false,
     [](const StatusCalls& calls, const ordered_json&) {
         return success(calls.m_answers.descriptor());
     }},
    {HOST, "MonitorLeds", nullptr, false, true,
     [](const StatusCalls& calls, const ordered_json&) { return litReply(calls.m_answers.lit()); }},
    {HOST, "Monitor", nullptr, false, true,
     [](const StatusCalls&, const ordered_json&) { return eventReply(nullptr, 0); }},
};

varlink::Reply StatusCalls::leds(const ordered_json& parameters) const {
    const ordered_json all = m_answers.leds();
    const auto wanted = parameters.find("name");
    if (wanted == parameters.end() || wanted->is_null())
        return success({{"leds", all}});
    ordered_json found = ordered_json::array(), known = ordered_json::array();
    for (const ordered_json& led : all) {
        known.push_back(led.at("name"));
        if (led.at("name").get_ref<const std::string&>() == wanted->get_ref<const std::string&>())
            found.push_back(led);
    }
    if (found.empty())
        return failure(HOST, "NoSuchLed", {{"name", *wanted}, {"known", known}});
    return success({{"leds", found}});
}

varlink::Reply StatusCalls::reply(const varlink::Request& request) const {
    const auto dot = request.method.rfind('.');
    if (dot == std::string::npos)
        return invalidParameter("method");
    const std::string interface = request.method.substr(0, dot);
    if (interface != SERVICE && interface != HOST)
        return failure(SERVICE, "InterfaceNotFound", {{"interface", interface}});
    const Method* const method =
        std::find_if(std::begin(METHODS), std::end(METHODS), [&](const Method& each) {
            return interface == each.interface && request.method.substr(dot + 1) == each.name;
        });
    if (method == std::end(METHODS))
        return failure(SERVICE, "MethodNotFound", {{"method", request.method}});
    if (request.upgrade) // no method switches to another protocol
        return failure(SERVICE, "MethodNotImplemented", {{"method", request.method}});
    if (method->isRequired && !request.parameters.contains(method->parameter))
        return invalidParameter(method->parameter);
    for (const auto& [name, value] : request.parameters.items()) {
        const bool isAbsent = !method->isRequired && value.is_null();
        if (!method->parameter || name != method->parameter || !(value.is_string() || isAbsent))
            return invalidParameter(name);
    }
    if (method->needsMore && !request.more)
        return failure(SERVICE, "ExpectedMore", ordered_json::object());
    try {
        return method->reply(*this, request.parameters);
    } catch (const std::exception& error) {
        return failure(HOST, "Failed", {{"text", error.what()}});
    }
}

varlink::Reply eventReply(const ordered_json& event, unsigned lost) {
    return {{{"event", event}, {"lost", lost}}, true, ""};
}

varlink::Reply litReply(std::uint32_t lit) {
    return {{{"lit", lit}}, true, ""};
}

varlink::Reply tooManyClients(std::size_t maximum) {
    return failure(HOST, "TooManyClients", {{"maximum", maximum}});
}

} // namespace board
