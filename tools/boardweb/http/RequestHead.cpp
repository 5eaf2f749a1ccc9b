#include "http/RequestHead.h"

#include <algorithm>

#include <microhttpd.h>

namespace boardweb {

namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isSameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

} // namespace

void setTarget(RequestHead& request, std::string_view target) {
    constexpr std::string_view SCHEME = "http://";
    request.path = target;
    if (!isSameName(target.substr(0, SCHEME.size()), SCHEME))
        return;
    target.remove_prefix(SCHEME.size());
    const auto slash = target.find('/');
    request.host = target.substr(0, slash);
    request.path = slash == std::string_view::npos ? "/" : target.substr(slash);
}

bool isHostNamed(std::string_view host, const std::vector<std::string>& names) {
    constexpr char BLANKS[] = " \t";
    host.remove_prefix(std::min(host.find_first_not_of(BLANKS), host.size()));
    host = host.substr(0, host.find_last_not_of(BLANKS) + 1);
    const auto bracket = host.find(']');
    const auto colon = host.find(':', bracket == std::string_view::npos ? 0 : bracket);
    const std::string_view name = host.substr(0, colon);
    const std::string_view port =
        colon == std::string_view::npos ? std::string_view() : host.substr(colon + 1);
    if (port.find_first_not_of("0123456789") != std::string_view::npos)
        return false;
    for (const char* const own : {"127.0.0.1", "localhost", "[::1]"})
        if (isSameName(name, own))
            return true;
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& each) { return isSameName(name, each); });
}

unsigned refusalOf(const RequestHead& request, const std::vector<std::string>& names) {
    if (request.hosts != 1 || request.lengths > 1)
        return MHD_HTTP_BAD_REQUEST;
    if (!isHostNamed(request.host, names))
        return MHD_HTTP_MISDIRECTED_REQUEST;
    // Another site may link to the page, but must not fetch anything.
    if (request.fetchSite == "cross-site" &&
        !(request.fetchMode == "navigate" && request.path == "/"))
        return MHD_HTTP_FORBIDDEN;
    if (request.method != "GET" && request.method != "HEAD")
        return MHD_HTTP_METHOD_NOT_ALLOWED;
    return request.hasBody ? MHD_HTTP_CONTENT_TOO_LARGE : 0;
}

} // namespace boardweb
