#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace board {

/// Why there is no value, in words for people.
struct Fault {
    std::string text;
};

/// A value, or the fault that prevented it.
template <class Value>
class [[nodiscard]] Result {
public:
    Result(Value value) : m_content(std::move(value)) {}
    Result(Fault fault) : m_content(std::move(fault)) {}

    /// True if there is a value.
    explicit operator bool() const { return std::holds_alternative<Value>(m_content); }
    const Value& operator*() const { return std::get<Value>(m_content); }
    const Value* operator->() const { return &std::get<Value>(m_content); }

    /// Call it only if there is no value.
    const std::string& fault() const { return std::get<Fault>(m_content).text; }

private:
    std::variant<Value, Fault> m_content;
};

/// Success, or a fault.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Fault fault) : m_fault(std::move(fault)) {}

    explicit operator bool() const { return !m_fault; }
    const std::string& fault() const { return m_fault.value().text; }

private:
    std::optional<Fault> m_fault;
};

} // namespace board
