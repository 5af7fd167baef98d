#include "editor/editor_environment.h"

#include "catalog/host.h"
#include "look/message_box.h"

#include <QFileDialog>
#include <QHash>

#include <memory>

namespace edw {

EditorEnvironment defaultEnvironment()
{
    EditorEnvironment environment;
    auto settings = std::make_shared<QHash<QString, QString>>();
    environment.readSetting = [settings](const QString& key) { return settings->value(key); };
    environment.writeSetting = [settings](const QString& key, const QString& value) {
        settings->insert(key, value);
    };
    environment.openFile = [](QWidget* parent, const QString& title, const QString& folder,
                              const QString& filter) {
        return QFileDialog::getOpenFileName(parent, title, folder, filter);
    };
    environment.saveFile = [](QWidget* parent, const QString& title, const QString& path,
                              const QString& filter) {
        return QFileDialog::getSaveFileName(parent, title, path, filter);
    };
    environment.canOpen = [](const QString& file) {
        IHost* documents = host();
        return !documents || documents->hiddenLayers(file).has_value();
    };
    environment.warn = [](QWidget* parent, const QString& text) {
        qt::message_box::warning(parent, QStringLiteral(" "), text);
    };
    return environment;
}

} // namespace edw
