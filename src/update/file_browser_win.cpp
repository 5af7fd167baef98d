// The Windows shell: the folder opened in Explorer with the one file selected. The shell is
// initialised for the calling thread first.

#include "file_browser_shell.h"

#include <windows.h>

#include <objbase.h>
#include <shlobj.h>

namespace shell {

void show_item(const std::wstring& folder, const std::wstring& file)
{
    const HRESULT init = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    PIDLIST_ABSOLUTE folderItem = ILCreateFromPathW(folder.c_str());
    PIDLIST_ABSOLUTE fileItem = ILCreateFromPathW(file.c_str());
    if (folderItem && fileItem) {
        PCUITEMID_CHILD selected[] = {ILFindLastID(fileItem)};
        SHOpenFolderAndSelectItems(folderItem, 1, selected, 0);
    }
    if (fileItem) ILFree(fileItem);
    if (folderItem) ILFree(folderItem);
    if (SUCCEEDED(init)) CoUninitialize();
}

} // namespace shell
