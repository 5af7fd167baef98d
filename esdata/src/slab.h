// Storage for the handle objects of one kind of item: objects in chunks that never move and
// live until the catalog closes. Each chunk is known to the handle table as one address range
// with the kinds of handle found at which offset in an object, so that tracking a handle costs
// no entry of its own and the table stays small however many items a walk meets.
#ifndef ESDATA_SLAB_H
#define ESDATA_SLAB_H

#include "registry.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace esdata {

template <class T> class Slab
{
public:
    // kinds: the handle kinds with their offsets inside an object.
    Slab(Catalog* cat, std::vector<std::pair<size_t, HandleKind>> kinds)
        : m_cat(cat), m_kinds(std::move(kinds))
    {
    }
    ~Slab()
    {
        for (size_t c = 0; c < m_chunks.size(); ++c) {
            T* objects = m_chunks[c];
            const size_t n = c + 1 == m_chunks.size() ? m_usedInLast : chunkSize(c);
            for (size_t i = 0; i < n; ++i)
                objects[i].~T();
            ::operator delete(static_cast<void*>(objects), std::align_val_t(alignof(T)));
        }
    }
    Slab(const Slab&) = delete;
    Slab& operator=(const Slab&) = delete;

    T& emplace()
    {
        if (m_chunks.empty() || m_usedInLast == chunkSize(m_chunks.size() - 1)) {
            const size_t n = chunkSize(m_chunks.size());
            void* memory = ::operator new(n * sizeof(T), std::align_val_t(alignof(T)));
            m_chunks.push_back(static_cast<T*>(memory));
            m_usedInLast = 0;
            m_used = trackRange(memory, sizeof(T), n, m_kinds, m_cat);
        }
        T* object = new (m_chunks.back() + m_usedInLast) T();
        ++m_usedInLast;
        // Known as a handle from now on.
        m_used->store(uint32_t(m_usedInLast), std::memory_order_release);
        return *object;
    }

private:
    // Chunks grow from a few objects for a small catalog to a few thousand for a large one.
    static size_t chunkSize(size_t index) { return size_t(16) << std::min<size_t>(index, 8); }

    Catalog* m_cat;
    std::vector<std::pair<size_t, HandleKind>> m_kinds;
    std::vector<T*> m_chunks;
    size_t m_usedInLast = 0;
    std::atomic<uint32_t>* m_used = nullptr;
};

// The offset of a member inside its object, for the kinds of a slab.
template <class T, class M> size_t memberOffset(M T::* member)
{
    alignas(T) static unsigned char probe[sizeof(T)];
    const T* object = reinterpret_cast<const T*>(probe);
    return size_t(reinterpret_cast<const unsigned char*>(&(object->*member)) - probe);
}

} // namespace esdata

#endif
