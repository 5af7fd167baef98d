#pragma once

// The sandbox's side of the element editor: the command description of its sample library,
// the editor's values on the sample elements, and the call of uss_create_clone_edit as a
// host library makes it.

#include "host_calls.h"

#include <QString>
#include <QStringList>

typedef struct es_provider es_provider_t;

namespace sandbox {

class MarloUssLibrary;

// Writes "<folder>/uss_sample_tx.xml" (with "sample_tx.rtw" beside it) and returns the
// description's path. Commands: "uss" (the sample elements' kind: two categories, a panel of
// four groups, no required views), "pump" (requires "3D Деталь" and "Сверху", required
// fields), "valve" (the single category "-").
QString writeSampleEditorLibrary(const QString& folder);

// Gives the sample elements the values the editor reads ("ProjectSurfaces",
// "USS_CATEGORY_NAME").
void addEditorValues(es_provider_t* provider);

struct EditCall
{
    unsigned mode = 0;
    QString packet;
    QString elementId;
    QStringList commands;
    QString command;
    QString category;
    QString categoryPath;
    QString requestText;
    int discipline = 0;
};

// Calls uss_create_clone_edit over window on the sample library's description; text gets the
// identifier of the element written.
CallResult callCreateCloneEdit(const MarloUssLibrary& library, quintptr window,
                               es_provider_t* provider, const QString& workFolder,
                               const EditCall& call);

// "id: <id>; values: name=value, ...; views: <name> <type>/<view type>, ...; model: <name>".
QString describeElement(es_provider_t* provider, const QString& packet, const QString& id);

} // namespace sandbox
