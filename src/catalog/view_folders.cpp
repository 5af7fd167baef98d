#include "view_folders.h"

#include "host.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <json/json.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <system_error>

namespace edw {

namespace {

constexpr std::array<const char*, 12> keys{
    "common_top_path",   "common_front_path", "common_back_path",  "common_left_path",
    "common_right_path", "simple_top_path",   "simple_front_path", "simple_back_path",
    "simple_left_path",  "simple_right_path", "gost_path",         "m3d_path"};

std::filesystem::path toPath(const QString& file)
{
#if defined(_WIN32)
    return std::filesystem::path(file.toStdWString());
#else
    return std::filesystem::path(QFile::encodeName(file).toStdString());
#endif
}

QString computeSettingsPath()
{
    QString base;
    if (IHost* h = host()) base = h->folder(3);
    if (base.isEmpty())
        base = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QDir::cleanPath(base + QStringLiteral("/aec/marlouss/settings.json"));
}

} // namespace

QString viewFolderKey(int kind)
{
    if (kind < 0 || kind >= static_cast<int>(keys.size())) return {};
    return QLatin1String(keys[static_cast<size_t>(kind)]);
}

QString settingsFilePath()
{
    static const QString path = computeSettingsPath();
    return path;
}

void loadViewFolders(ViewFolders& folders)
{
    loadViewFolders(folders, settingsFilePath());
}

void loadViewFolders(ViewFolders& folders, const QString& file)
{
    QFile input(file);
    if (!input.exists()) return;
    Json::Value root;
    if (input.open(QIODevice::ReadOnly)) {
        const QByteArray text = input.readAll();
        Json::CharReaderBuilder builder;
        std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        std::string errors;
        if (!reader->parse(text.constData(), text.constData() + text.size(), &root, &errors))
            root = Json::Value();
    }
    if (!root.isObject()) root = Json::Value(Json::objectValue);
    for (size_t kind = 0; kind < keys.size(); ++kind) {
        const Json::Value& member = root[keys[kind]];
        const std::string text = member.isString() ? member.asString() : std::string();
        folders[static_cast<int>(kind)] = QString::fromStdString(text);
    }
}

void saveViewFolders(const ViewFolders& folders)
{
    saveViewFolders(folders, settingsFilePath());
}

void saveViewFolders(const ViewFolders& folders, const QString& file)
{
    Json::Value root(Json::objectValue);
    for (size_t kind = 0; kind < keys.size(); ++kind)
        root[keys[kind]] = folders.at(static_cast<int>(kind)).toStdString();

    const std::filesystem::path path = toPath(file);
    const std::filesystem::path parent = path.parent_path();
    if (!parent.empty()) {
        std::error_code error;
        std::filesystem::create_directories(parent, error);
        if (error) throw std::filesystem::filesystem_error("create_directories", parent, error);
    }
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif
    Json::StyledWriter writer;
    const std::string text = writer.write(root);
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
}

} // namespace edw
