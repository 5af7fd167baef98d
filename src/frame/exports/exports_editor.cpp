// The element editor's export: one line around the boundary, like the others.

#include "marlouss/marlouss.h"

#include "editor/edit_session.h"
#include "frame/exports/boundary.h"
#include "frame/qwinwidget.h"
#include "frame/session.h"
#include "frame/settings.h"
#include "look/gui_messenger.h"

#include <cstddef>
#include <cstring>
#include <string>

namespace {

// A field the caller's record reaches (by the size it gives), else zero.
template <typename T> T field(const marlouss_edit_request_t& request, std::size_t offset)
{
    if (offset + sizeof(T) > request.size) return T{};
    T value;
    std::memcpy(&value, reinterpret_cast<const char*>(&request) + offset, sizeof(T));
    return value;
}
#define MARLOUSS_FIELD(request, name)                                                              \
    field<decltype(marlouss_edit_request_t::name)>(request, offsetof(marlouss_edit_request_t, name))

edw::EditRequest readRequest(const marlouss_edit_request_t& r)
{
    edw::EditRequest request;
    request.provider = MARLOUSS_FIELD(r, provider);
    request.mode = MARLOUSS_FIELD(r, mode);
    request.packet = edw::fromWide(MARLOUSS_FIELD(r, packet));
    request.elementId = edw::fromWide(MARLOUSS_FIELD(r, element_id));
    request.commandsFile = edw::fromWide(MARLOUSS_FIELD(r, commands_file));
    const wchar_t* const* commands = MARLOUSS_FIELD(r, commands);
    const uint32_t count = MARLOUSS_FIELD(r, command_count);
    for (uint32_t i = 0; commands && i < count; ++i)
        request.commands << edw::fromWide(commands[i]);
    request.command = edw::fromWide(MARLOUSS_FIELD(r, command));
    request.selectionPath = edw::fromWide(MARLOUSS_FIELD(r, selection_path));
    request.secondSelectionPath = edw::fromWide(MARLOUSS_FIELD(r, second_selection_path));
    request.category = edw::fromWide(MARLOUSS_FIELD(r, category));
    request.categoryPath = edw::fromWide(MARLOUSS_FIELD(r, category_path));
    request.idPrefix = edw::fromWide(MARLOUSS_FIELD(r, id_prefix));
    request.requestText = edw::fromWide(MARLOUSS_FIELD(r, request_text));
    request.noModel = MARLOUSS_FIELD(r, no_3d_model) != 0;
    request.discipline = MARLOUSS_FIELD(r, discipline);
    return request;
}

// The editor with the library's settings file, choosers, message box and host.
edw::EditorEnvironment libraryEnvironment()
{
    edw::EditorEnvironment environment = edw::defaultEnvironment();
    environment.readSetting = [](const QString& key) { return read_setting(key); };
    environment.writeSetting = [](const QString& key, const QString& value) {
        write_setting(key, value);
    };
    return environment;
}

// The identifier of the last element written, handed to the caller.
const wchar_t* keepWrittenId(const QString& id)
{
    static std::wstring kept;
    kept = id.toStdWString();
    return kept.c_str();
}

bool createCloneEdit(marlouss_edit_request_t* record)
{
    if (!record || record->size < offsetof(marlouss_edit_request_t, provider)) return false;
    prepare_dialog_session();
    static qt::GuiMessenger messenger;
    static const bool installed = (edw::setMessenger(&messenger), true);
    Q_UNUSED(installed);
    QWinWidget host(static_cast<quintptr>(MARLOUSS_FIELD(*record, parent)));
    QString written;
    if (!edw::runElementEditor(readRequest(*record), &host, libraryEnvironment(), &written))
        return false;
    if (offsetof(marlouss_edit_request_t, written_id) + sizeof(record->written_id) <= record->size)
        record->written_id = keepWrittenId(written);
    return true;
}

} // namespace

extern "C" {

MARLOUSS_API bool uss_create_clone_edit(marlouss_edit_request_t* request)
{
    return edw::guarded(false, [&] { return createCloneEdit(request); });
}

} // extern "C"
