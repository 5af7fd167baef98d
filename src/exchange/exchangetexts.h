#pragma once

#include <QString>

// The texts that the exchange core shows or logs. Callers that show their own messages (the
// dialogs, the command line) take them from here so that every front end says the same.
namespace exchange::texts {

inline QString notExportFile()
{
    return QStringLiteral("Файл не является файлом экспортированных элементов.\nДля получения "
                          "информации по устранению проблемы нажмите кнопку Справка.");
}
// %1 the key of the archive's document, %2 the key the catalog's kind reads.
inline QString otherKind(const QString& found, const QString& expected)
{
    return QStringLiteral("Архив выгружен из каталога другого вида: %1 (документ %1.json), "
                          "а каталог этого вида читает %2.json.")
        .arg(found, expected);
}
inline QString noElements()
{
    return QStringLiteral("Файл не содержит пользовательских элементов");
}
inline QString otherLibrary()
{
    return QStringLiteral("Вы пытаетесь импортировать элементы, принадлежащие другой библиотеке.");
}
// %1 the system's temporary folder, where an import keeps the elements it reads.
inline QString temporaryFailed(const QString& folder)
{
    return QStringLiteral("Не удалось записать временные файлы импорта в папку %1.").arg(folder);
}
inline QString folderNotCreated()
{
    return QStringLiteral("Не удалось создать папку.");
}
inline QString allPresent()
{
    return QStringLiteral("Все импортируемые элементы присутствуют в базе.");
}
inline QString importDone()
{
    return QStringLiteral("Импорт пользовательских элементов завершен.");
}
// %1 written, %2 kept.
inline QString importStopped()
{
    return QStringLiteral("Импорт прерван.\nИмпортировано %1 из %2.");
}
// Why an import writes nothing or stops: %1 the catalog file, %2 the store's reason.
inline QString catalogReadOnly(const QString& path)
{
    return QStringLiteral("Каталог %1 доступен только для чтения: импорт в него невозможен.")
        .arg(path);
}
inline QString catalogLocked(const QString& path, const QString& reason)
{
    return QStringLiteral("Каталог %1 занят: другая программа держит блокировку записи (%2).")
        .arg(path, reason);
}
inline QString catalogUnwritable(const QString& path, const QString& reason)
{
    return QStringLiteral("В каталог %1 нельзя записать: %2").arg(path, reason);
}
inline QString catalogDamaged(const QString& path, const QString& reason)
{
    return QStringLiteral("Файл каталога %1 повреждён, импорт в него не выполняется: %2")
        .arg(path, reason);
}
// %1 packet, %2 element id, %3 what was being written, %4 the store's reason.
inline QString elementNotWritten()
{
    return QStringLiteral("Элемент \"%2\" пакета \"%1\" не записан (%3): %4");
}
inline QString laterVersion()
{
    return QStringLiteral("Элемент создан в более поздней версии");
}
inline QString hostVersionUnknown()
{
    return QStringLiteral("Ошибка при определении версии Грависа");
}

// The setting both archive choosers start in and store the chosen archive's folder under.
inline QString archiveFolderSetting()
{
    return QStringLiteral("uss_import_path");
}
// Filter of both archive choosers; %1 the archive's extension.
inline QString archiveFilter(const QString& extension)
{
    return QStringLiteral("Пользовательские элементы (*.%1);;Все файлы (*.*)").arg(extension);
}
inline QString importCaption()
{
    return QStringLiteral("Импорт пользовательских элементов");
}

inline QString exportCaption()
{
    return QStringLiteral("Экспорт пользовательских элементов:");
}
inline QString exportDone()
{
    return QStringLiteral("Экспорт пользовательских элементов завершен");
}
inline QString exportFailed()
{
    return QStringLiteral("Не удалось экспортировать пользовательские элементы.\nДля получения "
                          "информации по устранению проблемы нажмите кнопку Справка.");
}
inline QString jsonFailed()
{
    return QStringLiteral("Не смогли сконвертировать в json");
}
inline QString archiveFailed()
{
    return QStringLiteral("Не смогли создать архив");
}
inline QString fileMissing(const QString& packet, const QString& id, const QString& file)
{
    return QStringLiteral("Элемент \"%2\" пакета \"%1\": нет файла %3").arg(packet, id, file);
}
inline QString jsonAddFailed()
{
    return QStringLiteral("Не смогли добавить файл json");
}

// Debug log.
inline QString jsonMissing()
{
    return QStringLiteral("Не смогли найти json");
}
inline QString jsonUnparsable()
{
    return QStringLiteral("Не смогли распрасить json");
}

} // namespace exchange::texts
