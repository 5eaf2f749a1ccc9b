#include "TDriver.h"

#include "CDriver.h"
#include "CFanControl.h"
#include "CLedControl.h"
#include "CPowerStatus.h"
#include "CResourceVoip.h"
#include "CThermalSensor.h"
#include "DID.h"
#include "support/DriverFixtures.h"

namespace {

using namespace support;

/// A base class whose replies have messages, and which does not clear the result on failure.
struct TalkativeBase : CDriver {
    using CDriver::CDriver;
    XCode queryInterface(const VELM_UUID& iid, void** object) override {
        if (iid != IDriver::IID())
            return XCode(-7, "UNKNOWN INTERFACE");
        return XCode(CDriver::queryInterface(iid, object).getCode(), "ANSWERED");
    }
};

struct TalkativeVoip final : TDriver<TalkativeBase, IResourceVoip> {
    using TDriver::TDriver;
    unsigned getDspChannelCount() const override { return 0; }
    unsigned getSipLegCount() const override { return 0; }
};

struct Voip : CResourceVoip {
    Voip() : CResourceVoip(false) {}
    unsigned getDefaultSipLegs() override { return 0; }
};

} // namespace

TEST(TDriver, EachDriverHasItsIdentityAndInterfaces) {
    CFanControl fan(nullptr, "fan", "");
    CLedControl led(nullptr, "", "");
    CPowerStatus power(nullptr, "", "");
    CThermalSensor sensor(nullptr, "", "");
    CBoardDescr board;
    Voip voip;
    expectFaces<IFanControl>(fan);
    expectFaces<ILedControl>(led);
    expectFaces<IPowerStatus>(power);
    expectFaces<IThermalSensor>(sensor);
    expectFaces<IBoardDescr>(board);
    expectFaces<IResourceVoip>(voip);
    EXPECT_EQ(fan.getDID(), CFanControl::DID());
    EXPECT_EQ(led.getDID(), CLedControl::DID());
    EXPECT_EQ(power.getDID(), CPowerStatus::DID());
    EXPECT_EQ(sensor.getDID(), CThermalSensor::DID());
    EXPECT_EQ(board.getDID(), DID_BoardDescr());
    EXPECT_EQ(voip.getDID(), DID_Resource());
    EXPECT_EQ(str(voip.getDriverName()), "resource-driver");
}

TEST(TDriver, KernelDriverReportsItsNameWithinTheLimits) {
    const CFanControl fan(nullptr, "fan", "");
    for (const auto& [at, rows] : {std::pair(Place{1, 1, 2, 2}, Rows{"1.2 > fan="}),
                                   {Place{~0U, ~0U, ~0U, 0}, Rows{"4294967295.0 > fan="}},
                                   {Place{0, 1, 2, 2}, Rows{}},
                                   {Place{1, 1, 1, 2}, Rows{}}})
        EXPECT_EQ(reportOf(fan, at), rows);
}

TEST(TDriver, ReturnsTheBasesSuccessAsItIsAndDropsItsFailure) {
    TalkativeVoip capacity(DID_Resource(), "capacity");
    EXPECT_EQ(str(capacity.queryInterface(IDriver::IID(), nullptr).getMessage()), "ANSWERED");
    EXPECT_EQ(str(capacity.queryInterface(IResourceVoip::IID(), nullptr).getMessage()), "");
    void* object = &capacity;
    expectPlainFailure(capacity.queryInterface(DID_Resource(), &object));
    EXPECT_EQ(object, nullptr);
}
