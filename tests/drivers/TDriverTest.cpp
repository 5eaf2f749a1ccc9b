#include "TDriver.h"

#include "CDriver.h"
#include "DID.h"
#include "IResourceVoip.h"
#include "support/DriverFixtures.h"

namespace {

/// A framework base whose answers carry texts.
struct TalkativeBase : CDriver {
    using CDriver::CDriver;
    XCode queryInterface(const VELM_UUID& iid, void** object) override {
        const XCode status = CDriver::queryInterface(iid, object);
        return XCode(status.getCode(), status.isSuccess() ? "ANSWERED" : "UNKNOWN INTERFACE");
    }
};

struct Capacity final : TDriver<TalkativeBase, IResourceVoip> {
    using TDriver::TDriver;
    unsigned getDspChannelCount() const override { return 0; }
    unsigned getSipLegCount() const override { return 0; }
};

} // namespace

TEST(TDriver, ReturnsTheBasesSuccessAsItIsAndDropsItsFailure) {
    Capacity capacity(DID_Resource(), "capacity");
    const XCode answered = capacity.queryInterface(IDriver::IID(), nullptr);
    EXPECT_TRUE(answered.isSuccess());
    EXPECT_EQ(support::str(answered.getMessage()), "ANSWERED");
    for (const VELM_UUID& iid : {IResourceVoip::IID(), DID_Resource()})
        EXPECT_EQ(support::str(capacity.queryInterface(iid, nullptr).getMessage()), "");
}
