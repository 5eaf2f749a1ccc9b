#include "VELM_UUID.h"

#include <cstring>
#include <stdexcept>
#include <utility>

int VELM_UUID::refuse() {
    throw std::invalid_argument("an identifier is malformed (expected hexadecimal digits in groups "
                                "of 8, 4, 4, 4 and 12, separated by hyphens)");
}

VELM_UUID::Rep* VELM_UUID::acquire(Rep* rep) {
    if (rep->count.load(std::memory_order_relaxed) != STATIC_COUNT)
        rep->count.fetch_add(1, std::memory_order_relaxed);
    return rep;
}

void VELM_UUID::drop(Rep* rep) {
    if (rep->count.load(std::memory_order_relaxed) != STATIC_COUNT &&
        rep->count.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete rep;
}

VELM_UUID::VELM_UUID(Rep& rep) : m_rep(acquire(&rep)) {}

VELM_UUID::VELM_UUID(const Value& value, const char* name) : m_rep(new Rep{value, {1}, name}) {}

VELM_UUID::VELM_UUID(const VELM_UUID& other) : m_rep(acquire(other.m_rep)) {}

VELM_UUID& VELM_UUID::operator=(const VELM_UUID& other) {
    VELM_UUID copy(other);
    std::swap(m_rep, copy.m_rep);
    return *this;
}

VELM_UUID::~VELM_UUID() {
    drop(m_rep);
}

bool VELM_UUID::equals(const VELM_UUID& other) const {
    return m_rep == other.m_rep ||
           std::memcmp(&m_rep->value, &other.m_rep->value, sizeof m_rep->value) == 0;
}
