#pragma once

#include "editor/editor_environment.h"

#include <esdata/esdata.h>

#include <QString>
#include <QStringList>

#include <functional>

class QWidget;

namespace edw {

// What a host library asks of the element editor (the request record of the export, read).
struct EditRequest
{
    es_provider_t* provider = nullptr;
    unsigned mode = 0; // 0 create, 1 clone, 2 edit
    // The source element of clone and edit.
    QString packet;
    QString elementId;
    QString commandsFile;
    QStringList commands;
    // The command whose parameter panel is shown; empty: the source's type when it is one of
    // the commands, else the only command.
    QString command;
    QString selectionPath;
    QString secondSelectionPath;
    QString category; // preselected by name
    bool noModel = false;
    int discipline = 0;
    // Where a new element is filed ("\"-separated, packet first); empty: beside the source
    // (clone), or the packet of the request followed by the chosen category (create).
    QString categoryPath;
    QString idPrefix;
    QString requestText; // the identifier's tail; empty: the command's name
    // Folder under which the working folder of extracted originals is made; empty: the
    // system's temporary folder.
    QString workRoot;
};

// Runs the editor for a request over parent: prepares the source element, its extracted
// originals and the parameter panel, shows the dialog and, when it is accepted, writes the
// element with the save sequence. The working folder is removed on every path. Returns
// whether an element was written; its identifier goes to writtenId. Cancel writes nothing.
class UssDialog;
bool runElementEditor(const EditRequest& request, QWidget* parent,
                      const EditorEnvironment& environment = defaultEnvironment(),
                      QString* writtenId = nullptr,
                      const std::function<int(UssDialog&)>& exec = {});

// What an accepted dialog writes: the save request of the catalog, built from the dialog.
struct ElementSaveRequest;
ElementSaveRequest saveRequestFrom(const UssDialog& dialog, const EditRequest& request,
                                   es_stdsize_t* source, const QString& workFolder);

} // namespace edw
