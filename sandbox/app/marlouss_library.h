#pragma once

// The library as a host library sees it: loaded by file name from the host's folder, its
// exports resolved by name. The sandbox never links it.

#include "marlouss/marlouss.h"

#include <QLibrary>
#include <QString>

struct RequestInfoW;

namespace sandbox {

class MarloUssLibrary
{
public:
    using LibraryName = decltype(&LIBRARYNAMEW);
    using GetCommandId = decltype(&uss_get_command_id);
    using SelectPart = decltype(&engsys_select_part_dialog);
    using SaveCdw = decltype(&OPEN_SAVE_CDW_DIALOG);
    using ChooseDirectory = decltype(&OPEN_CHOSE_DIRECTORY_DIALOG);
    using FileSaving = decltype(&OPEN_FILE_SAVING_DIALOG);
    using ShowUpdateDialog = decltype(&uss_show_update_dialog);
    using TryUpdateRtw = decltype(&uss_try_update_rtw);
    using IsRtwUpdated = decltype(&uss_is_rtw_updated);
    using ReloadUpdatedRtw = decltype(&uss_reload_updated_rtw);
    using MediumDialog = decltype(&engsys_medium_dialog);
    using PointCallback = int (*)(int, double*, double*, RequestInfoW*, void*, int);

    // The library's file name in a host installation.
    static QString fileName();
    // Mangled name of the selection panel's point callback.
    static const char* pointCallbackSymbol();

    // Loads the library from folder; false with the loader's reason in error().
    bool load(const QString& folder);
    QString error() const { return m_error; }
    QString path() const { return m_library.fileName(); }

    // Each export, or null when the library does not export it.
    LibraryName libraryName = nullptr;
    GetCommandId getCommandId = nullptr;
    SelectPart selectPart = nullptr;
    SaveCdw saveCdw = nullptr;
    ChooseDirectory chooseDirectory = nullptr;
    FileSaving fileSaving = nullptr;
    PointCallback pointCallback = nullptr;
    ShowUpdateDialog showUpdateDialog = nullptr;
    TryUpdateRtw tryUpdateRtw = nullptr;
    IsRtwUpdated isRtwUpdated = nullptr;
    ReloadUpdatedRtw reloadUpdatedRtw = nullptr;
    MediumDialog mediumDialog = nullptr;

private:
    QLibrary m_library;
    QString m_error;
};

} // namespace sandbox
