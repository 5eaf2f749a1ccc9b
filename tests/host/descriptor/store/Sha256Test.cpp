#include "descriptor/store/Sha256.h"

#include <gtest/gtest.h>

// The examples published with the standard, and the lengths at which the padding needs another
// block.
TEST(Sha256, GivesTheStandardsResults) {
    const struct {
        std::string bytes;
        const char* digits;
    } CASES[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(1000000, 'a'),
         "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
        {std::string(55, '\xFF'),
         "aadaed00a3c5fbb8072ae7f1984ba8199fbe5272de427d11eaf31583af37db51"},
        {std::string(64, '\xFF'),
         "8667e718294e9e0df1d30600ba3eeb201f764aad2dad72748643e4a285e1d1f7"},
    };
    for (const auto& each : CASES)
        EXPECT_EQ(board::sha256(each.bytes), each.digits) << each.bytes.size() << " bytes";
}
