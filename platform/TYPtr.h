#pragma once

#include <utility>

/// A counted reference to an object with `addRef()` and `release()`.
template <class T>
class TYPtr {
public:
    TYPtr() = default;

    /// Takes another reference; the caller keeps its own.
    TYPtr(T* object) : m_object(object) {
        if (m_object)
            m_object->addRef();
    }
    TYPtr(const TYPtr& other) : TYPtr(other.m_object) {}
    TYPtr(TYPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    TYPtr& operator=(TYPtr other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~TYPtr() {
        if (m_object)
            m_object->release();
    }

    T* get() const { return m_object; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    explicit operator bool() const { return m_object != nullptr; }

protected:
    T* m_object = nullptr;
};
