#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

#include "ServiceButton.h"

namespace {

/// Where a class's table of virtual operations holds `operation`, read from the pointer to it.
template <class Operation>
std::ptrdiff_t slotOf(Operation operation) {
    std::ptrdiff_t offset;
    static_assert(sizeof operation == 2 * sizeof offset);
    std::memcpy(&offset, &operation, sizeof offset);
    return offset / static_cast<std::ptrdiff_t>(sizeof(void*));
}

} // namespace

// abi/layout.txt lists the slots of the other classes. An observer's table is in the host, so the
// library has no record of it.
TEST(Slots, OfAnObserverKeepTheirOrder) {
    EXPECT_EQ(slotOf(&ServiceButton::Observer::onButtonPressed), 0);
    EXPECT_EQ(slotOf(&ServiceButton::Observer::onButtonReleased), 1);
}
