#include "CFanControl.h"

#include <string>
#include <vector>

#include "support/Descriptors.h"
#include "support/ScriptedKernel.h"

namespace {

using Fan = IFanControl;
using namespace support;

/// A fan behind a scripted kernel driver.
class CFanControlTest : public ScriptedKernel {
protected:
    CFanControlTest() { answer(MAXIMUM, 100U); }
    void connect(unsigned maximum) {
        answer(MAXIMUM, maximum);
        ASSERT_TRUE(fan.open(error).isSuccess());
    }
    std::string description() {
        String text("before");
        EXPECT_TRUE(fan.getDescription(text).isSuccess());
        return str(text);
    }
    /// Expects that the device can be neither read nor written: its speed reads as "off", and the
    /// requested speed is remembered.
    void expectDeviceFails() {
        Fan::FanSpeed speed = Fan::FAN_SPEED_HIGH;
        expectPlainFailure(fan.getActualFanSpeed(speed));
        EXPECT_EQ(speed, Fan::FAN_SPEED_OFF);
        expectPlainFailure(fan.setFanSpeed(Fan::FAN_SPEED_LOW));
        EXPECT_EQ(fan.getFanSpeed(speed).getCode(), fan.isValid() ? 0 : -1);
        EXPECT_EQ(speed, Fan::FAN_SPEED_LOW);
    }

    CFanControl fan{nullptr, "fan", ENDPOINT};
};

TEST_F(CFanControlTest, DriverIsValidOnceItsDeviceFileIsFoundAndUsesTheLatestAnswers) {
    Fan::FanSpeed speed = Fan::FAN_SPEED_FULL;
    expectPlainFailure(fan.getFanSpeed(speed));
    EXPECT_EQ(speed, Fan::FAN_SPEED_OFF);
    EXPECT_EQ(description(), "");
    expectDeviceFails();
    EXPECT_TRUE(asked.empty());

    answer(PATH, String(dir.path("later").c_str()));
    expectPlainFailure(fan.open(error));
    EXPECT_FALSE(fan.isValid());
    expectDeviceFails();
    EXPECT_EQ(description(), "As the kernel says");
    dir.write("later", "");
    connect(100);
    EXPECT_TRUE(fan.isValid());
    EXPECT_EQ(asked.size(), 6U) << "each handshake asks all three questions";

    answer(PATH, String(dir.path("second").c_str()));
    answer(MAXIMUM, 30U);
    EXPECT_FALSE(fan.open(error).isSuccess());
    EXPECT_TRUE(fan.isValid());
    expectDeviceFails();
    dir.write("second", "");
    EXPECT_TRUE(fan.setFanSpeed(Fan::FAN_SPEED_FULL).isSuccess());
    EXPECT_STREQ(dir.read("second").c_str(), "30");
}

TEST_F(CFanControlTest, HandshakeAsksInOrderAndTheFirstFailureEndsItUnchanged) {
    const std::vector<unsigned> order = {PATH, DESCRIPTION, MAXIMUM};
    const auto valid = answers;
    for (std::size_t step = 0; step < order.size(); ++step) {
        asked.clear();
        answers = valid;
        answers[order[step]] = [](MxMsg&) { return XCode(-7, "NO FAN FITTED"); };
        const XCode status = fan.open(error);
        EXPECT_EQ(status.getCode(), -7);
        EXPECT_EQ(str(status.getMessage()), "NO FAN FITTED");
        EXPECT_EQ(asked, std::vector<unsigned>(order.data(), order.data() + step + 1));
        EXPECT_EQ(description(), order[step] == MAXIMUM ? "As the kernel says" : "");
        EXPECT_FALSE(fan.isValid());
    }
}

TEST_F(CFanControlTest, ContentOfTheDeviceIsReportedAsACoarseSpeed) {
    const struct {
        unsigned maximum;
        std::vector<std::pair<std::string, int>> rows; // content, and the speed as a number
    } tables[] = {{255, {{"41", 3}, {"42", 2}, {"125", 2}, {"126", 1}, {"209", 1}, {"210", 0}}},
                  {255, {{"", 3}, {"-1", 0}, {"fast", 3}, {" 126 rpm", 1}}},
                  {255, {{"0000000000000210", 0}, {"00000000000000419", 3}}},
                  {4294967295, {{"9999999999999999", 1}, {"-9999999999999999", 1}, {"-1", 0}}},
                  {6, {{"0", 3}, {"1", 2}}},
                  {5, {{"", 0}}}};
    for (const auto& [maximum, rows] : tables)
        for (const auto& [content, expected] : rows) {
            dir.write("device", content);
            connect(maximum);
            Fan::FanSpeed speed{};
            EXPECT_TRUE(fan.getActualFanSpeed(speed).isSuccess());
            EXPECT_EQ(speed, expected) << "maximum " << maximum << ", content '" << content << "'";
        }
}

TEST_F(CFanControlTest, OnlyAnOpenThatFailsIsAnErrorAndWhatIsNotReadCountsAsZero) {
    answer(PATH, String(dir.path("").c_str())); // a folder can be opened, but not read
    connect(255);
    Fan::FanSpeed speed{};
    EXPECT_TRUE(fan.getActualFanSpeed(speed).isSuccess());
    EXPECT_EQ(speed, Fan::FAN_SPEED_OFF);
    answer(PATH, String("/dev/full"));
    connect(255);
    EXPECT_TRUE(fan.setFanSpeed(Fan::FAN_SPEED_HIGH).isSuccess());
}

TEST_F(CFanControlTest, SpeedIsRememberedAndWrittenAsARecordOfExactlySixteenBytes) {
    const struct {
        unsigned maximum;
        std::vector<std::pair<int, std::string>> rows; // a speed as a number, and what is written
    } tables[] = {{255, {{0, "255"}, {1, "170"}, {2, "85"}, {3, "0"}, {4, "255"}, {-1, "255"}}},
                  {100, {{1, "66"}, {2, "33"}}},
                  {4294967295, {{0, "-1"}, {1, "-1431655766"}}}};
    for (const auto& [maximum, rows] : tables)
        for (const auto& [number, digits] : rows) {
            dir.write("device", std::string(20, 'x'));
            connect(maximum);
            Fan::FanSpeed speed{};
            EXPECT_TRUE(fan.setFanSpeed(static_cast<Fan::FanSpeed>(number)).isSuccess());
            EXPECT_TRUE(fan.getFanSpeed(speed).isSuccess());
            EXPECT_EQ(speed, number) << "maximum " << maximum;
            EXPECT_EQ(held(), digits + std::string(16 - digits.size(), '\0') + "xxxx") << maximum;
        }
}

TEST_F(CFanControlTest, DescriptorZeroCountsAsFailureAndNoDescriptorIsKept) {
    const auto before = openDescriptors();
    connect(100);
    EXPECT_TRUE(fan.setFanSpeed(Fan::FAN_SPEED_HIGH).isSuccess());
    {
        const DescriptorZeroFree hole;
        expectDeviceFails();
        expectPlainFailure(fan.open(error));
        EXPECT_TRUE(hole.isStillFree());
    }
    EXPECT_STREQ(held().c_str(), "66");
    EXPECT_EQ(openDescriptors(), before);
}

} // namespace
