#pragma once

#include <vector>

#include "String.h"

/// Holds the rows of an information dump in order.
class InfoContainer {
public:
    /// A row: its depth, the index of the report that it belongs to, its title and its text.
    struct Row {
        unsigned level;
        unsigned index;
        String key;
        String value;
    };

    /// Appends a row; returns this object.
    InfoContainer& add(unsigned level, unsigned index, const String& key, const String& value);

    const std::vector<Row>& getRows() const { return m_rows; }

private:
    std::vector<Row> m_rows;
};
