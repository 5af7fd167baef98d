#include "engsys/engsys.h"

#include "engsys/drawing_files.h"
#include "engsys/file_choosers.h"
#include "engsys/part_choice.h"
#include "engsys/save_cdw_dialog.h"
#include "engsys/select_part_dialog.h"
#include "frame/qwinwidget.h"
#include "look/look.h"

#include <QFileDialog>

namespace edw {

bool runSelectPartDialog(quintptr parentWindow, const QByteArray& request, const char** result)
{
    QWinWidget host(parentWindow);
    const PartChoice choice = readPartChoice(request);
    if (choice.version != kRecordVersion) {
        qt::message_box::warning(&host, QStringLiteral("MarloUss"), kDataVersionMismatch);
        return false;
    }

    SelectPartDialog dialog(choice.parts, choice.curPart, &host);
    dialog.setWindowFlags(dialog.windowFlags() | Qt::FramelessWindowHint);
    qt::attach_styled_frame(&dialog);
    if (dialog.exec() != QDialog::Accepted) return false;

    const char* text = keepPartChoiceResult(writePartChoice(request, dialog.chosenPart()));
    if (result) *result = text;
    return true;
}

int runSaveCdwDialog(quintptr parentWindow, const QString& path)
{
    QWinWidget host(parentWindow);
    SaveCdwDialog dialog(path, &host);
    qt::attach_styled_frame(&dialog);
    dialog.setFixedSize(dialog.sizeHint());
    dialog.exec();
    return dialog.choice();
}

wchar_t* runDirectoryDialog(quintptr parentWindow)
{
    QWinWidget host(parentWindow);
    QFileDialog* chooser = makeDirectoryChooser(&host);
    return keepDirectoryResult(runChooser(chooser));
}

wchar_t* runFileSavingDialog(quintptr parentWindow, const QString& defaultPath)
{
    QWinWidget host(parentWindow);
    QFileDialog* chooser = makeFileSavingChooser(&host, defaultPath);
    return keepFileSavingResult(withBackslashes(runChooser(chooser)));
}

} // namespace edw
