#include "watch/Watch.h"

#include <filesystem>
#include <memory>

#include <fcntl.h>
#include <gtest/gtest.h>

#include "DRIVER.h"
#include "IDriverRepository.h"
#include "IThermalSensor.h"
#include "base/File.h"
#include "host/descriptor/Images.h"
#include "support/TempDir.h"
#include "watch/EventWords.h"

using Lines = std::vector<std::string>;
namespace fs = std::filesystem;

namespace {

constexpr char BOARD[] = "[[fan]]\nname='fan'\ndevice='pwm'\nmaximum=255\nenable='mode'\n"
                         "tach='rpm'\n"
                         "[[thermal]]\nname='heat'\ndevice='heat'\nmaximum=85\n"
                         "[[power]]\nname='mains'\ndevice='mains'\n"
                         "[[led]]\nname='lamp'\ndevice='lamp'\n"
                         "[descriptor]\ndevice='eeprom'\n";

/// A board in a temporary folder, and the texts of the events from its watch.
class Watch : public testing::Test {
protected:
    Watch() {
        write({{"pwm", "0"},
               {"mode", "2"},
               {"rpm", "0"},
               {"heat", "41500"},
               {"mains", "1"},
               {"lamp", "0"},
               {"eeprom", support::bytesOf(support::PRODUCT + support::MAC_X + support::END)}});
    }

    void write(const std::vector<std::pair<std::string, std::string>>& files) const {
        for (const auto& [name, bytes] : files)
            m_dir.write(name, bytes);
    }
    void remove(const std::string& name) const { fs::remove(m_dir.path(name)); }

    void host(const std::string& profile = BOARD) {
        m_dir.write("board.toml", profile);
        m_profile =
            std::make_unique<board::Profile>(board::Profile::load(m_dir.path("board.toml")));
        m_host = std::make_unique<board::Host>(*m_profile, board::DeviceChoice(),
                                               board::DeviceLocator(m_dir.path("sys")));
        m_watch = std::make_unique<board::Watch>(*m_host, *m_profile, m_events);
    }

    /// The texts of the events from the next look, without the path of the temporary folder.
    Lines look() {
        m_watch->look();
        Lines lines;
        for (const board::EventQueue::Entry& entry : m_events.take().entries) {
            std::string& line = lines.emplace_back(board::wordsOf(entry.event).text);
            const std::string path = m_dir.path("");
            for (std::size_t at = 0; (at = line.find(path)) != std::string::npos;)
                line.erase(at, path.size());
        }
        return lines;
    }
    Lines lookAfter(const std::string& file, const std::string& bytes) {
        m_dir.write(file, bytes);
        return look();
    }

    const support::TempDir m_dir;
    board::EventQueue m_events;
    std::unique_ptr<board::Profile> m_profile;
    std::unique_ptr<board::Host> m_host;
    std::unique_ptr<board::Watch> m_watch;
};

} // namespace

TEST_F(Watch, TellsOnceThatATemperatureIsOverItsMaximumAndBelowTheHysteresis) {
    host();
    EXPECT_EQ(look(), Lines()) << "everything works";
    const std::pair<const char*, Lines> STEPS[] = {
        {"85000", {}},
        {"85001", {"thermal 'heat': 85.001 degrees Celsius, over its maximum of 85"}},
        {"99000", {}},
        {"83000", {}},
        {"82999", {"thermal 'heat': 82.999 degrees Celsius, below its maximum of 85"}},
        {"84000", {}}};
    for (const auto& [millidegrees, told] : STEPS)
        EXPECT_EQ(lookAfter("heat", millidegrees), told) << millidegrees;
}

TEST_F(Watch, TellsOnceThatADeviceIsGoneAndBack) {
    const struct {
        std::string file, title, place;
    } TABLE[] = {{"pwm", "fan 'fan'", "3: fan[0].device"},
                 {"rpm", "fan 'fan'", "6: fan[0].tach"},
                 {"heat", "thermal 'heat'", "9: thermal[0].device"},
                 {"mains", "power 'mains'", "13: power[0].device"},
                 {"lamp", "led 'lamp'", "16: led[0].device"},
                 {"eeprom", "descriptor", "18: descriptor.device"}};
    host();
    EXPECT_EQ(look(), Lines());
    for (const auto& row : TABLE) {
        SCOPED_TRACE(row.file);
        fs::rename(m_dir.path(row.file), m_dir.path("away"));
        EXPECT_EQ(look(), Lines{row.title + " can't be used: board.toml:" + row.place + ": " +
                                row.file + ": can't open: No such file or directory"});
        ASSERT_EQ(m_watch->alarms().size(), 1U);
        EXPECT_STREQ(m_watch->alarms()[0].type, "device-gone");
        const TYTime since = m_watch->alarms()[0].since;
        EXPECT_EQ(look(), Lines());
        EXPECT_EQ(m_watch->alarms()[0].since, since);
        fs::rename(m_dir.path("away"), m_dir.path(row.file));
        EXPECT_EQ(look(), Lines{row.title + " can be used again"});
        EXPECT_EQ(look(), Lines());
        EXPECT_TRUE(m_watch->alarms().empty());
    }
    EXPECT_EQ(lookAfter("heat", "N/A"),
              Lines{"thermal 'heat' can't be used: heat: holds 'N/A' (expected a number of "
                    "thousandths of a degree)"});
}

TEST_F(Watch, PicksUpDevicesThatComeLate) {
    const std::string image = m_dir.read("eeprom");
    for (const char* file : {"pwm", "heat", "eeprom"})
        remove(file);
    host();
    TYPPtr<IThermalSensor> client;
    ASSERT_TRUE(DRIVER::INSTANCE()->getInterface("heat", client).isSuccess());
    EXPECT_EQ(look().size(), 3U);
    EXPECT_FALSE(client->isValid());
    write({{"pwm", "0"}, {"heat", "41500"}, {"eeprom", image}});
    EXPECT_EQ(look(), (Lines{"fan 'fan' can be used again", "thermal 'heat' can be used again",
                             "descriptor can be used again"}));
    float celsius = 0;
    EXPECT_TRUE(client->getTemperature(celsius).isSuccess());
    EXPECT_EQ(celsius, 41.5F);
    EXPECT_EQ(m_host->descriptor()->getTags().size(), 3U) << "with its terminator";
}

TEST_F(Watch, TellsThatPowerIsLostAndBack) {
    m_dir.write("mains", "0");
    host();
    EXPECT_EQ(look(), Lines{"power 'mains' is lost"}) << "also at the start";
    remove("mains");
    EXPECT_EQ(look().size(), 1U);
    EXPECT_EQ(m_watch->alarms().size(), 2U) << "nobody knows that the power is back";
    EXPECT_EQ(lookAfter("mains", "2"),
              (Lines{"power 'mains' can be used again", "power 'mains' is back, status 2"}));
}

TEST_F(Watch, TellsThatAFanDoesNotHoldWhatWasSetAsLongAsThatIsInForce) {
    m_dir.write("rpm", "900");
    host();
    EXPECT_EQ(lookAfter("pwm", "255"), Lines()) << "nothing was set";
    EXPECT_TRUE(board::setFan(*m_host, "fan", IFanControl::FAN_SPEED_LOW).value);
    EXPECT_EQ(look(), Lines());
    EXPECT_EQ(lookAfter("pwm", "255"), Lines{"fan 'fan' was set to low and holds full"});
    EXPECT_EQ(lookAfter("pwm", "170"), Lines());
    EXPECT_EQ(lookAfter("pwm", "85"), Lines{"fan 'fan' holds low, as it was set"});
    EXPECT_EQ(lookAfter("pwm", "170"), Lines{"fan 'fan' was set to low and holds high"});
    EXPECT_TRUE(board::setFanAutomatic(*m_host, "fan").value);
    EXPECT_EQ(look(), Lines{"fan 'fan' holds high; no speed is set any more"});

    m_watch.reset();
    m_host.reset();
    host("[[fan]]\nname='fan'\ndevice='pwm'\nmaximum=11\n");
    static_cast<void>(board::setFan(*m_host, "fan", IFanControl::FAN_SPEED_HIGH));
    EXPECT_EQ(look(), Lines()) << "6 of 11 was written for high and reads as full";
    EXPECT_EQ(lookAfter("pwm", "9"), Lines{"fan 'fan' was set to high and holds full"});
}

TEST_F(Watch, TellsThatAFanStandsStillUnlessItIsOffOrHasJustBeenSwitchedOn) {
    host();
    EXPECT_EQ(look(), Lines()) << "is off";
    EXPECT_EQ(lookAfter("pwm", "85"), Lines()) << "starts";
    EXPECT_EQ(look(), Lines{"fan 'fan' does not turn at the speed low"});
    EXPECT_EQ(lookAfter("pwm", "255"), Lines());
    EXPECT_EQ(lookAfter("rpm", "1200"), Lines{"fan 'fan' turns, 1200 rpm"});
    EXPECT_EQ(lookAfter("rpm", "0"), Lines{"fan 'fan' does not turn at the speed full"});
    EXPECT_EQ(lookAfter("pwm", "0"), Lines{"fan 'fan' is off"});
}

TEST_F(Watch, TellsThatTheDescriptorWasChangedButKeepsTheLoadedOne) {
    using namespace support;
    host();
    EXPECT_EQ(look(), Lines());
    const std::string before = PRODUCT + MAC_X + END;
    const struct {
        std::string image;
        Lines told;
    } STEPS[] = {
        {before + "AA BB", {}}, // behind the terminator, where no load reads
        {PRODUCT + MAC_Y + END, {"descriptor: 1 tag changed on its device"}},
        {MAC_Y + MAC_X + END, {"descriptor: 2 tags changed on its device"}},
        {MAC_Y + MAC_X, {}}, // without a terminator, the end of the file counts
        {MAC_Y + MAC_X + PRODUCT, {"descriptor: 1 tag changed on its device"}},
        {MAC_Y + "00 2D 00 03",
         {"descriptor: 2 tags changed on its device; CORRUPTED BOARD DESCRIPTOR: id=45 has invalid "
          "field length (chunkLen=3 is too small) at pos=14"}},
        {before, {"descriptor: 2 tags changed on its device"}},
    };
    for (const auto& step : STEPS) {
        EXPECT_EQ(lookAfter("eeprom", bytesOf(step.image)), step.told) << step.image;
        EXPECT_EQ(look(), Lines()) << step.image;
    }
    board::FileDescriptor writer = board::tryOpen(m_dir.path("eeprom"), O_RDONLY);
    ASSERT_TRUE(board::tryLock(writer));
    EXPECT_EQ(lookAfter("eeprom", bytesOf(END)), Lines()) << "is still being written";
    writer.close();
    EXPECT_EQ(look(), Lines{"descriptor: 2 tags changed on its device"});
    EXPECT_EQ(m_host->descriptor()->getTags().size(), 0U);
}

TEST_F(Watch, FollowsADeviceWhoseNumberChanges) {
    const auto makeMonitor = [&](const std::string& folder, const std::string& name) {
        const std::string path = "sys/class/hwmon/" + folder;
        m_dir.makeFolder(path);
        write({{path + "/name", name},
               {path + "/temp1_input", name == "heat" ? "41500" : "0"},
               {path + "/pwm1", "85"},
               {path + "/fan1_input", "1200"}});
    };
    const auto move = [&](const std::string& from, const std::string& to) {
        fs::rename(m_dir.path("sys/class/hwmon/" + from), m_dir.path("sys/class/hwmon/" + to));
    };
    const auto celsius = [&] {
        return *std::get<board::TemperatureReading>(m_watch->devices()[1].reading).value;
    };
    makeMonitor("hwmon0", "heat");
    makeMonitor("hwmon1", "other");
    host("[[fan]]\nname='fan'\ndevice='hwmon:heat/pwm1'\nmaximum=255\n"
         "tach='hwmon:heat/fan1_input'\n[[thermal]]\nname='heat'\n"
         "device='hwmon:heat/temp1_input'\nmaximum=85\n");
    EXPECT_EQ(look(), Lines());
    EXPECT_EQ(celsius(), 41.5F);

    move("hwmon0", "hwmon2"); // the old path leads nowhere, then to another device
    EXPECT_EQ(look(), Lines());
    EXPECT_EQ(celsius(), 41.5F);
    move("hwmon1", "hwmon0");
    move("hwmon2", "hwmon1");
    move("hwmon0", "hwmon2");
    write({{"sys/class/hwmon/hwmon1/temp1_input", "50000"},
           {"sys/class/hwmon/hwmon1/fan1_input", "0"}});
    EXPECT_EQ(look(), Lines{"fan 'fan' does not turn at the speed low"});
    EXPECT_EQ(celsius(), 50.0F);
    EXPECT_EQ(m_host->find("heat")->path, m_dir.path("sys/class/hwmon/hwmon1/temp1_input"));

    fs::rename(m_dir.path("sys/class/hwmon/hwmon1"), m_dir.path("unloaded"));
    const Lines gone = look();
    ASSERT_EQ(gone.size(), 2U);
    EXPECT_EQ(gone[1], "thermal 'heat' can't be used: board.toml:8: thermal[0].device: "
                       "hwmon:heat/temp1_input: no monitor is named 'heat' (expected one; there "
                       "are: 'other')");
    fs::rename(m_dir.path("unloaded"), m_dir.path("sys/class/hwmon/hwmon7"));
    EXPECT_EQ(look(), (Lines{"fan 'fan' can be used again", "thermal 'heat' can be used again"}));
    EXPECT_EQ(celsius(), 50.0F);
    EXPECT_TRUE(board::setFan(*m_host, "fan", IFanControl::FAN_SPEED_FULL).value);
    EXPECT_EQ(m_dir.read("sys/class/hwmon/hwmon7/pwm1"), "255" + std::string(13, '\0'));
    move("hwmon7", "hwmon8"); // and another monitor gets its name before the next look
    makeMonitor("hwmon7", "other");
    m_dir.write("sys/class/hwmon/hwmon7/pwm1", "55");
    EXPECT_NE(board::setFan(*m_host, "fan", IFanControl::FAN_SPEED_LOW).value.fault().find("moved"),
              std::string::npos);
    EXPECT_TRUE(m_host->giveBack().empty());
    EXPECT_EQ(m_dir.read("sys/class/hwmon/hwmon8/pwm1"), "85");
    EXPECT_EQ(m_dir.read("sys/class/hwmon/hwmon7/pwm1"), "55");
}

TEST_F(Watch, SendsALineWhenTheFirstAlarmBeginsAndTheLastOneEnds) {
    host(BOARD + std::string("[watch]\non_alarm='alarm on 3'\non_clear='alarm off'\n"));
    Lines sent;
    bool isTaken = false;
    const auto send = [&](const std::string& line) {
        if (isTaken)
            sent.push_back(line);
        return isTaken;
    };
    m_dir.write("mains", "0");
    EXPECT_EQ(look().size(), 1U);
    m_watch->sendLedLinesTo(send);
    isTaken = true;
    EXPECT_EQ(look().size(), 0U);
    EXPECT_EQ(sent, Lines{"alarm on 3"}) << "the alarm began before";
    EXPECT_EQ(lookAfter("heat", "90000").size(), 1U);
    EXPECT_EQ(lookAfter("mains", "1").size(), 1U);
    EXPECT_EQ(sent.size(), 1U);
    EXPECT_EQ(lookAfter("heat", "40000").size(), 1U);
    EXPECT_EQ(sent, (Lines{"alarm on 3", "alarm off"}));
    EXPECT_EQ(lookAfter("heat", "90000").size(), 1U);
    m_watch->sendLedLinesTo(nullptr);
    EXPECT_EQ(lookAfter("heat", "40000").size(), 1U);
    EXPECT_EQ(sent.size(), 3U);
}
