#pragma once

#include <string>

namespace fuzz {

/// A tag of a list, as the models keep it.
struct Entry {
    int id;
    std::string data;
    bool operator==(const Entry& other) const { return id == other.id && data == other.data; }
};

} // namespace fuzz
