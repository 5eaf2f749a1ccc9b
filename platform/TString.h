#pragma once

#include <string>

/// The framework's growable buffer. Its elements may be zero. `TString<char>` holds tag data and
/// EEPROM images. A copy shares no memory with its source. If memory runs out, throws
/// std::bad_alloc and changes nothing.
template <class T>
class TString {
public:
    TString() = default;

    /// A copy of `length` elements; empty if `elements` is null.
    TString(const T* elements, unsigned length) {
        if (elements)
            m_elements.assign(elements, length);
    }

    TString& concat(const T* elements, unsigned length) {
        if (elements)
            m_elements.append(elements, length);
        return *this;
    }

    TString& concat(const TString& other) { return concat(other.data(), other.length()); }

    /// The elements from `start` up to, but not including, `end`; positions past the end of the
    /// buffer are ignored.
    TString substring(unsigned start, unsigned end) const {
        const unsigned last = end < length() ? end : length();
        return start < last ? TString(data() + start, last - start) : TString();
    }

    /// The element at `index`; 0 past the end.
    T operator[](unsigned index) const { return index < length() ? m_elements[index] : T(); }

    /// The elements, never null. Valid until the buffer changes.
    const T* data() const { return m_elements.data(); }
    unsigned length() const { return static_cast<unsigned>(m_elements.size()); }

    friend bool operator==(const TString& a, const TString& b) {
        return a.m_elements == b.m_elements;
    }
    friend bool operator!=(const TString& a, const TString& b) {
        return a.m_elements != b.m_elements;
    }

private:
    std::basic_string<T> m_elements; // needs no allocated memory for the data of most tags
};
