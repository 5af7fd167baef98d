#pragma once

#include "spec_description.h"

#include <esdata/esdata.h>

#include <QString>

#include <vector>

namespace edw {

// An element of the catalog (a standard size): a non-owning view of the store's handle with
// the element's texts already converted. A null handle gives empty answers everywhere.
class CStdSize
{
public:
    CStdSize() = default;
    explicit CStdSize(es_stdsize_t* element) : m_element(element) {}

    es_stdsize_t* handle() const { return m_element; }
    bool isNull() const { return m_element == nullptr; }
    explicit operator bool() const { return m_element != nullptr; }

    QString id() const;
    QString type() const;
    bool setType(const QString& type);

    es_table_t* table() const;
    es_folder_t* folder() const;
    es_packet_t* packet() const;
    es_provider_t* provider() const;
    QString packetName() const;

    // The attribute named name of the element's table, or null.
    es_attribute_t* attribute(const QString& name) const;
    bool hasAttribute(const QString& name) const { return attribute(name) != nullptr; }
    // The value of the attribute named name as text (see valueToText); empty when absent.
    QString value(const QString& name) const;
    // Writes text by the attribute's type; false when the attribute is absent or not written.
    bool setValue(const QString& name, const QString& text);

    es_model_t* model() const;
    es_projections_t* projections() const;
    std::vector<SpecDescription> specifications() const;

private:
    es_stdsize_t* m_element = nullptr;
};

} // namespace edw
