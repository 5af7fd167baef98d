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
inline QString noElements()
{
    return QStringLiteral("Файл не содержит пользовательских элементов");
}
inline QString otherLibrary()
{
    return QStringLiteral("Вы пытаетесь импортировать элементы, принадлежащие другой библиотеке.");
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
inline QString laterVersion()
{
    return QStringLiteral("Элемент создан в более поздней версии");
}
inline QString hostVersionUnknown()
{
    return QStringLiteral("Ошибка при определении версии Грависа");
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
