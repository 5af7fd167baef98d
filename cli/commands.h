#pragma once

#include <QStringList>

namespace ussctl {

// Each command takes its arguments without the program and command names and returns the
// exit code; failures are thrown as CommandError.
int runCreate(const QStringList& args);
int runList(const QStringList& args);
int runGenerate(const QStringList& args);
int runExport(const QStringList& args);
int runImport(const QStringList& args);
int runVerify(const QStringList& args);

} // namespace ussctl
