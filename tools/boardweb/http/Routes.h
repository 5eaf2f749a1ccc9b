#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "feed/EventFeed.h"
#include "feed/History.h"
#include "http/Exchanges.h"
#include "http/RequestHead.h"
#include "http/Responses.h"
#include "link/Questions.h"

namespace boardweb {

/// Where the answers come from. All must outlive the server.
struct Sources {
    EventFeed& feed;
    History& history;
    Questions& questions;
};

/// Answers requests. Runs on the server's thread.
class Routes {
public:
    /// `names` are names of this server in addition to 127.0.0.1, localhost and [::1].
    Routes(const Sources& sources, std::vector<std::string> names, Exchanges& exchanges)
        : m_sources(sources), m_names(std::move(names)), m_exchanges(exchanges) {}

    /// Refuses a request with a body as soon as its headers are complete. Does not read the body.
    MHD_Result refuse(const Exchange& exchange, const RequestHead& head) const;
    /// Answers a complete request, or pauses its connection. If it pauses the connection, the
    /// server calls this function again once the connection is resumed.
    MHD_Result answer(Exchange& exchange, const RequestHead& head) const;

private:
    MHD_Result answerFromHost(Exchange& exchange, Question question) const;
    MHD_Result answerWithPage(const Exchange& exchange, const FixedResponses::Page& page) const;
    MHD_Result answerWithEvents(Exchange& exchange) const;

    const Sources m_sources;
    const std::vector<std::string> m_names;
    const FixedResponses m_fixed;
    Exchanges& m_exchanges;
};

} // namespace boardweb
