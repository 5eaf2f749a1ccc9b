#include "status/HostStatus.h"

#include <filesystem>
#include <optional>

#include "host/descriptor/Images.h"
#include "support/TempDir.h"

using nlohmann::ordered_json;
using support::bytesOf;

namespace {

class HostStatusTest : public testing::Test {
protected:
    HostStatusTest() {
        m_dir.write("board.toml", "[descriptor]\ndevice='eeprom'\n");
        m_dir.write("eeprom", bytesOf(support::END));
        m_profile = board::Profile::load(m_path);
        m_host.emplace(m_profile);
        m_watch.emplace(*m_host, m_profile, m_events);
        m_status.emplace(m_path, m_profile, *m_host, *m_watch);
    }

    /// What the host answers after it has looked at this image.
    ordered_json lookAt(const std::string& image) {
        m_dir.write("eeprom", image);
        m_watch->look();
        return m_status->descriptor();
    }

    const support::TempDir m_dir;
    const std::string m_path = m_dir.path("board.toml");
    board::Profile m_profile;
    board::EventQueue m_events;
    std::optional<board::Host> m_host;
    std::optional<board::Watch> m_watch;
    std::optional<board::HostStatus> m_status;
};

} // namespace

TEST_F(HostStatusTest, TellsWhatEachTagOfTheDescriptorSays) {
    const struct {
        std::string chunk;
        ordered_json name, text;
    } TABLE[] = {
        {bytesOf(support::MAC_X), "MacAddress", "02:00:00:00:00:07/0"},
        {bytesOf("00 01 00 08 02 00 00 00"), "MacAddress", "02000000"},
        {bytesOf("00 02 00 08 C0 A8 00 FF"), "Tag2", "192.168.0.255"},
        {bytesOf("00 03 00 06 AA BB"), "Tag3", nullptr},
        {bytesOf("00 05 00 08") + "<b>" + '\0', "Tag5", "<b>"},
        {bytesOf("00 05 00 08") + "a\x1b\xff" + '\0', "Tag5", "611bff00"},
        {bytesOf("00 05 00 68") + std::string(100, 'x'), "Tag5", std::string(100, 'x')},
        {bytesOf("00 06 00 08 00 00 00 FF"), "Tag6", "0x000000ff"},
        {bytesOf("00 10 00 08 00 00 01 00"), "Tag16", "256"},
        {bytesOf(support::PRODUCT), "ProductID", "1234abcd"},
        {bytesOf("FF FE 00 04"), "Tag65534", "no data"},
        {bytesOf("FF FE 00 4C") + std::string(72, '\xff'), "Tag65534",
         std::string(128, 'f') + "... (72 bytes)"},
    };
    ordered_json expected = ordered_json::array();
    std::string image;
    for (const auto& row : TABLE) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(row.chunk[at]); };
        expected.push_back({{"id", byte(0) * 256U + byte(1)},
                            {"name", row.name},
                            {"offset", image.size()},
                            {"length", row.chunk.size() - 4},
                            {"text", row.text}});
        image += row.chunk;
    }
    EXPECT_EQ(lookAt(image + bytesOf(support::END)).dump(),
              ordered_json({{"tags", expected}, {"fault", nullptr}}).dump());
}

TEST_F(HostStatusTest, TellsWhatIsWrongWithTheDescriptorBesideTheTagsThatWereSeen) {
    const auto corrupt = lookAt(bytesOf(support::PRODUCT + "00 2D 00 03"));
    EXPECT_EQ(corrupt.at("tags").size(), 1U);
    EXPECT_EQ(corrupt.at("fault"), "CORRUPTED BOARD DESCRIPTOR: id=45 has invalid field length "
                                   "(chunkLen=3 is too small) at pos=10");
    std::filesystem::remove(m_dir.path("eeprom"));
    m_watch->look();
    EXPECT_EQ(m_status->descriptor().at("tags"), corrupt.at("tags"));
    EXPECT_NE(m_status->descriptor().at("fault").get<std::string>().find("No such file"),
              std::string::npos);
}
