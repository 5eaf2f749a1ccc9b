#include "ServiceButton.h"

#include <chrono>
#include <future>

#include <fcntl.h>

#include "RTD.h"
#include "TYFile.h"
#include "support/Descriptors.h"
#include "support/DriverFixtures.h"
#include "support/TempDir.h"

namespace {

using namespace support;

/// Observer and event monitor in one, for one event at a time. In each call, on the button's
/// thread, it stops `button` and opens a file. Outside these calls, the open would end the thread.
class ServiceButtonTest : public testing::Test,
                          public ServiceButton::Observer,
                          public RTD::Monitor {
protected:
    ServiceButtonTest() { MON_EVENT = this; }
    ~ServiceButtonTest() override { MON_EVENT = nullptr; }

    void onButtonPressed(const TYTime& time) override { tell("pressed", time); }
    void onButtonReleased(const TYTime& time) override { tell("released", time); }
    void report(int level, const String& text) override {
        tell(std::to_string(level) + " " + str(text), {});
    }

    void tell(const std::string& event, const TYTime& time) {
        EXPECT_TRUE(button.stop().isSuccess());
        EXPECT_TRUE(TYFile("/dev/null", true, false).open(O_RDONLY, 0, 0).isSuccess());
        lastTime = std::chrono::seconds(time.seconds) + std::chrono::nanoseconds(time.nanoseconds);
        told.set_value(event);
    }

    std::string next() {
        std::string event = told.get_future().get();
        EXPECT_TRUE(button.stop().isSuccess());
        told = {};
        return event;
    }

    TempDir dir;
    const std::string path = dir.path("button");
    ServiceButton button{path.c_str(), this};
    std::promise<std::string> told;
    std::chrono::nanoseconds lastTime{};
    String error = "as it was";
};

} // namespace

TEST_F(ServiceButtonTest, ReportsEachMessageEvenIfStoppedMeanwhileAndLeaksNoDescriptor) {
    dir.makePipe("button");
    const std::string invalid = "3 INVALID SRV-BUTTON MESSAGE: ";
    const std::string longest(63, 'x');
    const auto before = openDescriptors();
    // returns when the button's thread opens the pipe too
    const auto openAsWriter = [&] { return ::open(path.c_str(), O_WRONLY | O_CLOEXEC); };
    for (const auto& [message, expected] : std::vector<std::pair<std::string, std::string>>{
             {"pressed\n", "pressed"},
             {"", invalid}, // a writer opens and closes the pipe
             {longest + "more", invalid + longest}}) {
        EXPECT_TRUE(button.start(error).isSuccess());
        const int pipe = openAsWriter();
        EXPECT_EQ(::write(pipe, message.data(), message.size()),
                  static_cast<ssize_t>(message.size()));
        ::close(pipe);
        EXPECT_EQ(next(), expected);
    }
    EXPECT_EQ(error, "as it was");
    EXPECT_TRUE(button.start(error).isSuccess());
    const int silent = openAsWriter();
    EXPECT_FALSE(button.start(error).isSuccess()) << "it is running already";
    EXPECT_EQ(error, "START THREAD FAILED");
    EXPECT_TRUE(button.stop().isSuccess()) << "waits in the read";
    ::close(silent);
    EXPECT_EQ(openDescriptors(), before);
    told.set_value("throws if anything else was reported");
}

TEST_F(ServiceButtonTest, MeasuresFromTheLastPress) {
    const auto now = [] { return std::chrono::system_clock::now().time_since_epoch(); };
    std::chrono::nanoseconds pressedAt{};
    for (const char* message : {"released", "pressed", "released", "released"}) {
        const auto before = now();
        button.processButtonMessage(message);
        EXPECT_LE(before, pressedAt + lastTime) << message;
        EXPECT_GE(now(), pressedAt + lastTime) << message;
        if (next() == "pressed")
            pressedAt = lastTime;
    }
    ServiceButton("", nullptr).processButtonMessage("pressed");
    EXPECT_EQ(next(), "3 NO SRV-BUTTON OBSERVER");
}

TEST_F(ServiceButtonTest, ReportsAMissingFileEvenIfStoppedMeanwhile) {
    EXPECT_TRUE(button.start(error).isSuccess());
    EXPECT_EQ(next(), "3 FAILED TO OPEN BUTTON FILE: " + path);
    MON_EVENT = nullptr;
    EXPECT_FALSE(button.runThread().isSuccess());
    told.set_value("throws if anything was reported");
}
