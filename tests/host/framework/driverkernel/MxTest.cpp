#include "Mx.h"

#include <atomic>
#include <future>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "CKernelDriver.h"
#include "InfoContainer.h"
#include "support/Threads.h"

namespace {

/// Publishes an endpoint for as long as it lives.
class Published {
public:
    explicit Published(Mx::Handler handler) {
        EXPECT_TRUE(Mx::publish("end", std::move(handler)).isSuccess());
    }
    ~Published() { static_cast<void>(Mx::withdraw("end")); }
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;
};

/// Answers codes 1 to 4 with the four types, 5 with a failure, no other.
XCode answerByType(const MxMsg& request, MxMsg& reply) {
    switch (request.getCode()) {
    case 1:
        reply.set("text");
        break;
    case 2:
        reply.set(true);
        break;
    case 3:
        reply.set(-3);
        break;
    case 4:
        reply.set(4U);
        break;
    case 5:
        return XCode(-5, "NO KERNEL");
    default:
        break;
    }
    return XCode();
}

class Driver : public CKernelDriver {
public:
    Driver() : CKernelDriver(nullptr, "driver", "end") {}
    const VELM_UUID& getDID() const override { return IDriver::IID(); }
    XCode onConnected(String&) override {
        ++connected;
        return verdict;
    }
    void onDisconnected() override { ++disconnected; }
    using CKernelDriver::sendReceiveMessage;

    int connected = 0;
    int disconnected = 0;
    XCode verdict;
};

} // namespace

TEST(Mx, EndpointsAreFoundByNameAndPublishedOnce) {
    Mx channel;
    EXPECT_EQ(channel.connect("end").getMessage(), String("ENDPOINT 'end' NOT FOUND"));
    EXPECT_EQ(Mx::withdraw("end").getMessage(), String("ENDPOINT 'end' NOT FOUND"));
    const Published end(answerByType);
    EXPECT_EQ(Mx::publish("end", answerByType).getMessage(), String("ENDPOINT 'end' ALREADY PUBLISHED"));
    EXPECT_TRUE(channel.connect("end").isSuccess());
}

TEST(KernelDriver, ReadsEachTypeAndFailsWithATextLeavingTheReplyAlone) {
    Driver driver;
    String text("kept"), error;
    bool flag = false;
    int number = 1;
    unsigned figure = 1;
    EXPECT_EQ(driver.sendReceiveMessage(1, text).getMessage(), String("CHANNEL NOT CONNECTED"));
    {
        const Published end(answerByType);
        ASSERT_TRUE(driver.open(error).isSuccess());
        EXPECT_EQ(driver.sendReceiveMessage(2, text).getMessage(),
                  String("MESSAGE 2 CARRIES BOOL, EXPECTED TEXT"));
        EXPECT_EQ(driver.sendReceiveMessage(4, number).getMessage(),
                  String("MESSAGE 4 CARRIES UNSIGNED, EXPECTED INT"));
        EXPECT_EQ(driver.sendReceiveMessage(6, figure).getMessage(),
                  String("ENDPOINT 'end' DOES NOT ANSWER CODE 6"));
        const XCode own = driver.sendReceiveMessage(5, figure);
        EXPECT_EQ(own.getCode(), -5);
        EXPECT_EQ(own.getMessage(), String("NO KERNEL"));
        EXPECT_EQ(text, String("kept"));
        EXPECT_EQ(number, 1);
        EXPECT_EQ(figure, 1U);

        EXPECT_TRUE(driver.sendReceiveMessage(1, text).isSuccess());
        EXPECT_TRUE(driver.sendReceiveMessage(2, flag).isSuccess());
        EXPECT_TRUE(driver.sendReceiveMessage(3, number).isSuccess());
        EXPECT_TRUE(driver.sendReceiveMessage(4, figure).isSuccess());
        EXPECT_EQ(text, String("text"));
        EXPECT_TRUE(flag);
        EXPECT_EQ(number, -3);
        EXPECT_EQ(figure, 4U);
    }
    EXPECT_EQ(driver.sendReceiveMessage(1, text).getMessage(), String("ENDPOINT 'end' WITHDRAWN"));
}

TEST(KernelDriver, OpensAndClosesWithItsHandshake) {
    Driver driver;
    String error;
    EXPECT_FALSE(driver.open(error).isSuccess());
    EXPECT_EQ(error, String("ENDPOINT 'end' NOT FOUND"));
    const Published end(answerByType);
    driver.verdict = XCode(-7, "REFUSED");
    EXPECT_EQ(driver.open(error).getCode(), -7);
    EXPECT_EQ(error, String("REFUSED"));
    driver.close();
    EXPECT_EQ(driver.disconnected, 0) << "it was never open";
    driver.verdict = XCode();
    EXPECT_TRUE(driver.open(error).isSuccess());
    EXPECT_TRUE(driver.open(error).isSuccess()) << "opens anew";
    EXPECT_EQ(driver.connected, 3);
    EXPECT_EQ(driver.disconnected, 1);
    driver.close();
    driver.close();
    EXPECT_EQ(driver.disconnected, 2);
}

TEST(Mx, WithdrawingWaitsForTheHandlerThatRuns) {
    std::promise<void> entered, mayLeave;
    std::atomic<bool> left{false};
    std::atomic<int> withdrawing{0};
    ASSERT_TRUE(Mx::publish("slow", [&](const MxMsg&, MxMsg& reply) {
                    entered.set_value();
                    mayLeave.get_future().wait();
                    left = true;
                    reply.set(1);
                    return XCode();
                }).isSuccess());
    Mx channel;
    ASSERT_TRUE(channel.connect("slow").isSuccess());
    MxMsg reply;
    std::thread sender([&] { EXPECT_TRUE(channel.sendReceive(MxMsg(1), reply).isSuccess()); });
    entered.get_future().wait();
    auto leftBeforeWithdrawal = std::async(std::launch::async, [&] {
        withdrawing = ::gettid();
        EXPECT_TRUE(Mx::withdraw("slow").isSuccess());
        return left.load();
    });
    support::waitUntilAsleep(withdrawing);
    mayLeave.set_value();
    EXPECT_TRUE(leftBeforeWithdrawal.get());
    sender.join();
}

TEST(Mx, AHandlerMayWithdrawItsOwnEndpoint) {
    ASSERT_TRUE(Mx::publish("once", [](const MxMsg&, MxMsg& reply) {
                    reply.set(Mx::withdraw("once").isSuccess());
                    return XCode();
                }).isSuccess());
    Mx channel;
    ASSERT_TRUE(channel.connect("once").isSuccess());
    MxMsg reply;
    bool withdrew = false;
    EXPECT_TRUE(channel.sendReceive(MxMsg(1), reply).isSuccess());
    EXPECT_TRUE(reply.get(withdrew).isSuccess());
    EXPECT_TRUE(withdrew);
    EXPECT_FALSE(channel.sendReceive(MxMsg(1), reply).isSuccess());
}

TEST(KernelDriver, WritesItsHeaderRowWithinTheLimits) {
    const struct {
        unsigned maxLevel, level, maxIndex, index;
        std::size_t rows;
    } CASES[] = {{0, 0, 0, 0, 1}, {0, 1, 0, 0, 0}, {5, 1, 0, 1, 0}, {~0U, ~0U, ~0U, ~0U, 1}};
    const Driver driver;
    for (const auto& each : CASES) {
        InfoContainer container;
        const auto& rows =
            driver.getInfo(container, each.maxLevel, each.level, each.maxIndex, each.index, "> ").getRows();
        ASSERT_EQ(rows.size(), each.rows);
        EXPECT_TRUE(rows.empty() || rows[0].key == String("> driver"));
    }
}
