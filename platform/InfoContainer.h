#pragma once

#include <vector>

#include "String.h"

/// Takes the rows of an information dump and keeps them in order.
class InfoContainer {
public:
    /// A row: how deep it stands, its number among its like, a title and what goes with it.
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
