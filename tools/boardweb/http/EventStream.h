#pragma once

#include <string>

#include "feed/EventFeed.h"
#include "http/Exchanges.h"
#include "http/Responses.h"

namespace boardweb {

/// The response to a client that wants to follow the events; null if too many clients do. A client
/// that reads nothing for a minute is disconnected.
Response eventStream(EventFeed& feed, const std::string& lastId, Exchange& exchange);

} // namespace boardweb
