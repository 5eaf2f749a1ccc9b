#pragma once

#include <atomic>
#include <cstdint>
#include <initializer_list>

/// Identifier of a driver, a class or an interface: a handle to a shared representation of 16 value
/// bytes and a name text. Two identifiers are equal when they share the representation or their 16
/// bytes are equal; the name is ignored. Several threads may copy and compare handles at the same
/// time.
class VELM_UUID {
public:
    /// The 16 bytes in memory order.
    struct Value {
        std::uint8_t bytes[16];
    };
    /// The representation that handles share.
    struct Rep {
        Value value;
        std::atomic<std::uint32_t> count; ///< references; STATIC_COUNT if static and never freed
        const char* name;                 ///< never freed
    };
    static constexpr std::uint32_t STATIC_COUNT = 0xFFFFFFFFU;

    /// The value of a canonical text such as "D929FF9E-CA63-4E4D-91E4-ABA61F54A9B2". In memory the
    /// first three groups are little-endian: 9e ff 29 d9 63 ca 4d 4e 91 e4 ... In a constant
    /// expression, a malformed text does not compile; elsewhere, std::invalid_argument is thrown.
    static constexpr Value parse(const char (&text)[37]) {
        constexpr int ORDER[16] = {6, 4, 2, 0, 11, 9, 16, 14, 19, 21, 24, 26, 28, 30, 32, 34};
        Value value{};
        for (int i = 0; i < 16; ++i)
            value.bytes[i] =
                static_cast<std::uint8_t>(digit(text[ORDER[i]]) * 16 + digit(text[ORDER[i] + 1]));
        for (int dash : {8, 13, 18, 23})
            if (text[dash] != '-')
                refuse();
        return value;
    }

    /// A handle to `rep`; takes a reference unless the representation is static.
    explicit VELM_UUID(Rep& rep);

    /// A handle to a new representation that counts its references. `name` must outlive the
    /// representation.
    VELM_UUID(const Value& value, const char* name);

    VELM_UUID(const VELM_UUID& other);
    VELM_UUID& operator=(const VELM_UUID& other);
    ~VELM_UUID();

    const char* getName() const { return m_rep->name; }
    const Value& getValue() const { return m_rep->value; }

    friend bool operator==(const VELM_UUID& a, const VELM_UUID& b) { return a.equals(b); }
    friend bool operator!=(const VELM_UUID& a, const VELM_UUID& b) { return !a.equals(b); }

private:
    bool equals(const VELM_UUID& other) const;
    static constexpr int digit(char c) {
        return c >= '0' && c <= '9'   ? c - '0'
               : c >= 'A' && c <= 'F' ? c - 'A' + 10
               : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                      : refuse();
    }
    /// Throws std::invalid_argument. The function is not constexpr, so a constant expression that
    /// calls it does not compile. Its `throw` is not in this header, because a program built
    /// without exceptions could not compile the `throw`.
    static int refuse();
    static Rep* acquire(Rep* rep);
    static void drop(Rep* rep);

    Rep* m_rep;
};

/// Defines the function `accessor`, which returns a handle to a static representation. The first
/// call creates the handle; several threads may make the first call at once.
#define VELM_DEFINE_UUID(accessor, text, name)                                                     \
    const VELM_UUID& accessor {                                                                    \
        constexpr VELM_UUID::Value VALUE = VELM_UUID::parse(text);                                 \
        static VELM_UUID::Rep rep{VALUE, {VELM_UUID::STATIC_COUNT}, name};                         \
        static const VELM_UUID identifier(rep);                                                    \
        return identifier;                                                                         \
    }
