#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "CKernelDriver.h"
#include "DID.h"
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

TEST(Driver, AnswersTheFrameworksInterfacesByEveryWay) {
    Driver driver("faces");
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
        EXPECT_FALSE(way->queryInterface(unknown(), &none).isSuccess());
        EXPECT_EQ(none, nullptr);
        EXPECT_FALSE(way->queryInterface(unknown(), nullptr).isSuccess());
        EXPECT_EQ(way->addRef(), 2U);
        EXPECT_EQ(way->release(), 1U);
        EXPECT_EQ(way->getLock(), driver.getLock());
    }
}

TEST(Driver, IdentifiersOfTheFrameworkKeepTheirBytes) {
    const std::pair<const VELM_UUID&, const char*> rows[] = {
        {IUnknown::IID(), "IUnknown 675f89818eca0e4b99aef16efb44bee2"},
        {IInfo::IID(), "IInfo 62e7d809177dfd48a9fe0043e775db78"},
        {IDriver::IID(), "IDriver 6a3b6dfba6d07a498900eb5b43fd30af"},
        {DID_BoardDescr(), "DID_BoardDescr 3e1d75873363954395870648e7e60baf"},
        {DID_Resource(), "DID_Resource f7707b4d69fe834cb2eb803a567bac43"}};
    for (const auto& [identifier, expected] : rows) {
        String shown = String::format("%s ", identifier.getName());
        for (const unsigned byte : identifier.getValue().bytes)
            shown.concatf("%02x", byte);
        EXPECT_EQ(shown, String(expected));
    }
}

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
    auto* const driver = new Driver("short-lived", [&] { std::thread([&] { left = names(); }).join(); });
    ASSERT_TRUE(repository().registerDriver(driver).isSuccess());
    EXPECT_EQ(driver->release(), 1U);
    EXPECT_TRUE(repository().unregisterDriver("short-lived").isSuccess());
    EXPECT_TRUE(left.empty());
}

TEST(DriverRepository, SaysWhichDriverIsNotFoundOrTaken) {
    Driver driver("one");
    Driver same("one");
    ASSERT_TRUE(repository().registerDriver(&driver).isSuccess());
    EXPECT_EQ(repository().registerDriver(&same).getMessage(), String("DRIVER 'one' ALREADY REGISTERED"));
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
        reinterpret_cast<IDriverRepository*>(&first); // only its address is looked at
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
