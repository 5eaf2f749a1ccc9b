#include "CKernelDriver.h"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "InfoContainer.h"

namespace {

/// Publishes an endpoint while it lives.
class Published {
public:
    explicit Published(Mx::Handler handler) {
        EXPECT_TRUE(Mx::publish("end", std::move(handler)).isSuccess());
    }
    ~Published() { static_cast<void>(Mx::withdraw("end")); }
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;
};

/// Answers codes 1 to 4 with the four types and 5 with a failure, and no other code.
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

TEST(KernelDriver, AnswersTheFrameworksInterfacesByEveryWay) {
    const VELM_UUID unknown(VELM_UUID::parse("00000000-0000-4000-8000-000000000001"), "unknown");
    Driver driver;
    for (IUnknown* const way : {static_cast<IUnknown*>(static_cast<IDriver*>(&driver)),
                                static_cast<IUnknown*>(static_cast<IInfo*>(&driver))}) {
        for (const auto& [iid, face] : std::vector<std::pair<VELM_UUID, void*>>{
                 {IUnknown::IID(), static_cast<IUnknown*>(static_cast<IDriver*>(&driver))},
                 {IDriver::IID(), static_cast<IDriver*>(&driver)},
                 {IInfo::IID(), static_cast<IInfo*>(&driver)}}) {
            void* found = nullptr;
            EXPECT_TRUE(way->queryInterface(iid, &found).isSuccess()) << iid.getName();
            EXPECT_EQ(found, face) << iid.getName();
            EXPECT_EQ(way->release(), 1U) << iid.getName();
            EXPECT_TRUE(way->queryInterface(iid, nullptr).isSuccess()) << iid.getName();
        }
        void* none = &driver;
        EXPECT_FALSE(way->queryInterface(unknown, &none).isSuccess());
        EXPECT_EQ(none, nullptr);
        EXPECT_FALSE(way->queryInterface(unknown, nullptr).isSuccess());
        EXPECT_EQ(way->addRef(), 2U);
        EXPECT_EQ(way->release(), 1U);
        EXPECT_EQ(way->getLock(), driver.getLock());
    }
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

TEST(KernelDriver, WritesItsHeaderRowWithinTheLimits) {
    const struct {
        unsigned maxLevel, level, maxIndex, index;
        std::size_t rows;
    } CASES[] = {{0, 0, 0, 0, 1}, {0, 1, 0, 0, 0}, {5, 1, 0, 1, 0}, {~0U, ~0U, ~0U, ~0U, 1}};
    const Driver driver;
    for (const auto& each : CASES) {
        InfoContainer container;
        const auto& rows =
            driver.getInfo(container, each.maxLevel, each.level, each.maxIndex, each.index, "> ")
                .getRows();
        ASSERT_EQ(rows.size(), each.rows);
        EXPECT_TRUE(rows.empty() || rows[0].key == String("> driver"));
    }
}
