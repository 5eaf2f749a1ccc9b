#include "http/Responses.h"

#include <algorithm>
#include <new>

#include "http/Pages.h"

namespace boardweb {

namespace {

constexpr struct {
    const char *name, *value;
} HEADERS[] = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
};

constexpr char TEXT_TYPE[] = "text/plain; charset=utf-8";

constexpr struct {
    unsigned status;
    std::string_view text;
} REFUSALS[] = {
    {MHD_HTTP_BAD_REQUEST,
     "Bad Request: expected one Host header, and at most one Content-Length\n"},
    {MHD_HTTP_FORBIDDEN, "Forbidden: requests from other sites are refused\n"},
    {MHD_HTTP_NOT_FOUND, "Not Found\n"},
    {MHD_HTTP_METHOD_NOT_ALLOWED, "Method Not Allowed: expected GET or HEAD\n"},
    {MHD_HTTP_CONTENT_TOO_LARGE, "Content Too Large: expected a request without a body\n"},
    {MHD_HTTP_MISDIRECTED_REQUEST, "Misdirected Request: unknown host name (see --allow-host)\n"},
};

void add(MHD_Response& response, const char* name, const char* value) {
    if (MHD_add_response_header(&response, name, value) != MHD_YES)
        throw std::bad_alloc();
}

/// `content` must exist until the program ends.
Response fixed(const char* type, std::string_view content, const char* caching = "no-store") {
    Response response(MHD_create_response_from_buffer(
        content.size(), const_cast<char*>(content.data()), MHD_RESPMEM_PERSISTENT));
    if (!response)
        throw std::bad_alloc();
    addHeaders(*response, type, caching);
    return response;
}

Response pageResponse(const PageFile& file, std::string_view content) {
    Response response = fixed(file.type, content, "no-cache");
    add(*response, MHD_HTTP_HEADER_ETAG, file.tag);
    return response;
}

} // namespace

void addHeaders(MHD_Response& response, const char* type, const char* caching) {
    for (const auto& [name, value] : HEADERS)
        add(response, name, value);
    add(response, MHD_HTTP_HEADER_CONTENT_TYPE, type);
    add(response, MHD_HTTP_HEADER_CACHE_CONTROL, caching);
}

Response responseOf(const char* type, std::shared_ptr<const std::string> text) {
    using Text = std::shared_ptr<const std::string>;
    auto held = std::make_unique<Text>(std::move(text));
    Response response(MHD_create_response_from_buffer_with_free_callback_cls(
        (*held)->size(), const_cast<char*>((*held)->data()),
        [](void* each) { delete static_cast<Text*>(each); }, held.get()));
    if (!response)
        throw std::bad_alloc();
    static_cast<void>(held.release());
    addHeaders(*response, type);
    return response;
}

FixedResponses::FixedResponses()
    : m_tooManyStreams(fixed(JSON_TYPE, R"({"error":"too many clients follow the events"})")) {
    for (const auto& [status, text] : REFUSALS)
        m_refusals[status] = fixed(TEXT_TYPE, text);
    add(refusal(MHD_HTTP_METHOD_NOT_ALLOWED), MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
    for (std::size_t i = 0; i < PAGE_FILES_COUNT; ++i) {
        const PageFile& file = PAGE_FILES[i];
        m_pages.push_back(
            {file.path, file.tag, pageResponse(file, file.content), pageResponse(file, "")});
    }
}

const FixedResponses::Page* FixedResponses::page(std::string_view path) const {
    const auto found = std::find_if(m_pages.begin(), m_pages.end(),
                                    [&](const Page& page) { return page.path == path; });
    return found == m_pages.end() ? nullptr : &*found;
}

} // namespace boardweb
