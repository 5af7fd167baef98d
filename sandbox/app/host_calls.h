#pragma once

// The calls the sandbox host makes, with the realistic arguments an engineering library would
// pass. Each returns what was passed and what came back, for the host's log.

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace sandbox {

class MarloUssLibrary;

struct CallResult
{
    QString line;                  // "export(arguments) -> result"
    qint64 value = 0;              // the integer or boolean result
    QString text;                  // the text result (JSON, path); empty when none
    const void* pointer = nullptr; // the returned pointer, for buffer checks
};

// A section choice request as a library of engineering systems sends it.
QByteArray selectPartRequest(int version = 1,
                             const QString& current = QStringLiteral("Технология (ТХ)"));

// Writes the command description of a sample calling library in folder and returns the
// library's file path ("<folder>/engsys_tx.rtw", described by "uss_engsys_tx.xml").
QString writeSampleCommandLibrary(const QString& folder);

CallResult callLibraryName(const MarloUssLibrary& library);
CallResult callCommandId(const MarloUssLibrary& library, const QString& libraryFile,
                         const QString& command, unsigned int* id, unsigned int* idcat);
CallResult callSelectPart(const MarloUssLibrary& library, quintptr window,
                          const QByteArray& request);
CallResult callSaveCdw(const MarloUssLibrary& library, const QString& path);
CallResult callChooseDirectory(const MarloUssLibrary& library);
CallResult callFileSaving(const MarloUssLibrary& library, const QString& defaultPath);
CallResult callPointCallback(const MarloUssLibrary& library, int last);

} // namespace sandbox
