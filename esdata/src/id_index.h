// Shells by row id: an open-addressed table of pointers that reads each id from its shell,
// so that an entry costs a pointer and some room instead of a node of its own.
#ifndef ESDATA_ID_INDEX_H
#define ESDATA_ID_INDEX_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace esdata {

template <class T> class IdIndex
{
public:
    T* find(int64_t id) const
    {
        if (m_slots.empty()) return nullptr;
        for (size_t i = home(id);; i = (i + 1) & mask()) {
            T* t = m_slots[i];
            if (!t || t->id == id) return t;
        }
    }

    // item's id is not in the index yet.
    void insert(T* item)
    {
        if ((m_count + 1) * 4 > m_slots.size() * 3) grow();
        size_t i = home(item->id);
        while (m_slots[i])
            i = (i + 1) & mask();
        m_slots[i] = item;
        ++m_count;
    }

    void erase(int64_t id)
    {
        if (m_slots.empty()) return;
        size_t i = home(id);
        while (m_slots[i] && m_slots[i]->id != id)
            i = (i + 1) & mask();
        if (!m_slots[i]) return;
        // Later entries of the run move back into the gap unless their home lies after it.
        for (size_t j = (i + 1) & mask(); m_slots[j]; j = (j + 1) & mask()) {
            const size_t h = home(m_slots[j]->id);
            if (((j - h) & mask()) >= ((j - i) & mask())) {
                m_slots[i] = m_slots[j];
                i = j;
            }
        }
        m_slots[i] = nullptr;
        --m_count;
    }

private:
    size_t mask() const { return m_slots.size() - 1; }
    size_t home(int64_t id) const
    {
        return size_t((uint64_t(id) * 0x9E3779B97F4A7C15ull) >> 32) & mask();
    }
    void grow()
    {
        std::vector<T*> old(m_slots.empty() ? 16 : m_slots.size() * 2, nullptr);
        old.swap(m_slots);
        for (T* t : old)
            if (t) {
                size_t i = home(t->id);
                while (m_slots[i])
                    i = (i + 1) & mask();
                m_slots[i] = t;
            }
    }

    std::vector<T*> m_slots; // a power of two long, at most three quarters full
    size_t m_count = 0;
};

} // namespace esdata

#endif
