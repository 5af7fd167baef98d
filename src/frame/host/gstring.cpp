#include "gstring.h"

#include <atomic>

namespace gapi {

namespace {
class string_impl final : public abi::IString
{
public:
    explicit string_impl(const QString& text) : m_text(text) {}

    abi::result_t GAPI_CALL QueryInterface(const abi::iid_t& iid, void** out) override
    {
        if (!out) return abi::e_pointer;
        if (iid == abi::IUnknown::iid || iid == abi::IStringReadOnly::iid ||
            iid == abi::IString::iid) {
            *out = static_cast<abi::IString*>(this);
            AddRef();
            return abi::ok;
        }
        *out = nullptr;
        return abi::e_nointerface;
    }
    std::uint32_t GAPI_CALL AddRef() override { return ++m_refs; }
    std::uint32_t GAPI_CALL Release() override
    {
        const std::uint32_t r = --m_refs;
        if (r == 0) delete this;
        return r;
    }
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
    ~string_impl() = default;
    QString m_text;
    std::atomic<std::uint32_t> m_refs{1};
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
