#include "gstring.h"

#include "com_object.h"

#include <atomic>

namespace gapi {

namespace {
class string_impl final : public com_object<abi::IString>
{
public:
    explicit string_impl(const QString& text) : m_text(text) {}
    const char16_t* GAPI_CALL Data() override
    {
        return reinterpret_cast<const char16_t*>(m_text.utf16());
    }
    std::uint32_t GAPI_CALL Length() override { return std::uint32_t(m_text.size()); }
    abi::result_t GAPI_CALL Assign(const char16_t* data, std::uint32_t length) override
    {
        m_text = QString::fromUtf16(data, qsizetype(length));
        return abi::ok;
    }

private:
    ~string_impl() override = default;
    void* base_interface(const abi::iid_t& iid) override
    {
        return iid == abi::IStringReadOnly::iid ? static_cast<abi::IStringReadOnly*>(this)
                                                : nullptr;
    }
    QString m_text;
};
} // namespace

QString to_qstring(abi::IStringReadOnly* s)
{
    if (!s || !s->Data()) return {};
    return QString::fromUtf16(s->Data(), qsizetype(s->Length()));
}

QString take_string(abi::IStringReadOnly* s)
{
    auto owned = com_ptr<abi::IStringReadOnly>::attach(s);
    return to_qstring(owned.get());
}

com_ptr<abi::IString> make_string(const QString& text)
{
    return com_ptr<abi::IString>::attach(new string_impl(text));
}

} // namespace gapi
