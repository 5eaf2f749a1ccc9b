#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <microhttpd.h>

#include "link/Questions.h"

namespace boardweb {

struct ResponseCloser {
    void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
/// Any number of connections may send the same response. It exists until all have finished.
using Response = std::unique_ptr<MHD_Response, ResponseCloser>;

constexpr char JSON_TYPE[] = "application/json";
constexpr char METRICS_TYPE[] = "text/plain; version=0.0.4; charset=utf-8";

/// Adds the headers that every response has.
void addHeaders(MHD_Response& response, const char* type, const char* caching = "no-store");

/// A response with this text, which it shares with other holders.
Response responseOf(const char* type, std::shared_ptr<const std::string> text);

/// The responses that are always the same. None contains anything from a request.
class FixedResponses {
public:
    FixedResponses();

    /// For a refused request. The status must be one that refusalOf() returns, or 404.
    MHD_Response& refusal(unsigned status) const { return *m_refusals.at(status); }
    MHD_Response& tooManyStreams() const { return *m_tooManyStreams; }

    struct Page {
        std::string_view path;
        const char* tag;
        Response whole, unchanged;
    };
    /// The page's file at `path`; null if there is none.
    const Page* page(std::string_view path) const;

private:
    std::map<unsigned, Response> m_refusals;
    Response m_tooManyStreams;
    std::vector<Page> m_pages;
};

} // namespace boardweb
