#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "CKernelDriver.h"
#include "DRIVER.h"
#include "IDriverRepository.h"

namespace {

class Driver : public CKernelDriver {
public:
    explicit Driver(const char* name, std::function<void()> atEnd = {})
        : CKernelDriver(nullptr, name, "end"), m_atEnd(std::move(atEnd)) {}
    ~Driver() override {
        if (m_atEnd)
            m_atEnd();
    }
    const VELM_UUID& getDID() const override { return IDriver::IID(); }

private:
    const std::function<void()> m_atEnd;
};

IDriverRepository& repository() {
    return *DRIVER::INSTANCE();
}

VELM_UUID unknown() {
    return VELM_UUID(VELM_UUID::parse("00000000-0000-4000-8000-000000000001"), "unknown");
}

std::vector<String> names() {
    VELM_List<String> list;
    repository().getDriverNames(list);
    return std::vector<String>(list.begin(), list.end());
}

} // namespace

TEST(DriverRepository, KeepsADriverFromRegistrationToItsLastReference) {
    bool gone = false;
    auto* const driver = new Driver("kept", [&] { gone = true; });
    ASSERT_TRUE(repository().registerDriver(driver).isSuccess());
    EXPECT_EQ(driver->getDriverRepository(), &repository());
    EXPECT_EQ(driver->release(), 1U) << "the repository has one of its own";

    TYPPtr<IInfo> info;
    EXPECT_TRUE(repository().getInterface("kept", info).isSuccess());
    EXPECT_EQ(info.get(), static_cast<IInfo*>(driver));
    EXPECT_TRUE(repository().unregisterDriver("kept").isSuccess());
    EXPECT_EQ(driver->getDriverRepository(), nullptr);
    EXPECT_FALSE(gone);
    info = TYPPtr<IInfo>();
    EXPECT_TRUE(gone);
}

TEST(DriverRepository, GivesTheLastReferenceBackWithItsLockFree) {
    std::vector<String> left = {"never asked"};
    auto* const driver =
        new Driver("short-lived", [&] { std::thread([&] { left = names(); }).join(); });
    ASSERT_TRUE(repository().registerDriver(driver).isSuccess());
    EXPECT_EQ(driver->release(), 1U);
    EXPECT_TRUE(repository().unregisterDriver("short-lived").isSuccess());
    EXPECT_TRUE(left.empty());
}

TEST(DriverRepository, SaysWhichDriverIsNotFoundOrTaken) {
    Driver driver("one");
    Driver same("one");
    ASSERT_TRUE(repository().registerDriver(&driver).isSuccess());
    EXPECT_EQ(repository().registerDriver(&same).getMessage(),
              String("DRIVER 'one' ALREADY REGISTERED"));
    EXPECT_FALSE(repository().registerDriver(nullptr).isSuccess());
    void* object = &driver;
    EXPECT_EQ(repository().queryDriver("two", IDriver::IID(), &object).getMessage(),
              String("DRIVER 'two' NOT FOUND"));
    EXPECT_EQ(object, nullptr);
    object = &driver;
    EXPECT_EQ(repository().queryDriver("one", unknown(), &object).getCode(), -1);
    EXPECT_EQ(object, nullptr);
    EXPECT_TRUE(repository().unregisterDriver("one").isSuccess());
    EXPECT_EQ(repository().unregisterDriver("one").getMessage(), String("DRIVER 'one' NOT FOUND"));
    EXPECT_EQ(driver.addRef(), 2U);
}

TEST(DriverRepository, ListsNamesInOrderOfRegistrationAndCanBeReplaced) {
    Driver second("b"), first("a");
    ASSERT_TRUE(repository().registerDriver(&second).isSuccess());
    ASSERT_TRUE(repository().registerDriver(&first).isSuccess());
    EXPECT_EQ(names(), (std::vector<String>{"b", "a"}));
    IDriverRepository* const own = DRIVER::INSTANCE();
    IDriverRepository* const other =
        reinterpret_cast<IDriverRepository*>(&first); // only its address is used
    EXPECT_EQ(DRIVER::SET_INSTANCE(other), nullptr);
    EXPECT_EQ(DRIVER::INSTANCE(), other);
    EXPECT_EQ(DRIVER::SET_INSTANCE(nullptr), other);
    EXPECT_EQ(DRIVER::INSTANCE(), own);
    EXPECT_TRUE(repository().unregisterDriver("b").isSuccess());
    EXPECT_TRUE(repository().unregisterDriver("a").isSuccess());
}

TEST(DriverRepository, IsAskedSafelyWhileDriversComeAndGo) {
    std::atomic<bool> done{false};
    std::vector<std::thread> clients;
    for (int i = 0; i < 3; ++i)
        clients.emplace_back([&] {
            while (!done) {
                TYPPtr<IInfo> info;
                const bool found = repository().getInterface("busy", info).isSuccess();
                EXPECT_EQ(found, static_cast<bool>(info));
            }
        });
    for (int round = 0; round < 500; ++round) {
        auto* const driver = new Driver("busy");
        EXPECT_TRUE(repository().registerDriver(driver).isSuccess());
        driver->release();
        EXPECT_TRUE(repository().unregisterDriver("busy").isSuccess());
    }
    done = true;
    for (std::thread& client : clients)
        client.join();
    EXPECT_TRUE(names().empty());
}
