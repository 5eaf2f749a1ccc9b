#pragma once

#include <string>

#include "feed/EventFeed.h"
#include "http/Exchanges.h"
#include "http/Responses.h"

namespace boardweb {

/// The answer to a client that follows the events. Null if too many do. The client is dropped if it
/// takes nothing for a minute.
Response eventStream(EventFeed& feed, const std::string& lastId, Exchange& exchange);

} // namespace boardweb
