#include "Mx.h"

#include <atomic>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/Threads.h"

TEST(Mx, EndpointsAreFoundByNameAndPublishedOnce) {
    Mx channel;
    EXPECT_EQ(channel.connect("end").getMessage(), String("ENDPOINT 'end' NOT FOUND"));
    EXPECT_EQ(Mx::withdraw("end").getMessage(), String("ENDPOINT 'end' NOT FOUND"));
    EXPECT_EQ(Mx::publish("end", nullptr).getMessage(), String("ENDPOINT 'end' HAS NO HANDLER"));
    const Mx::Handler handler = [](const MxMsg&, MxMsg& reply) {
        reply.set(1);
        return Mx::withdraw("end"); // a handler may withdraw its own endpoint
    };
    ASSERT_TRUE(Mx::publish("end", handler).isSuccess());
    EXPECT_EQ(Mx::publish("end", handler).getMessage(), String("ENDPOINT 'end' ALREADY PUBLISHED"));
    EXPECT_TRUE(channel.connect("end").isSuccess());
    MxMsg reply;
    EXPECT_TRUE(channel.sendReceive(MxMsg(1), reply).isSuccess());
    EXPECT_FALSE(channel.sendReceive(MxMsg(1), reply).isSuccess());
}

TEST(Mx, WithdrawingWaitsForTheHandlerThatRuns) {
    std::atomic<bool> left{false};
    std::atomic<int> withdrawing{0};
    std::thread other;
    ASSERT_TRUE(Mx::publish("slow", [&](const MxMsg&, MxMsg& reply) {
                    other = std::thread([&] {
                        withdrawing = ::gettid();
                        EXPECT_TRUE(Mx::withdraw("slow").isSuccess());
                        EXPECT_TRUE(left);
                    });
                    support::waitUntilAsleep(withdrawing);
                    left = true;
                    reply.set(1);
                    return XCode();
                }).isSuccess());
    Mx channel;
    MxMsg reply;
    EXPECT_TRUE(channel.connect("slow").isSuccess());
    EXPECT_TRUE(channel.sendReceive(MxMsg(1), reply).isSuccess());
    other.join();
}
