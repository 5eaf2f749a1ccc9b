#pragma once

#include <string>

#include "feed/EventFeed.h"
#include "http/Exchanges.h"
#include "http/Responses.h"

namespace boardweb {

/// The answer to a client that follows the events. Null if too many do. A client that reads nothing
/// for a minute is disconnected.
Response eventStream(EventFeed& feed, const std::string& lastId, Exchange& exchange);

} // namespace boardweb
