#include "editor/edit_session.h"

#include "catalog/catalog_tree.h"
#include "catalog/element_save.h"
#include "catalog/esconvert.h"
#include "catalog/spec_description.h"
#include "catalog/stdsize.h"
#include "catalog/view_folders.h"
#include "catalog/xml_controls.h"
#include "editor/parameter_panel.h"
#include "editor/uss_dialog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <exception>
#include <memory>

namespace edw {
namespace {

es_stdsize_t* findSource(const EditRequest& request)
{
    if (request.mode == UssDialog::Create) return nullptr;
    const auto all = packets(request.provider);
    const auto packet = all.find(request.packet);
    if (packet == all.end()) return nullptr;
    return packet_FindStdSize(packet->second, toEs(request.elementId).c_str());
}

QString panelCommand(const EditRequest& request, es_stdsize_t* source)
{
    if (!request.command.isEmpty()) return request.command;
    const QString type = CStdSize(source).type();
    if (source && request.commands.contains(type)) return type;
    return request.commands.size() == 1 ? request.commands.front() : QString();
}

// The category path a new element is filed under.
QString newElementPath(const UssDialog& dialog, const EditRequest& request, es_stdsize_t* source)
{
    if (!request.categoryPath.isEmpty()) return request.categoryPath;
    if (source) return categoryPath(folder_GetParentFolder(folderOf(source)));
    QString path = request.packet;
    if (!dialog.categoryText().isEmpty()) path += QLatin1Char('\\') + dialog.categoryText();
    return path;
}

PanelParameter parameter(const QString& name, const QVariant& value)
{
    PanelParameter record;
    record.name = name;
    record.label = name;
    record.value = value;
    return record;
}

} // namespace

ElementSaveRequest saveRequestFrom(const UssDialog& dialog, const EditRequest& request,
                                   es_stdsize_t* source, const QString& workFolder)
{
    ElementSaveRequest save;
    save.provider = request.provider;
    save.type = dialog.command();
    save.idPrefix = request.idPrefix;
    save.request = request.requestText.isEmpty() ? dialog.command() : request.requestText;
    if (request.mode == UssDialog::Edit)
        save.target = source;
    else
        save.categoryPath = newElementPath(dialog, request, source);
    if (request.mode == UssDialog::Clone) save.templateElement = source;

    save.parameters = dialog.parameterPanel()->values();
    save.parameters.push_back(parameter("ProjectSurfaces", int(dialog.projectSurfaces())));
    save.parameters.push_back(parameter("UseModelColor", int(dialog.useModelColor())));
    if (dialog.specificationLayout()) {
        save.parameters.push_back(parameter("FIRST_PART", dialog.specPartFirst()));
        save.parameters.push_back(parameter("SECOND_PART", dialog.specPartSecond()));
    } else if (!dialog.categoryData().isEmpty()) {
        save.parameters.push_back(parameter("USS_CATEGORY_NAME", dialog.categoryText()));
        save.parameters.push_back(parameter("USS_CATEGORY_ID", dialog.categoryData()));
    }

    // Each image is copied into the working folder first, so that the icons written beside
    // the files stay there and go with it.
    const auto& views = const_cast<UssDialog&>(dialog).viewModel();
    for (const ViewSlot& slot : views.all()) {
        const QString file = views.sourceFile(slot);
        if (file.isEmpty()) continue;
        const QString copy =
            QDir(workFolder)
                .filePath(
                    QStringLiteral("view_%1.%2").arg(slot.index).arg(QFileInfo(file).suffix()));
        QFile::remove(copy);
        ViewFile view;
        view.kind = slot.index;
        view.file = QFile::copy(file, copy) ? copy : file;
        view.name = QString::fromUtf8(viewSlotSpec(slot.index).text);
        save.views.push_back(view);
    }
    // Specifications stay as the source has them (cloning copies them, editing keeps them).
    if (source) {
        save.specifications = readSpecifications(source);
        save.specificationsInCatalogForm = true;
    }
    return save;
}

bool runElementEditor(const EditRequest& request, QWidget* parent,
                      const EditorEnvironment& environment, QString* writtenId,
                      const std::function<int(UssDialog&)>& exec)
{
    es_stdsize_t* source = findSource(request);
    if (request.mode != UssDialog::Create && !source) return false;

    const QString root = request.workRoot.isEmpty() ? QDir::tempPath() : request.workRoot;
    QDir().mkpath(root);
    QTemporaryDir work(QDir(root).filePath(QStringLiteral("marlouss-edit-XXXXXX")));
    if (!work.isValid()) return false;

    ControlList panel = readControlList(request.commandsFile, panelCommand(request, source));
    if (source) fillValues(panel, source);

    // The folders of the views chosen in this session join those remembered from earlier
    // ones; the file is written only when something was chosen.
    ViewFolders folders;
    bool remembered = false;
    EditorEnvironment session = environment;
    session.rememberViewFolder = [&folders, &remembered, environment](int kind,
                                                                      const QString& folder) {
        if (!remembered) {
            for (int k = 0; k < kViewSlotCount; ++k)
                folders[k];
            loadViewFolders(folders);
        }
        remembered = true;
        folders[kind] = folder;
        if (environment.rememberViewFolder) environment.rememberViewFolder(kind, folder);
    };

    UssDialog dialog(parent, source, panel, request.commandsFile, request.commands,
                     request.selectionPath, request.secondSelectionPath, request.mode, work.path(),
                     request.category, request.noModel, request.discipline, session);
    const int result = exec ? exec(dialog) : dialog.exec();
    if (remembered) {
        try {
            saveViewFolders(folders);
        } catch (const std::exception&) {
            // Remembered folders are a convenience: one that cannot be written costs nothing
            // of the element.
        }
    }
    if (result != QDialog::Accepted) return false;

    es_stdsize_t* written = saveElement(saveRequestFrom(dialog, request, source, work.path()));
    if (!written) return false;
    if (writtenId) *writtenId = CStdSize(written).id();
    return true;
}

} // namespace edw
