#include "base/Events.h"

#include <gtest/gtest.h>
#include <poll.h>

TEST(EventQueue, KeepsTheFirstEventsAndCountsThoseThatWereLost) {
    board::EventQueue queue;
    for (int i = 0; i < 4099; ++i)
        queue.push(board::event::ButtonPressed{});
    pollfd input{queue.descriptor(), POLLIN, 0};
    EXPECT_EQ(::poll(&input, 1, 0), 1);
    const board::EventQueue::Batch batch = queue.take();
    EXPECT_EQ(batch.entries.size(), 4096U);
    EXPECT_EQ(batch.lost, 3U);
    EXPECT_EQ(::poll(&input, 1, 0), 0);
    EXPECT_EQ(queue.take().lost, 0U);
}
