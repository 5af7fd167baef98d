#include "stdsize.h"

#include "catalog_tree.h"
#include "esconvert.h"

namespace edw {

QString CStdSize::id() const
{
    return fromEs(stdsize_GetID(m_element));
}

QString CStdSize::type() const
{
    return fromEs(stdsize_GetType(m_element));
}

bool CStdSize::setType(const QString& type)
{
    return stdsize_SetType(m_element, toEs(type).c_str());
}

es_table_t* CStdSize::table() const
{
    return stdsize_GetTable(m_element);
}

es_folder_t* CStdSize::folder() const
{
    return folderOf(m_element);
}

es_packet_t* CStdSize::packet() const
{
    return packetOf(m_element);
}

es_provider_t* CStdSize::provider() const
{
    return providerOf(m_element);
}

QString CStdSize::packetName() const
{
    return fromEs(packet_GetName(packet()));
}

es_attribute_t* CStdSize::attribute(const QString& name) const
{
    return table_FindAttribute(table(), toEs(name).c_str());
}

QString CStdSize::value(const QString& name) const
{
    es_value value{};
    if (!stdsize_GetValueByName(m_element, toEs(name).c_str(), &value)) return {};
    return valueToText(value);
}

bool CStdSize::setValue(const QString& name, const QString& text)
{
    es_attribute_t* attr = attribute(name);
    return attr && writeValue(m_element, attr, text);
}

es_model_t* CStdSize::model() const
{
    return stdsize_GetModel(m_element);
}

es_projections_t* CStdSize::projections() const
{
    return stdsize_GetProjections(m_element);
}

std::vector<SpecDescription> CStdSize::specifications() const
{
    return readSpecifications(m_element);
}

} // namespace edw
