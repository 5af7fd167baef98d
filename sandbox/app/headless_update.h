#pragma once

// The drawing-update and medium-dialog exports as the sandbox host calls them: the calls with
// the arguments an engineering library would pass, and the scripted run of the main job.

#include "host_calls.h"

#include <functional>

namespace sandbox {

class MainWindow;
class ModalScript;

// A system record as a piping (or, with ventilation, a ventilation) library sends it, for
// the catalog pool the sandbox opened.
QByteArray mediumRequest(bool ventilation, int version = 1);
// Puts three catalog items with files under folder into the host (idempotent).
void addSampleItems(const QString& folder);

CallResult callMediumDialog(const MarloUssLibrary& library, quintptr window, bool create,
                            bool ventilation, const QByteArray& request);
CallResult callTryUpdateRtw(const MarloUssLibrary& library, const QString& name);
CallResult callIsRtwUpdated(const MarloUssLibrary& library, const QString& name);
CallResult callReloadUpdatedRtw(const MarloUssLibrary& library);
CallResult callShowUpdateDialog(const MarloUssLibrary& library, quintptr window, bool* flag);

// One call of the main job and its verdict (empty when it behaved).
using Step = std::function<void(const std::function<CallResult()>& call,
                                const std::function<QString(const CallResult&)>& verdict)>;

// Calls the five exports with scripted answers, pictures of each dialog light and dark.
void runUpdateCalls(MarloUssLibrary& library, MainWindow& window, ModalScript& script,
                    const QString& workFolder, const Step& step);

} // namespace sandbox
