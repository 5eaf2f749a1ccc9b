#pragma once

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

/// A circular, doubly linked list with one sentinel and a count. Elements are held by value. An
/// iterator points to an element or to the sentinel, which is the end. An iterator stays valid
/// until its element is removed. A list cannot be copied, and only one thread at a time may use it.
template <class T>
class VELM_List {
    struct Link {
        Link* next;
        Link* previous;
    };
    struct Element : Link {
        template <class... Arguments>
        explicit Element(Arguments&&... arguments)
            : Link{}, value(std::forward<Arguments>(arguments)...) {}
        T value;
    };

    template <class Value, class LinkPointer>
    class Position {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = Value*;
        using reference = Value&;

        Position() = default;
        /// An Iterator converts to a ConstIterator.
        operator Position<const T, const Link*>() const {
            return Position<const T, const Link*>(m_link);
        }

        Value& operator*() const { return static_cast<ElementOf>(m_link)->value; }
        Value* operator->() const { return &**this; }
        Position& operator++() {
            m_link = m_link->next;
            return *this;
        }
        Position& operator--() {
            m_link = m_link->previous;
            return *this;
        }
        Position operator++(int) {
            const Position before = *this;
            ++*this;
            return before;
        }
        Position operator--(int) {
            const Position before = *this;
            --*this;
            return before;
        }
        friend bool operator==(Position a, Position b) { return a.m_link == b.m_link; }
        friend bool operator!=(Position a, Position b) { return a.m_link != b.m_link; }

    private:
        friend class VELM_List;
        template <class, class>
        friend class Position;
        using ElementOf = std::conditional_t<std::is_const_v<Value>, const Element*, Element*>;
        explicit Position(LinkPointer link) : m_link(link) {}
        LinkPointer m_link = nullptr;
    };

public:
    using Iterator = Position<T, Link*>;
    using ConstIterator = Position<const T, const Link*>;

    VELM_List() : m_sentinel{&m_sentinel, &m_sentinel} {}
    ~VELM_List() { clear(); }
    VELM_List(const VELM_List&) = delete;
    VELM_List& operator=(const VELM_List&) = delete;

    Iterator begin() { return Iterator(m_sentinel.next); }
    Iterator end() { return Iterator(&m_sentinel); }
    ConstIterator begin() const { return ConstIterator(m_sentinel.next); }
    ConstIterator end() const { return ConstIterator(&m_sentinel); }

    unsigned size() const { return m_count; }
    bool isEmpty() const { return m_count == 0; }

    /// Inserts `value` before `position`, or appends it if `position` is the end. Returns the
    /// position of the new element.
    Iterator insert(Iterator position, T value) { return emplace(position, std::move(value)); }

    Iterator append(T value) { return insert(end(), std::move(value)); }

    /// Does the same as `insert`, but constructs the value in place.
    template <class... Arguments>
    Iterator emplace(Iterator position, Arguments&&... arguments) {
        Link* const element = new Element(std::forward<Arguments>(arguments)...);
        element->next = position.m_link;
        element->previous = position.m_link->previous;
        element->previous->next = element;
        element->next->previous = element;
        ++m_count;
        return Iterator(element);
    }

    /// Removes and destroys the element at `position`, which must not be the end. Returns the
    /// position of the next element, or the end.
    Iterator remove(Iterator position) {
        Link* const link = position.m_link;
        Link* const next = link->next;
        link->previous->next = next;
        next->previous = link->previous;
        --m_count;
        delete static_cast<Element*>(link);
        return Iterator(next);
    }

    void clear() {
        while (!isEmpty())
            remove(begin());
    }

private:
    Link m_sentinel;
    unsigned m_count = 0;
};
