#include "export_entry.h"

#include "archivekind.h"
#include "exchangetexts.h"
#include "export_uss_dialog.h"
#include "exportuss.h"

#include <catalog/catalog_tree.h>
#include <catalog/esconvert.h>
#include <catalog/notify.h>
#include <look/look.h>

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QStandardPaths>
#include <QVBoxLayout>

#include <unordered_set>

namespace exchange {

namespace {


// The library's progress window, with the host told of the long operation while it is up.
class ExportProgress : public edw::IProgress
{
public:
    ExportProgress(QWidget* parent, const ExportEnvironment& environment)
        : m_parent(parent), m_environment(environment)
    {}
    ~ExportProgress() override { ExportProgress::end(); }

    void begin(const QString& caption, int maximum) override
    {
        if (!m_window) {
            m_window = std::make_unique<QWidget>(m_parent, Qt::Dialog);
            m_window->setObjectName(QStringLiteral("exportProgress"));
            m_window->setWindowTitle(texts::exportDialogCaption());
            auto* layout = new QVBoxLayout(m_window.get());
            m_label = new QLabel(m_window.get());
            m_label->setObjectName(QStringLiteral("progressLabel"));
            m_bar = new QProgressBar(m_window.get());
            m_bar->setObjectName(QStringLiteral("progressBar"));
            layout->addWidget(m_label);
            layout->addWidget(m_bar);
            m_window->resize(420, m_window->sizeHint().height());
            qt::attach_styled_frame(m_window.get());
        }
        m_label->setText(caption);
        m_bar->setRange(0, maximum);
        m_bar->setValue(0);
        m_window->show();
        if (!m_longOperation && m_environment.longOperation) m_environment.longOperation(true);
        m_longOperation = true;
    }
    void setValue(int value) override
    {
        if (m_bar) m_bar->setValue(value);
    }
    void keepAlive() override
    {
        if (m_environment.processMessages) m_environment.processMessages();
        if (m_bar) m_bar->repaint();
    }
    void end() override
    {
        if (m_window) m_window->hide();
        if (m_longOperation && m_environment.longOperation) m_environment.longOperation(false);
        m_longOperation = false;
    }

private:
    QWidget* m_parent;
    const ExportEnvironment& m_environment;
    std::unique_ptr<QWidget> m_window;
    QLabel* m_label = nullptr;
    QProgressBar* m_bar = nullptr;
    bool m_longOperation = false;
};

bool writeArchive(const QString& path, const std::vector<es_stdsize_t*>& elements,
                  bool previousVersion, QWidget* parent, const ExportEnvironment& environment)
{
    ExportProgress window(parent, environment);
    edw::IProgress& progress = environment.progress ? *environment.progress : window;
    const bool written = ExportUss::Export(path, elements, previousVersion, progress);
    if (written)
        edw::messenger().information(QString(), texts::exportDone());
    else
        edw::messenger().critical(QString(), texts::exportFailed());
    return written;
}

} // namespace

ExportEnvironment defaultExportEnvironment()
{
    ExportEnvironment environment;
    environment.chooseFile = [](QWidget* parent, const QString& caption, const QString& start,
                                const QString& filter) {
        return QFileDialog::getSaveFileName(parent, caption, start, filter);
    };
    return environment;
}

QString chooseExportFile(es_provider_t* provider, QWidget* parent,
                         const ExportEnvironment& environment)
{
    const QString extension = archiveExtension(provider);
    QString folder = environment.readSetting ? environment.readSetting(texts::archiveFolderSetting()) : QString();
    if (folder.isEmpty()) folder = environment.documentsFolder;
    if (folder.isEmpty())
        folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString start = folder + QStringLiteral("/export.") + extension;
    if (!environment.chooseFile) return {};
    const QString path = environment.chooseFile(parent, texts::exportDialogCaption(), start,
                                                texts::archiveFilter(extension));
    if (path.isEmpty()) return {};
    const QFileInfo chosen(path);
    if (environment.writeSetting) environment.writeSetting(texts::archiveFolderSetting(), chosen.absolutePath());
    if (chosen.exists() || chosen.isSymLink()) {
        if (!QFile::remove(path)) {
            edw::messenger().critical(QString(), texts::overwriteFailed());
            return {};
        }
    }
    return path;
}

bool exportAll(es_provider_t* provider, QWidget* parent, const ExportEnvironment& environment)
{
    QStringList errors;
    ExportSelection selection(provider, environment.libraryRoot, &errors);
    for (const QString& error : errors)
        edw::messenger().critical(QString(), error);
    if (selection.total() == 0) {
        edw::messenger().information(QString(), texts::catalogEmpty());
        return false;
    }

    std::vector<es_stdsize_t*> elements;
    bool previousVersion = false;
    {
        ExportUssDialog dialog(selection, parent);
        dialog.setHelp(environment.help);
        const int result = environment.exec ? environment.exec(dialog) : dialog.exec();
        if (result != QDialog::Accepted) return false;
        elements = dialog.elements();
        previousVersion = dialog.previousVersion();
    }
    if (elements.empty()) return false;

    const QString path = chooseExportFile(provider, parent, environment);
    if (path.isEmpty()) return false;
    return writeArchive(path, elements, previousVersion, parent, environment);
}

bool exportFromList(const QString& list, const QString& separator, es_provider_t* provider,
                    QWidget* parent, const ExportEnvironment& environment)
{
    const QStringList parts =
        separator.isEmpty() ? QStringList{list} : list.split(separator, Qt::KeepEmptyParts);
    if (parts.size() % 2 != 0) return false;

    const std::map<QString, es_packet_t*> packets = edw::packets(provider);
    std::vector<es_stdsize_t*> elements;
    std::unordered_set<es_stdsize_t*> seen;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const auto packet = packets.find(parts[i]);
        if (packet == packets.end()) continue;
        es_stdsize_t* element = packet_FindStdSize(packet->second, edw::toEs(parts[i + 1]).c_str());
        if (element && seen.insert(element).second) elements.push_back(element);
    }
    if (elements.empty()) return false;

    const QString path = chooseExportFile(provider, parent, environment);
    if (path.isEmpty()) return false;
    return writeArchive(path, elements, false, parent, environment);
}

} // namespace exchange
