#include "descriptor/store/Sha256.h"

#include <array>
#include <cstdint>

namespace board {

namespace {

// Names and constants are those of the standard, FIPS 180-4.

constexpr std::size_t BLOCK_BYTES = 64;
constexpr std::size_t LENGTH_BYTES = 8;
using State = std::array<std::uint32_t, 8>;

constexpr State INITIAL = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                           0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

constexpr std::array<std::uint32_t, 64> K = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

constexpr std::uint32_t rotr(std::uint32_t x, unsigned n) {
    return x >> n | x << (32 - n);
}

std::uint32_t wordAt(const std::string& bytes, std::size_t offset) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i)
        word = word << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return word;
}

void addBlock(State& hash, const std::string& message, std::size_t offset) {
    std::array<std::uint32_t, K.size()> w{};
    for (std::size_t t = 0; t < w.size(); ++t) {
        if (t < 16) {
            w[t] = wordAt(message, offset + 4 * t);
            continue;
        }
        const std::uint32_t s0 = rotr(w[t - 15], 7) ^ rotr(w[t - 15], 18) ^ w[t - 15] >> 3;
        const std::uint32_t s1 = rotr(w[t - 2], 17) ^ rotr(w[t - 2], 19) ^ w[t - 2] >> 10;
        w[t] = s1 + w[t - 7] + s0 + w[t - 16];
    }
    auto [a, b, c, d, e, f, g, h] = hash;
    for (std::size_t t = 0; t < w.size(); ++t) {
        const std::uint32_t sum1 = rotr(e, 6) ^ rotr(e, 11) ^ rotr(e, 25);
        const std::uint32_t sum0 = rotr(a, 2) ^ rotr(a, 13) ^ rotr(a, 22);
        const std::uint32_t t1 = h + sum1 + ((e & f) ^ (~e & g)) + K[t] + w[t];
        const std::uint32_t t2 = sum0 + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    const State added = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < hash.size(); ++i)
        hash[i] += added[i];
}

/// The message with a set bit, zeros up to a whole number of blocks, and its length in bits.
std::string padded(std::string message) {
    const std::uint64_t bits = std::uint64_t{message.size()} * 8;
    message += '\x80';
    while (message.size() % BLOCK_BYTES != BLOCK_BYTES - LENGTH_BYTES)
        message += '\0';
    for (unsigned shift = 64; shift > 0; shift -= 8)
        message += static_cast<char>(bits >> (shift - 8) & 0xFFU);
    return message;
}

} // namespace

std::string sha256(const std::string& bytes) {
    const std::string message = padded(bytes);
    State hash = INITIAL;
    for (std::size_t offset = 0; offset < message.size(); offset += BLOCK_BYTES)
        addBlock(hash, message, offset);
    std::string digits;
    for (const std::uint32_t word : hash)
        for (unsigned shift = 32; shift > 0; shift -= 4)
            digits += "0123456789abcdef"[word >> (shift - 4) & 0xFU];
    return digits;
}

} // namespace board
