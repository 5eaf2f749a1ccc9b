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
    unsigned hosts = 0; ///< how many headers Host there are
    std::string_view fetchSite;
    std::string_view fetchMode;
    bool hasBody = false;
};

/// Whether a header Host names this server: 127.0.0.1, localhost, [::1] or one of `names`, with or
/// without a port. A web page of somebody else, whose name was made to lead to this machine, would
/// send its own name.
bool isHostNamed(std::string_view host, const std::vector<std::string>& names);

/// The HTTP status with which the request is refused; 0 if it is not.
unsigned refusalOf(const RequestHead& request, const std::vector<std::string>& names);

} // namespace boardweb
