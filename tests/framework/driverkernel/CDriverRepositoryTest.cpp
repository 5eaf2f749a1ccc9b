#include <functional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "CKernelDriver.h"
#include "DRIVER.h"
#include "IDriverRepository.h"
#include "support/Threads.h"

namespace {

class EndedDriver : public CKernelDriver {
public:
    explicit EndedDriver(
        const char* name, std::function<void()> atEnd = [] {})
        : CKernelDriver(DRIVER::INSTANCE(), name, "end"), m_atEnd(std::move(atEnd)) {}
    ~EndedDriver() override { m_atEnd(); }
    const VELM_UUID& getDID() const override { return IDriver::IID(); }

private:
    const std::function<void()> m_atEnd;
};

IDriverRepository& repository() {
    return *DRIVER::INSTANCE();
}

std::vector<String> names() {
    VELM_List<String> list;
    repository().getDriverNames(list);
    return std::vector<String>(list.begin(), list.end());
}

} // namespace

TEST(DriverRepository, KeepsADriverUntilItsLastReferenceIsReleasedOutsideTheLock) {
    std::vector<String> left = {"never set"};
    auto* const driver =
        new EndedDriver("kept", [&] { std::thread([&] { left = names(); }).join(); });
    ASSERT_TRUE(repository().registerDriver(driver).isSuccess());
    EXPECT_EQ(driver->getDriverRepository(), &repository());
    EXPECT_EQ(driver->release(), 1U) << "the repository has its own reference";
    TYPPtr<IInfo> info;
    EXPECT_TRUE(repository().getInterface("kept", info).isSuccess());
    EXPECT_EQ(info.get(), static_cast<IInfo*>(driver));
    EXPECT_TRUE(repository().unregisterDriver("kept").isSuccess());
    EXPECT_EQ(driver->getDriverRepository(), nullptr);
    EXPECT_EQ(left.size(), 1U) << "a client still has a reference";

    ASSERT_TRUE(repository().registerDriver(driver).isSuccess());
    info = TYPPtr<IInfo>();
    EXPECT_TRUE(repository().unregisterDriver("kept").isSuccess());
    EXPECT_TRUE(left.empty()) << "the destructor could use the repository from another thread";
}

TEST(DriverRepository, ReportsADriverThatIsMissingOrRegisteredTwice) {
    EndedDriver driver("one"), same("one"), second("a");
    EXPECT_EQ(driver.getDriverRepository(), &repository()) << "as constructed";
    ASSERT_TRUE(repository().registerDriver(&driver).isSuccess());
    ASSERT_TRUE(repository().registerDriver(&second).isSuccess());
    EXPECT_EQ(names(), (std::vector<String>{"one", "a"})) << "in order of registration";
    EXPECT_EQ(repository().registerDriver(&same).getMessage(),
              String("DRIVER 'one' ALREADY REGISTERED"));
    EXPECT_EQ(repository().registerDriver(nullptr).getMessage(), String("NO DRIVER TO REGISTER"));
    void* object = &driver;
    EXPECT_EQ(repository().queryDriver("two", IDriver::IID(), &object).getMessage(),
              String("DRIVER 'two' NOT FOUND"));
    EXPECT_EQ(object, nullptr);
    EXPECT_FALSE(repository().queryDriver("two", IDriver::IID(), nullptr).isSuccess());
    EXPECT_EQ(repository().queryDriver("one", VELM_UUID({}, ""), &object).getCode(), -1);
    EXPECT_TRUE(repository().unregisterDriver("one").isSuccess());
    EXPECT_EQ(repository().unregisterDriver("one").getMessage(), String("DRIVER 'one' NOT FOUND"));
    EXPECT_TRUE(repository().unregisterDriver("a").isSuccess());
    EXPECT_EQ(driver.addRef(), 2U);
}

TEST(DriverRepository, CanBeReplaced) {
    int other = 0; // only its address is used
    IDriverRepository* const own = DRIVER::INSTANCE();
    auto* const replacement = reinterpret_cast<IDriverRepository*>(&other);
    EXPECT_EQ(DRIVER::SET_INSTANCE(replacement), nullptr);
    EXPECT_EQ(DRIVER::INSTANCE(), replacement);
    EXPECT_EQ(DRIVER::SET_INSTANCE(nullptr), replacement);
    EXPECT_EQ(DRIVER::INSTANCE(), own);
}

TEST(DriverRepository, EachOperationWaitsForTheLock) {
    EndedDriver driver("one");
    TYPPtr<IInfo> info;
    const std::function<void()> operations[] = {
        [&] { EXPECT_TRUE(repository().registerDriver(&driver).isSuccess()); },
        [] { EXPECT_EQ(names().size(), 1U); },
        [&] { EXPECT_TRUE(repository().getInterface("one", info).isSuccess()); },
        [] { EXPECT_TRUE(repository().unregisterDriver("one").isSuccess()); }};
    for (const auto& operation : operations)
        EXPECT_TRUE(support::waitsFor(*repository().getLock(), operation));
}
