#include "status/HostStatus.h"

#include <filesystem>

#include <poll.h>

#include "host/descriptor/Images.h"
#include "support/TempDir.h"

using nlohmann::ordered_json;
using support::bytesOf, support::END, support::MAC_X, support::PRODUCT;

TEST(HostStatus, TellsWhatEachTagOfTheDescriptorSaysAndWhatIsWrongWithIt) {
    const support::TempDir dir;
    dir.write("board.toml", "[descriptor]\ndevice='eeprom'\n");
    dir.write("eeprom", bytesOf(END));
    const board::Profile profile = board::Profile::load(dir.path("board.toml"));
    board::EventQueue events;
    board::Host host(profile);
    board::Watch watch(host, profile, events);
    const board::HostStatus status(dir.path("board.toml"), profile, host, watch);
    const auto lookAt = [&](const std::string& image) {
        dir.write("eeprom", image);
        watch.look();
        return status.descriptor();
    };

    const std::pair<std::string, ordered_json> TABLE[] = {
        {bytesOf(MAC_X), "02:00:00:00:00:07/0"},
        {bytesOf("00 01 00 08 02 00 00 00"), "02000000"},
        {bytesOf("00 02 00 08 C0 A8 00 FF"), "192.168.0.255"},
        {bytesOf("00 03 00 06 AA BB"), nullptr},
        {bytesOf("00 05 00 08") + "<b>" + '\0', "<b>"},
        {bytesOf("00 05 00 08") + "a\x1b\xff" + '\0', "611bff00"},
        {bytesOf("00 05 00 68") + std::string(100, 'x'), std::string(100, 'x')},
        {bytesOf("00 06 00 08 00 00 00 FF"), "0x000000ff"},
        {bytesOf("00 10 00 08 00 00 01 00"), "256"},
        {bytesOf(PRODUCT), "1234abcd"},
        {bytesOf("FF FE 00 04"), "no data"},
        {bytesOf("FF FE 00 4C") + std::string(72, '\xff'),
         std::string(128, 'f') + "... (72 bytes)"},
    };
    std::string image;
    for (const auto& row : TABLE)
        image += row.first;
    const ordered_json all = lookAt(image + bytesOf(END));
    for (std::size_t i = 0; i < std::size(TABLE); ++i)
        EXPECT_EQ(all.at("tags").at(i).at("text"), TABLE[i].second);
    EXPECT_EQ(all.at("tags")[2].dump(),
              R"({"id":2,"name":"Tag2","offset":20,"length":4,"text":"192.168.0.255"})");
    EXPECT_TRUE(all.at("fault").is_null());

    const ordered_json corrupt = lookAt(bytesOf(PRODUCT + "00 2D 00 03"));
    EXPECT_EQ(corrupt.at("tags").size(), 1U);
    EXPECT_EQ(corrupt.at("fault").get<std::string>().substr(0, 9), "CORRUPTED");
    std::filesystem::remove(dir.path("eeprom"));
    watch.look();
    EXPECT_EQ(status.descriptor().at("tags"), corrupt.at("tags"));
    EXPECT_NE(status.descriptor().at("fault"), corrupt.at("fault"));
}

TEST(HostStatus, HasAFaultForAButtonThatFailedAfterTheStart) {
    const support::TempDir dir;
    dir.write("board.toml", "[button]\ndevice='/dev/null'\n"); // its reads don't wait
    const board::Profile profile = board::Profile::load(dir.path("board.toml"));
    board::EventQueue events;
    board::Host host(profile);
    const board::Watch watch(host, profile, events);
    board::HostStatus status(dir.path("board.toml"), profile, host, watch);
    const board::Services services(profile, false, events);
    status.setServices(&services);
    pollfd failure{events.descriptor(), POLLIN, 0};
    EXPECT_EQ(::poll(&failure, 1, -1), 1);
    EXPECT_EQ(status.status().at("button").dump(),
              R"({"watched":false,"pressed":null,"fault":"/dev/null: is no longer watched"})");
}
