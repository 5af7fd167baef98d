// The children of a folder or the elements of a table: most hold one or none, which this list
// keeps without an allocation of its own.
#ifndef ESDATA_SHELL_LIST_H
#define ESDATA_SHELL_LIST_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace esdata {

template <class T> class ShellList
{
public:
    ShellList() = default;
    ~ShellList()
    {
        if (m_capacity > 1) delete[] m_many;
    }
    ShellList(const ShellList&) = delete;
    ShellList& operator=(const ShellList&) = delete;

    size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    T* const* begin() const { return m_capacity > 1 ? m_many : &m_one; }
    T* const* end() const { return begin() + m_size; }
    T* operator[](size_t i) const { return begin()[i]; }

    void push_back(T* item)
    {
        if (m_size == m_capacity) {
            const uint32_t capacity = m_capacity * 2;
            T** many = new T*[capacity];
            std::copy(begin(), end(), many);
            if (m_capacity > 1) delete[] m_many;
            m_many = many;
            m_capacity = capacity;
        }
        (m_capacity > 1 ? m_many : &m_one)[m_size++] = item;
    }
    // Keeps its room: a list read again usually holds as many.
    void clear() { m_size = 0; }
    void erase(T* item)
    {
        T** data = m_capacity > 1 ? m_many : &m_one;
        T** last = std::remove(data, data + m_size, item);
        m_size = uint32_t(last - data);
    }

private:
    union {
        T* m_one = nullptr;
        T** m_many;
    };
    uint32_t m_size = 0;
    uint32_t m_capacity = 1;
};

} // namespace esdata

#endif
