#pragma once

namespace boardctl {

/// Whether `descriptor` is a terminal that can erase a line and draw it again.
bool canRedraw(int descriptor);

} // namespace boardctl
