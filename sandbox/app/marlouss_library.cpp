#include "marlouss_library.h"

namespace sandbox {

QString MarloUssLibrary::fileName()
{
#if defined(Q_OS_WIN)
    return QStringLiteral("MarloUss.dll");
#else
    return QStringLiteral("libMarloUss.so");
#endif
}

const char* MarloUssLibrary::pointCallbackSymbol()
{
#if defined(_MSC_VER)
    return "?CallBackP@SelectionPanel@@SAHHPEAN0PEAURequestInfoW@@PEAXH@Z";
#else
    return "_ZN14SelectionPanel9CallBackPEiPdS0_P12RequestInfoWPvi";
#endif
}

bool MarloUssLibrary::load(const QString& folder)
{
    m_library.setFileName(folder + QLatin1Char('/') + fileName());
    if (!m_library.load()) {
        m_error = m_library.errorString();
        return false;
    }
    libraryName = reinterpret_cast<LibraryName>(m_library.resolve("LIBRARYNAMEW"));
    getCommandId = reinterpret_cast<GetCommandId>(m_library.resolve("uss_get_command_id"));
    selectPart = reinterpret_cast<SelectPart>(m_library.resolve("engsys_select_part_dialog"));
    saveCdw = reinterpret_cast<SaveCdw>(m_library.resolve("OPEN_SAVE_CDW_DIALOG"));
    chooseDirectory =
        reinterpret_cast<ChooseDirectory>(m_library.resolve("OPEN_CHOSE_DIRECTORY_DIALOG"));
    fileSaving = reinterpret_cast<FileSaving>(m_library.resolve("OPEN_FILE_SAVING_DIALOG"));
    pointCallback = reinterpret_cast<PointCallback>(m_library.resolve(pointCallbackSymbol()));
    showUpdateDialog =
        reinterpret_cast<ShowUpdateDialog>(m_library.resolve("uss_show_update_dialog"));
    tryUpdateRtw = reinterpret_cast<TryUpdateRtw>(m_library.resolve("uss_try_update_rtw"));
    isRtwUpdated = reinterpret_cast<IsRtwUpdated>(m_library.resolve("uss_is_rtw_updated"));
    reloadUpdatedRtw =
        reinterpret_cast<ReloadUpdatedRtw>(m_library.resolve("uss_reload_updated_rtw"));
    mediumDialog = reinterpret_cast<MediumDialog>(m_library.resolve("engsys_medium_dialog"));
    return true;
}

} // namespace sandbox
