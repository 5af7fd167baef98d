#include "sample_libraries.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace sandbox {

namespace {

const char* const pipingLibrary = R"(<?xml version="1.0" encoding="utf-8"?>
<library name="Трубопроводы">
  <catalogs>
    <catalog name="ПЭ_Трубы" view="table" grid="1"/>
    <catalog name="ПЭ_Отводы" view="table" grid="1"/>
  </catalogs>
  <commands>
    <command name="piping">
      <subcommand name="user-elements">
        <uss-toolbar name="Пользовательские трубопроводы" catalog="ПЭ_Трубы"/>
      </subcommand>
    </command>
  </commands>
</library>
)";

bool writeOnce(const QString& path, const char* content)
{
    if (QFileInfo::exists(path)) return true;
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile out(path);
    return out.open(QIODevice::WriteOnly) && out.write(content) == qint64(qstrlen(content));
}

} // namespace

bool writeSampleLibraries(const QString& libraryRoot)
{
    return writeOnce(libraryRoot + QStringLiteral("/EngSys_TX/MarloDB/PipingTX.xml"),
                     pipingLibrary);
}

} // namespace sandbox
