#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace boardweb {

/// The part of a request that decides whether it is answered. A header that is missing is empty.
struct RequestHead {
    std::string_view method;
    std::string_view path; ///< as it came, without the query
    std::string_view host;
    unsigned hosts = 0; ///< the number of Host headers
    std::string_view fetchSite;
    std::string_view fetchMode;
    bool hasBody = false;
    unsigned lengths = 0; ///< the number of Content-Length headers
};

/// Sets the path. A target may also be in absolute form, "http://HOST/PATH": then its host replaces
/// that of the Host header, as HTTP requires.
void setTarget(RequestHead& request, std::string_view target);

/// Whether a Host header names this server: 127.0.0.1, localhost, [::1] or one of `names`, with or
/// without a port. Spaces and tabs around it don't count. This defeats DNS rebinding: if the name
/// of a foreign page resolves to this machine, the browser sends the foreign name.
bool isHostNamed(std::string_view host, const std::vector<std::string>& names);

/// The HTTP status with which to refuse the request; 0 to accept it.
unsigned refusalOf(const RequestHead& request, const std::vector<std::string>& names);

} // namespace boardweb
