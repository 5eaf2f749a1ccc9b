#include "descriptor/DescriptorEdit.h"

#include <functional>

#include "base/Error.h"
#include "host/descriptor/Images.h"

using board::DescriptorEdit;
using board::parseAssignment;
using namespace support;

namespace {

using Step = std::function<void(DescriptorEdit&)>;

Step set(const std::string& word) {
    return [word](DescriptorEdit& edit) { edit.set(parseAssignment(word)); };
}
Step insert(std::size_t position, const std::string& word) {
    return [=](DescriptorEdit& edit) { edit.insert(position, parseAssignment(word)); };
}
Step remove(BD::TagId id, unsigned index) {
    return [=](DescriptorEdit& edit) { edit.remove({id, index}); };
}
Step addMac(unsigned interface) {
    return [=](DescriptorEdit& edit) { edit.addMac("02:00:00:00:00:ff", interface); };
}
Step setMac(unsigned index, std::optional<unsigned> interface = std::nullopt) {
    return [=](DescriptorEdit& edit) { edit.setMac(index, "02:00:00:00:00:09", interface); };
}

const std::string NEW = "00 09 00 06 00 01 ";
const Step ADD = insert(99, "9=u16:1");
const std::string MAC_FF = "00 01 00 0C 02 00 00 00 00 FF ";
const std::string MAC_9 = "00 01 00 0C 02 00 00 00 00 09 ";
const std::string NO_MAC = "00 01 00 04 ";

} // namespace

TEST(DescriptorEdit, ChangesItsTagsAndCopiesTheOthersByteForByte) {
    const struct {
        std::string before;
        Step step;
        std::string after;
        std::size_t changes;
    } CASES[] = {
        {ODD + PRODUCT + MAC_X + END, set("45=hex:01"), ODD + "00 2D 00 06 01 00 " + MAC_X + END,
         1},
        {ODD + PRODUCT + END, set("0xFFFE=hex:04"), "FF FE 00 06 04 00 " + PRODUCT + END, 1},
        {ODD + ODD + PRODUCT + END, remove(0xFFFE, 1), ODD + PRODUCT + END, 1},
        {PRODUCT + END, insert(0, "9=u16:1"), NEW + PRODUCT + END, 1},
        {PRODUCT + MAC_X + END, insert(1, "9=u16:1"), PRODUCT + NEW + MAC_X + END, 1},
        // one terminator, and nothing behind it
        {PRODUCT + END, ADD, PRODUCT + NEW + END, 1},
        {PRODUCT + "00 00", ADD, PRODUCT + NEW + END, 1},
        {PRODUCT + "FF FF FF FF", ADD, PRODUCT + NEW + END, 1},
        {PRODUCT, ADD, PRODUCT + NEW + END, 2},
        {"", ADD, NEW + END, 2},
        // counts as a change only if the tag loads differently; a zero byte may be padding
        {PRODUCT + END, set("45=hex:1234abcd"), PRODUCT + END, 0},
        {"00 05 00 06 61 00 " + END, set("5=text:a"), "00 05 00 06 61 00 " + END, 0},
        {"00 05 00 05 61 " + END, set("5=text:a"), "00 05 00 05 61 " + END, 0},
        {"00 05 00 06 61 62 " + END, set("5=text:a"), "00 05 00 06 61 00 " + END, 1},
        {PRODUCT, set("45=hex:1234abcd"), PRODUCT + END, 1},
        // MAC addresses
        {MAC_X + MAC_Y + PRODUCT + END, addMac(3),
         MAC_X + MAC_Y + MAC_FF + "00 03 " + PRODUCT + END, 1},
        {PRODUCT + END, addMac(65535), PRODUCT + MAC_FF + "FF FF " + END, 1},
        {MAC_X + MAC_Y + END, setMac(1), MAC_X + MAC_9 + "00 01 " + END, 1},
        {MAC_X + MAC_Y + END, setMac(0, 0x1234), MAC_9 + "12 34 " + MAC_Y + END, 1},
        {NO_MAC + END, setMac(0, 2), MAC_9 + "00 02 " + END, 1},
    };
    for (const auto& each : CASES) {
        DescriptorEdit edit{imageOf(each.before)};
        each.step(edit);
        EXPECT_EQ(hexOf(edit.image()) + " ", each.after) << "from " << each.before;
        EXPECT_EQ(edit.changes().size(), each.changes) << "from " << each.before;
    }
}

TEST(DescriptorEdit, FailsIfTheTagIsMissingOrHasNoInterfaceToKeep) {
    DescriptorEdit edit{imageOf(PRODUCT + NO_MAC + END)};
    EXPECT_EQ(failureOf([&] { setMac(1)(edit); }), "ERR TAG '1:=MacAddress' NOT FOUND");
    EXPECT_EQ(failureOf([&] { setMac(0)(edit); }),
              "MAC address 0 has 0 bytes and no interface number to keep (expected 8 bytes, or a "
              "number with the address)");
    EXPECT_EQ(edit.changes().size(), 0U);
}
