#pragma once

#include <QString>

namespace sandbox {

class MainWindow;
class MarloUssLibrary;

// Calls every export of the library in turn with scripted answers, saving a picture of each
// dialog into shotFolder and printing one line per call. Returns the number of calls that did
// not behave.
int runHeadless(MarloUssLibrary& library, MainWindow& window, const QString& workFolder,
                const QString& shotFolder);

} // namespace sandbox
