// The questions asked when drawings are produced from a building model: the drawing-exists
// choice and the folder and file choosers with their result buffers.

#include "engsys/drawing_files.h"
#include "engsys/engsys.h"
#include "engsys/file_choosers.h"
#include "engsys/save_cdw_dialog.h"
#include "look/look.h"
#include "modal_answer.h"

#include <QCommandLinkButton>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTreeView>

namespace {

QAbstractButton* buttonOf(QWidget* dialog, QDialogButtonBox::ButtonRole role)
{
    auto* box = dialog->findChild<QDialogButtonBox*>("buttonBox");
    for (QAbstractButton* button : box->buttons()) {
        if (box->buttonRole(button) == role) return button;
    }
    return nullptr;
}

// Counts the language changes the application is told of.
struct LanguageChanges : QObject
{
    LanguageChanges() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == qApp && event->type() == QEvent::LanguageChange) ++count;
        return false;
    }
    int count = 0;
};

} // namespace

class DrawingFilesTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void titleNamesTheExistingDrawing_data();
    void titleNamesTheExistingDrawing();
    void eachChoiceHasItsTextAndResult_data();
    void eachChoiceHasItsTextAndResult();
    void closingMeansCancel_data();
    void closingMeansCancel();
    void fileResultUsesBackslashes_data();
    void fileResultUsesBackslashes();
    void fileResultBufferIsShared();
    void choosersSpeakRussianWithoutTranslators_data();
    void choosersSpeakRussianWithoutTranslators();
    void cancelledChoosersGiveEmptyText();
};

void DrawingFilesTest::cleanup()
{
    QVERIFY2(!QApplication::activeModalWidget(), "a modal dialog was left open");
}

void DrawingFilesTest::titleNamesTheExistingDrawing_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name"); // as the title "Чертеж <name> уже существует" shows it
    QTest::newRow("Windows path") << "D:\\work\\plan.cdw" << QString("plan.cdw");
    QTest::newRow("no backslash: whole string less four")
        << "C:/work/plan.cdw" << QString("C:/work/plan.cdw");
    QTest::newRow("name only") << "plan.cdw" << QString("plan.cdw");
    QTest::newRow("other extension dropped too") << "D:\\work\\plan.frw" << QString("plan.cdw");
    QTest::newRow("shorter than four kept whole") << "D:\\a\\abc" << QString("abc.cdw");
    QTest::newRow("exactly four") << "D:\\a\\.cdw" << QString(".cdw");
    QTest::newRow("Cyrillic") << "E:\\проект\\план этажа.cdw" << QString("план этажа.cdw");
}

void DrawingFilesTest::titleNamesTheExistingDrawing()
{
    QFETCH(QString, path);
    QFETCH(QString, name);
    const QString title = QStringLiteral("Чертеж %1 уже существует").arg(name);
    QCOMPARE(edw::existingDrawingTitle(path), title);
    SaveCdwDialog dialog(path);
    QCOMPARE(dialog.windowTitle(), title);
}

void DrawingFilesTest::eachChoiceHasItsTextAndResult_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("description");
    QTest::addColumn<int>("result");
    QTest::newRow("update") << "reloadButton"
                            << "Обновить чертеж"
                            << "Существующий чертеж будет сохранен с расширением bak. Будет "
                               "создан новый чертеж с тем же именем, содержащий данные, "
                               "полученные из файла формата IFC."
                            << 1;
    QTest::newRow("create") << "createButton"
                            << "Создать новый чертеж"
                            << "В появившемся диалоге укажите другое имя чертежа либо другую "
                               "папку."
                            << 2;
    QTest::newRow("cancel") << "cancelButton"
                            << "Отмена"
                            << "Получение данных из файла формата IFC будет прервано." << 3;
}

void DrawingFilesTest::eachChoiceHasItsTextAndResult()
{
    QFETCH(QString, button);
    QFETCH(QString, text);
    QFETCH(QString, description);
    QFETCH(int, result);
    QString seenText, seenDescription;
    bool fixedSize = false;
    ModalAnswer answer([&](QWidget* dialog) {
        fixedSize = dialog->minimumSize() == dialog->maximumSize();
        auto* link = dialog->findChild<QCommandLinkButton*>(button);
        seenText = link->text();
        seenDescription = link->description();
        link->click();
    });
    QCOMPARE(edw::runSaveCdwDialog(0, "D:\\work\\plan.cdw"), result);
    QCOMPARE(seenText, text);
    QCOMPARE(seenDescription, description);
    QVERIFY(fixedSize);
}

void DrawingFilesTest::closingMeansCancel_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("close box of the frame") << "cross";
    QTest::newRow("window closed") << "close";
    QTest::newRow("Escape") << "escape";
}

void DrawingFilesTest::closingMeansCancel()
{
    QFETCH(QString, how);
    SaveCdwDialog dialog("D:\\work\\plan.cdw");
    QCOMPARE(dialog.choice(), 0);
    QPointer<qt::styled_dialog> frame = qt::attach_styled_frame(&dialog);
    QTimer::singleShot(0, &dialog, [&] {
        if (how == "cross")
            frame->closeButton()->click();
        else if (how == "close")
            dialog.close();
        else
            QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    dialog.exec();
    QCOMPARE(dialog.choice(), 3);
}

void DrawingFilesTest::fileResultUsesBackslashes_data()
{
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QString>("returned");
    QTest::newRow("drive path") << "C:/a/b.cdw" << QString("C:\\a\\b.cdw");
    QTest::newRow("mixed") << "//server/share\\b.cdw" << QString("\\\\server\\share\\b.cdw");
    QTest::newRow("cancelled") << "" << QString();
}

void DrawingFilesTest::fileResultUsesBackslashes()
{
    QFETCH(QString, chosen);
    QFETCH(QString, returned);
    const wchar_t* text = edw::keepFileSavingResult(edw::withBackslashes(chosen));
    QCOMPARE(QString::fromWCharArray(text), returned);
}

void DrawingFilesTest::fileResultBufferIsShared()
{
    const wchar_t* first = edw::keepFileSavingResult("C:\\a\\b.cdw");
    const wchar_t* second = edw::keepFileSavingResult("D:\\проект\\другой чертеж.cdw");
    QCOMPARE(first, second);
    QCOMPARE(QString::fromWCharArray(first), QStringLiteral("D:\\проект\\другой чертеж.cdw"));
    // The folder chooser keeps its own buffer, shared too, growing for a longer text.
    const wchar_t* folder = edw::keepDirectoryResult("C:/drawings");
    QVERIFY(folder != first);
    QCOMPARE(edw::keepDirectoryResult(QString(300, QChar(u'ж'))), folder);
    QCOMPARE(QString::fromWCharArray(folder), QString(300, QChar(u'ж')));
    QCOMPARE(QString::fromWCharArray(first), QStringLiteral("D:\\проект\\другой чертеж.cdw"));
}

void DrawingFilesTest::choosersSpeakRussianWithoutTranslators_data()
{
    QTest::addColumn<QString>("chooser");
    // title, filter, name label, accept, reject, first column title
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("file") << "file"
                          << QStringList{"Укажите имя файла для записи",
                                         "ГРАВИС-Чертежи (*.cdw)",
                                         "Имя файла:",
                                         "Сохранить",
                                         "Отмена",
                                         "Имя"};
    QTest::newRow("folder") << "folder"
                            << QStringList{"Выберите папку для сохранения чертежа ГРАИС",
                                           "",
                                           "Имя папки:",
                                           "Выбрать",
                                           "Отмена",
                                           "Имя"};
}

void DrawingFilesTest::choosersSpeakRussianWithoutTranslators()
{
    QFETCH(QString, chooser);
    QFETCH(QStringList, texts);
    // Installing a translator tells the whole application: count what the host would see.
    LanguageChanges changes;
    QStringList seen;
    ModalAnswer answer([&](QWidget* dialog) {
        auto* chooser = qobject_cast<QFileDialog*>(dialog);
        seen << chooser->windowTitle()
             << (chooser->fileMode() == QFileDialog::Directory ? "" : chooser->nameFilters()[0]);
        seen << dialog->findChild<QLabel*>("fileNameLabel")->text();
        seen << buttonOf(dialog, QDialogButtonBox::AcceptRole)->text().remove('&')
             << buttonOf(dialog, QDialogButtonBox::RejectRole)->text().remove('&');
        auto* view = dialog->findChild<QTreeView*>("treeView");
        seen << view->model()->headerData(0, Qt::Horizontal).toString();
        dialog->close();
    });
    if (chooser == "file")
        edw::runFileSavingDialog(0, "/tmp/plan.cdw");
    else
        edw::runDirectoryDialog(0);
    QVERIFY(answer.answered());
    QCOMPARE(seen, texts);
    QCOMPARE(changes.count, 0);
    QCOMPARE(QCoreApplication::translate("QFileDialog", "Cancel"), QStringLiteral("Cancel"));
}

void DrawingFilesTest::cancelledChoosersGiveEmptyText()
{
    {
        ModalAnswer answer([](QWidget* dialog) { dialog->close(); });
        QCOMPARE(QString::fromWCharArray(edw::runFileSavingDialog(0, "/tmp/plan.cdw")), QString());
    }
    {
        ModalAnswer answer([](QWidget* dialog) { dialog->close(); });
        QCOMPARE(QString::fromWCharArray(edw::runDirectoryDialog(0)), QString());
    }
}

QTEST_MAIN(DrawingFilesTest)
#include "tst_engsys_drawing_files.moc"
