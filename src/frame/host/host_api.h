#pragma once

// Binary interface of the host's API as the library sees it: reference-counted interfaces
// asked for by an interface identity, an automation object invoked by dispatch identifier with
// variant arguments, and the entry points of the host's modules. Qt-free, so that the host's
// modules and the Windows-only files include it as well.

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#define GAPI_CALL __stdcall
#define GAPI_MODULE_ENTRY extern "C" __declspec(dllexport)
#else
#define GAPI_CALL
#define GAPI_MODULE_ENTRY extern "C" __attribute__((visibility("default")))
#endif

namespace gapi::abi {

using result_t = std::int32_t;

inline constexpr result_t ok = 0;
inline constexpr result_t false_result = 1;
inline constexpr result_t e_notimpl = static_cast<result_t>(0x80004001u);
inline constexpr result_t e_nointerface = static_cast<result_t>(0x80004002u);
inline constexpr result_t e_pointer = static_cast<result_t>(0x80004003u);
inline constexpr result_t e_fail = static_cast<result_t>(0x80004005u);
inline constexpr result_t e_outofmemory = static_cast<result_t>(0x8007000Eu);
inline constexpr result_t e_invalidarg = static_cast<result_t>(0x80070057u);
inline constexpr result_t e_file_not_found = static_cast<result_t>(0x80070002u);
// The document was made by a later version of the host.
inline constexpr result_t e_later_version = static_cast<result_t>(0x80040301u);
// The file is not a document of the host.
inline constexpr result_t e_bad_document = static_cast<result_t>(0x80040302u);

constexpr bool failed(result_t r)
{
    return r < 0;
}

struct iid_t
{
    std::uint32_t data1 = 0;
    std::uint16_t data2 = 0;
    std::uint16_t data3 = 0;
    std::uint8_t data4[8] = {};

    friend constexpr bool operator==(const iid_t& a, const iid_t& b)
    {
        if (a.data1 != b.data1 || a.data2 != b.data2 || a.data3 != b.data3) return false;
        for (int i = 0; i < 8; ++i)
            if (a.data4[i] != b.data4[i]) return false;
        return true;
    }
};

namespace detail {
constexpr std::uint32_t hex_digit(char c)
{
    return c >= '0' && c <= '9'   ? std::uint32_t(c - '0')
           : c >= 'a' && c <= 'f' ? std::uint32_t(c - 'a' + 10)
           : c >= 'A' && c <= 'F' ? std::uint32_t(c - 'A' + 10)
                                  : 0;
}
constexpr std::uint32_t hex_value(const char* s, int digits)
{
    std::uint32_t v = 0;
    for (int i = 0; i < digits; ++i)
        v = (v << 4) | hex_digit(s[i]);
    return v;
}
} // namespace detail

// Identity from its text form "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx", braces allowed.
constexpr iid_t iid_from_text(const char* text)
{
    if (*text == '{') ++text;
    iid_t id;
    id.data1 = detail::hex_value(text, 8);
    id.data2 = std::uint16_t(detail::hex_value(text + 9, 4));
    id.data3 = std::uint16_t(detail::hex_value(text + 14, 4));
    id.data4[0] = std::uint8_t(detail::hex_value(text + 19, 2));
    id.data4[1] = std::uint8_t(detail::hex_value(text + 21, 2));
    for (int i = 0; i < 6; ++i)
        id.data4[2 + i] = std::uint8_t(detail::hex_value(text + 24 + 2 * i, 2));
    return id;
}

#define GAPI_INTERFACE_ID(text)                                                                    \
    static constexpr const char* iid_text = text;                                                  \
    static constexpr ::gapi::abi::iid_t iid = ::gapi::abi::iid_from_text(text)

// Base of every host interface. Objects are released by the side that holds the reference;
// nobody deletes an interface pointer.
struct IUnknown
{
    GAPI_INTERFACE_ID("00000000-0000-0000-c000-000000000046");
    virtual result_t GAPI_CALL QueryInterface(const iid_t& iid, void** out) = 0;
    virtual std::uint32_t GAPI_CALL AddRef() = 0;
    virtual std::uint32_t GAPI_CALL Release() = 0;

protected:
    ~IUnknown() = default;
};

// Wide string of the host (UTF-16, not NUL-terminated necessarily).
struct IStringReadOnly : IUnknown
{
    GAPI_INTERFACE_ID("5b1f6a52-3c0e-4b8e-9f55-6f2a0d8e4a11");
    virtual const char16_t* GAPI_CALL Data() = 0;
    virtual std::uint32_t GAPI_CALL Length() = 0;
};

struct IString : IStringReadOnly
{
    GAPI_INTERFACE_ID("5b1f6a52-3c0e-4b8e-9f55-6f2a0d8e4a12");
    virtual result_t GAPI_CALL Assign(const char16_t* data, std::uint32_t length) = 0;
};

// ---- automation object ------------------------------------------------------------------

enum var_type : std::uint16_t
{
    vt_empty = 0,
    vt_i4 = 3,
    vt_r8 = 5,
    vt_string = 8,
    vt_bool = 11,
    vt_unknown = 13,
    vt_i8 = 20,
};

// Variant argument or result. A result's string or object reference belongs to the caller,
// who releases it (clear()); arguments are borrowed by the callee.
struct variant_t
{
    std::uint16_t type = vt_empty;
    union {
        std::int32_t i4;
        std::int64_t i8;
        double r8;
        std::int32_t boolean;
        IStringReadOnly* str;
        IUnknown* unk;
    };
    variant_t() : i8(0) {}

    void clear()
    {
        if (type == vt_string && str)
            str->Release();
        else if (type == vt_unknown && unk)
            unk->Release();
        type = vt_empty;
        i8 = 0;
    }
};

enum invoke_kind : std::uint16_t
{
    invoke_method = 1,
    invoke_property_get = 2,
    invoke_property_put = 4,
};

// Dispatch identifiers of the automation object's members.
enum automation_member : std::int32_t
{
    disp_message = 12,        // method (string) -> bool: shows a text to the user
    disp_main_window = 21,    // property get -> i4: the host's main window handle
    disp_document_count = 30, // property get -> i4
    disp_document_path = 31,  // method (i4 index) -> string
    disp_folder = 45,         // method (i4 kind) -> string: the host's folder of that kind
    disp_long_operation = 46, // method (bool started) -> nothing: a long operation starts/ends
    disp_process_messages = 47, // method -> nothing: the host processes its pending messages
};

struct IAutomation : IUnknown
{
    GAPI_INTERFACE_ID("E36BC97C-39D6-4402-9C25-C7008A217E02");
    // args are in call order; result may be null when the caller does not want it.
    virtual result_t GAPI_CALL Invoke(std::int32_t dispatchId, std::uint16_t kind,
                                      const variant_t* args, std::uint32_t argc,
                                      variant_t* result) = 0;
};

// ---- documents ---------------------------------------------------------------------------

struct IView : IUnknown
{
    GAPI_INTERFACE_ID("0f7b9f10-3b52-4f3a-a1a3-7c2d40e15a01");
    virtual std::int32_t GAPI_CALL Number() = 0;
    virtual result_t GAPI_CALL Name(IStringReadOnly** out) = 0;
    virtual double GAPI_CALL Scale() = 0;
};

struct IViews : IUnknown
{
    GAPI_INTERFACE_ID("ccec40f6-ef13-42a7-80c8-a91fd7b07228");
    virtual std::int32_t GAPI_CALL Count() = 0;
    virtual result_t GAPI_CALL Item(std::int32_t index, IView** out) = 0;
};

struct ILayoutSheet : IUnknown
{
    GAPI_INTERFACE_ID("0f7b9f10-3b52-4f3a-a1a3-7c2d40e15a02");
    virtual double GAPI_CALL Width() = 0;
    virtual double GAPI_CALL Height() = 0;
};

struct ILayoutSheets : IUnknown
{
    GAPI_INTERFACE_ID("0f7b9f10-3b52-4f3a-a1a3-7c2d40e15a03");
    virtual std::int32_t GAPI_CALL Count() = 0;
    virtual result_t GAPI_CALL Item(std::int32_t index, ILayoutSheet** out) = 0;
};

struct ILayer : IUnknown
{
    GAPI_INTERFACE_ID("0f7b9f10-3b52-4f3a-a1a3-7c2d40e15a04");
    virtual std::int32_t GAPI_CALL Number() = 0;
    virtual bool GAPI_CALL Visible() = 0;
    virtual result_t GAPI_CALL SetVisible(bool visible) = 0;
};

struct ILayers : IUnknown
{
    GAPI_INTERFACE_ID("0f7b9f10-3b52-4f3a-a1a3-7c2d40e15a05");
    virtual std::int32_t GAPI_CALL Count() = 0;
    virtual result_t GAPI_CALL Item(std::int32_t index, ILayer** out) = 0;
};

struct IGravisDocument : IUnknown
{
    GAPI_INTERFACE_ID("0f7b9f10-3b52-4f3a-a1a3-7c2d40e15a06");
    // Identifier of the document, unique in the host process.
    virtual std::int64_t GAPI_CALL Reference() = 0;
    // Full file name; empty while the document has never been saved.
    virtual result_t GAPI_CALL PathName(IStringReadOnly** out) = 0;
    virtual std::int32_t GAPI_CALL FormatVersion() = 0;
    virtual bool GAPI_CALL Visible() = 0;
    virtual result_t GAPI_CALL Save() = 0;
    virtual result_t GAPI_CALL SaveAs(IStringReadOnly* path) = 0;
    // Writes the document in the format of an earlier host version.
    virtual result_t GAPI_CALL SaveAsPrevious(IStringReadOnly* path, std::int32_t version) = 0;
    // Writes a PNG rendering of the document that fits into size x size pixels.
    virtual result_t GAPI_CALL SavePreview(IStringReadOnly* pngPath, std::int32_t size) = 0;
    virtual result_t GAPI_CALL Close() = 0;
};

// ---- application events (native application) -----------------------------------------------

// Parameters of a save in an earlier format; opaque to the library.
struct ISavePreviousParams : IUnknown
{
    GAPI_INTERFACE_ID("0f7b9f10-3b52-4f3a-a1a3-7c2d40e15a07");
};

// The thirteen application events, in the order the host numbers its handlers.
struct IAppEvents : IUnknown
{
    GAPI_INTERFACE_ID("0f7b9f10-3b52-4f3a-a1a3-7c2d40e15a08");
    virtual bool GAPI_CALL KeyDown(std::int32_t& key, std::int32_t repeat, std::int32_t keys) = 0;
    virtual bool GAPI_CALL KeyUp(std::int32_t& key, std::int32_t repeat, std::int32_t keys) = 0;
    virtual bool GAPI_CALL ThemeChanged(std::int32_t theme) = 0;
    virtual void GAPI_CALL ApplicationClosing() = 0;
    virtual bool GAPI_CALL CanProceed() = 0;
    virtual bool GAPI_CALL CreateDocumentRequest(std::int32_t documentType) = 0;
    virtual bool GAPI_CALL OpenDocumentRequest(IStringReadOnly* path) = 0;
    virtual void GAPI_CALL DocumentActivated(IGravisDocument* document) = 0;
    virtual void GAPI_CALL DocumentOpened(IGravisDocument* document) = 0;
    virtual void GAPI_CALL DocumentClosing(IGravisDocument* document) = 0;
    virtual bool GAPI_CALL SavePreviousRequest(IGravisDocument* document, std::int32_t version,
                                               ISavePreviousParams* params, bool& flag) = 0;
    virtual void GAPI_CALL SavePreviousStarted(IGravisDocument* document, std::int32_t version,
                                               ISavePreviousParams* params) = 0;
    virtual void GAPI_CALL SavePreviousFinished(IGravisDocument* document, std::int32_t version,
                                                ISavePreviousParams* params) = 0;
};

struct IEventSource : IUnknown
{
    GAPI_INTERFACE_ID("0f7b9f10-3b52-4f3a-a1a3-7c2d40e15a09");
    // The source keeps a reference to sink until Unadvise.
    virtual result_t GAPI_CALL Advise(const char16_t* name, IAppEvents* sink,
                                      std::uint32_t* cookie) = 0;
    virtual result_t GAPI_CALL Unadvise(std::uint32_t cookie) = 0;
};

// Native application interface (GetGravisApplication).
struct IGravisApplication : IUnknown
{
    GAPI_INTERFACE_ID("0f7b9f10-3b52-4f3a-a1a3-7c2d40e15a0a");
    virtual std::int32_t GAPI_CALL ShowMessageBox(IStringReadOnly* text, IStringReadOnly* caption,
                                                  std::int32_t style, std::int32_t reserved1,
                                                  std::int32_t reserved2) = 0;
    virtual std::int32_t GAPI_CALL DocumentCount() = 0;
    virtual result_t GAPI_CALL Document(std::int32_t index, IGravisDocument** out) = 0;
    virtual result_t GAPI_CALL EventSource(IEventSource** out) = 0;
};

// ---- new object API ----------------------------------------------------------------------

struct IApplication7 : IUnknown
{
    GAPI_INTERFACE_ID("6A2EFAF7-8254-45A5-9DC8-2213F16AF5D7");
    virtual std::int32_t GAPI_CALL Theme() = 0;
    virtual result_t GAPI_CALL Version(IStringReadOnly** out) = 0;
    virtual std::int32_t GAPI_CALL DocumentCount() = 0;
    virtual result_t GAPI_CALL Document(std::int32_t index, IGravisDocument** out) = 0;
    // Opens a document file, in a window or invisibly. e_later_version when a later host wrote
    // it.
    virtual result_t GAPI_CALL OpenDocument(IStringReadOnly* path, bool visible,
                                            IGravisDocument** out) = 0;
};

// Entry points of the modules: each returns a new reference, or null.
using create_object_fn = IUnknown*(GAPI_CALL*)();

inline constexpr const char* automation_entry = "CreateGravisObject";
inline constexpr const char* application7_entry = "CreateGravisApplication";
inline constexpr const char* native_application_entry = "GetGravisApplication";

#if defined(_WIN32)
inline constexpr const wchar_t* automation_module = L"gAPI5.dll";
inline constexpr const wchar_t* application7_module = L"gAPI7.dll";
inline constexpr const wchar_t* native_module = L"gvAPI.dll";
#else
inline constexpr const char* automation_module = "libgAPI5.so";
inline constexpr const char* application7_module = "libgAPI7.so";
inline constexpr const char* native_module = "libgvAPI.so";
#endif

} // namespace gapi::abi
