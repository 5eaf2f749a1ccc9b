#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

#include "ServiceButton.h"

namespace {

/// The index of `operation` in its class's table of virtual functions, from the pointer to member.
template <class Operation>
std::ptrdiff_t slotOf(Operation operation) {
    std::ptrdiff_t offset;
    static_assert(sizeof operation == 2 * sizeof offset);
    std::memcpy(&offset, &operation, sizeof offset);
    return offset / static_cast<std::ptrdiff_t>(sizeof(void*));
}

} // namespace

// abi/layout.txt lists the slots of the other classes. It can't list those of an observer, whose
// table is in the host and not in the library.
TEST(Slots, OfAnObserverKeepTheirOrder) {
    EXPECT_EQ(slotOf(&ServiceButton::Observer::onButtonPressed), 0);
    EXPECT_EQ(slotOf(&ServiceButton::Observer::onButtonReleased), 1);
}
