#include "InfoContainer.h"

InfoContainer& InfoContainer::add(unsigned level, unsigned index, const String& key,
                                  const String& value) {
    m_rows.push_back({level, index, key, value});
    return *this;
}
