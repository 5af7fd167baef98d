#pragma once

#include <esdata/esdata.h>

#include <QString>

#include <cstdint>
#include <memory>

namespace edw {

// A run-time instance of a catalog element, shared: copies share one store object, which is
// deleted when the last copy goes. An empty object (one that could not be created) answers
// every call with nothing and ignores every write.
class CObject
{
public:
    // Owns the store's object and deletes it with the store's own function.
    struct interfaceHolder
    {
        explicit interfaceHolder(es_object_t* object) : object(object) {}
        ~interfaceHolder();
        interfaceHolder(const interfaceHolder&) = delete;
        interfaceHolder& operator=(const interfaceHolder&) = delete;
        es_object_t* object = nullptr;
    };

    CObject() = default;
    // Takes ownership of object (may be null: an empty object).
    explicit CObject(es_object_t* object);

    bool isEmpty() const { return !m_holder || !m_holder->object; }
    es_object_t* handle() const { return m_holder ? m_holder->object : nullptr; }
    // How many CObject copies share the store object (0 when empty).
    long useCount() const { return m_holder ? m_holder.use_count() : 0; }

    es_stdsize_t* stdSize() const;
    // The object's value of the attribute named name as text; empty when absent.
    QString value(const QString& name) const;

private:
    std::shared_ptr<interfaceHolder> m_holder;
};

} // namespace edw
