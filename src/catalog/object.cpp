#include "object.h"

#include "esconvert.h"

namespace edw {

CObject::interfaceHolder::~interfaceHolder()
{
    if (object) object_Delete(object);
}

CObject::CObject(es_object_t* object)
{
    if (object) m_holder = std::make_shared<interfaceHolder>(object);
}

es_stdsize_t* CObject::stdSize() const
{
    return isEmpty() ? nullptr : object_GetStdSize(m_holder->object);
}

QString CObject::value(const QString& name) const
{
    if (isEmpty()) return {};
    es_value value{};
    if (!object_GetValueByName(m_holder->object, toEs(name).c_str(), &value)) return {};
    return valueToText(value);
}

} // namespace edw
