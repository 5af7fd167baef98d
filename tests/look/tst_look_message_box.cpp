#include "look/look.h"
#include "look/message_box_dialog.h"

#include "modal_answer.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

namespace {

// What a user saw in the box that was answered.
struct Seen
{
    QString title;
    QString text;
    QStringList buttons;
    QString defaultButton;
    bool picture = false;
    QWidget* parent = nullptr;
};

// Notes what the modal box shows, then runs `act` on it.
std::function<void(QWidget*)> noting(Seen* seen, std::function<void(QWidget*)> act)
{
    return [seen, act](QWidget* box) {
        if (auto* title = box->findChild<QLabel*>(QStringLiteral("aec_styled_titlelabel")))
            seen->title = title->text();
        if (auto* text = box->findChild<QLabel*>(QStringLiteral("textLabel")))
            seen->text = text->text();
        if (auto* picture = box->findChild<QLabel*>(QStringLiteral("pictureLabel")))
            seen->picture = !picture->isHidden() && !picture->pixmap().isNull();
        for (auto* button : box->findChildren<QPushButton*>()) {
            if (button->objectName() == QLatin1String("aec_styled_closebutton")) continue;
            seen->buttons << button->objectName() + "=" + button->text();
            if (button->isDefault()) seen->defaultButton = button->objectName();
        }
        seen->buttons.sort();
        seen->parent = box->parentWidget();
        act(box);
    };
}

void click(QWidget* box, const QString& name)
{
    auto* button = box->findChild<QPushButton*>(name);
    QVERIFY2(button, qPrintable(name));
    QTest::mouseClick(button, Qt::LeftButton);
}

} // namespace

class LookMessageBoxTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void returnsTheButtonClicked_data();
    void returnsTheButtonClicked();
    void showsTitleTextPictureAndRussianButtons();
    void defaultButtonAnswersEnter();
    void messengerShowsOverTheActiveWindow();
    void messengerFromAWorkerThreadShowsOnTheGuiThread();
};

void LookMessageBoxTest::cleanup()
{
    QTRY_VERIFY2(QApplication::topLevelWidgets().isEmpty(), "a message box leaked");
}

void LookMessageBoxTest::returnsTheButtonClicked_data()
{
    QTest::addColumn<int>("buttons");
    QTest::addColumn<QString>("click"); // a button, the frame's cross, or Escape
    QTest::addColumn<int>("expected");
    QTest::newRow("no of yes/no") << int(QMessageBox::Yes | QMessageBox::No) << "noButton"
                                  << int(QMessageBox::No);
    QTest::newRow("cancel of three")
        << int(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel) << "cancelButton"
        << int(QMessageBox::Cancel);
    QTest::newRow("discard") << int(QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel)
                             << "discardButton" << int(QMessageBox::Discard);
    QTest::newRow("yes to all") << int(QMessageBox::YesToAll | QMessageBox::NoToAll)
                                << "yesToAllButton" << int(QMessageBox::YesToAll);
    // Closing gives the escape button.
    QTest::newRow("cross, yes/no") << int(QMessageBox::Yes | QMessageBox::No)
                                   << "aec_styled_closebutton" << int(QMessageBox::No);
    QTest::newRow("escape, ok/cancel")
        << int(QMessageBox::Ok | QMessageBox::Cancel) << "Escape" << int(QMessageBox::Cancel);
    QTest::newRow("cross, ok only")
        << int(QMessageBox::Ok) << "aec_styled_closebutton" << int(QMessageBox::Ok);
    QTest::newRow("escape, retry/ignore")
        << int(QMessageBox::Retry | QMessageBox::Ignore) << "Escape" << int(QMessageBox::Ignore);
}

void LookMessageBoxTest::returnsTheButtonClicked()
{
    QFETCH(int, buttons);
    QFETCH(QString, click);
    QFETCH(int, expected);
    Seen seen;
    ModalAnswer user(noting(&seen, [click](QWidget* box) {
        if (click == "Escape")
            QTest::keyClick(box, Qt::Key_Escape);
        else
            ::click(box, click);
    }));
    const int answer = qt::message_box::show(nullptr, QMessageBox::Question, " ",
                                             QStringLiteral("Заменить элемент?"),
                                             QMessageBox::StandardButtons(buttons));
    QCOMPARE(answer, expected);
}

void LookMessageBoxTest::showsTitleTextPictureAndRussianButtons()
{
    Seen seen;
    ModalAnswer user(noting(&seen, [](QWidget* box) { click(box, QStringLiteral("yesButton")); }));
    qt::message_box::question(nullptr, QStringLiteral("Импорт элементов"),
                              QStringLiteral("Элемент уже есть в каталоге. Заменить?"),
                              QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    QCOMPARE(seen.title, QStringLiteral("ИМПОРТ ЭЛЕМЕНТОВ"));
    QCOMPARE(seen.text, QStringLiteral("Элемент уже есть в каталоге. Заменить?"));
    QVERIFY(seen.picture);
    QCOMPARE(seen.buttons,
             QStringList({QStringLiteral("cancelButton=Отмена"), QStringLiteral("noButton=Нет"),
                          QStringLiteral("yesButton=Да")}));

    Seen plain;
    ModalAnswer again(noting(&plain, [](QWidget* box) { click(box, QStringLiteral("okButton")); }));
    qt::message_box::show(nullptr, QMessageBox::NoIcon, " ", QStringLiteral("Готово"));
    QVERIFY(!plain.picture);
    QCOMPARE(plain.buttons, QStringList({QStringLiteral("okButton=OK")}));
}

void LookMessageBoxTest::defaultButtonAnswersEnter()
{
    Seen seen;
    ModalAnswer user5(noting(&seen, [](QWidget* box) { QTest::keyClick(box, Qt::Key_Return); }));
    const auto answer =
        qt::message_box::question(nullptr, " ", QStringLiteral("Удалить?"),
                                  QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    QCOMPARE(seen.defaultButton, QStringLiteral("noButton"));
    QCOMPARE(answer, QMessageBox::No);

    Seen first;
    ModalAnswer again(noting(&first, [](QWidget* box) { QTest::keyClick(box, Qt::Key_Return); }));
    QCOMPARE(qt::message_box::question(nullptr, " ", QStringLiteral("Удалить?")), QMessageBox::Yes);
    QCOMPARE(first.defaultButton, QStringLiteral("yesButton"));
}

void LookMessageBoxTest::messengerShowsOverTheActiveWindow()
{
    QWidget window;
    window.setWindowTitle(QStringLiteral("Каталог"));
    window.show();
    QApplication::setActiveWindow(&window);
    QVERIFY(QTest::qWaitForWindowActive(&window));

    qt::GuiMessenger messenger;
    edw::IMessenger& any = messenger;
    Seen seen;
    ModalAnswer user(noting(&seen, [](QWidget* box) { click(box, QStringLiteral("okButton")); }));
    any.warning(" ", QStringLiteral("Неверное значение параметра"));
    QCOMPARE(seen.parent, &window);
    QCOMPARE(seen.text, QStringLiteral("Неверное значение параметра"));
    QCOMPARE(seen.title, QStringLiteral(" "));

    Seen info;
    ModalAnswer again(noting(&info, [](QWidget* box) { click(box, QStringLiteral("okButton")); }));
    any.information(QStringLiteral("Экспорт"),
                    QStringLiteral("Экспорт пользовательских элементов завершен"));
    QCOMPARE(info.title, QStringLiteral("ЭКСПОРТ"));
    QVERIFY(info.picture);
}

void LookMessageBoxTest::messengerFromAWorkerThreadShowsOnTheGuiThread()
{
    qt::GuiMessenger messenger;
    Seen seen;
    QThread* shownOn = nullptr;
    ModalAnswer user(noting(&seen, [&shownOn](QWidget* box) {
        shownOn = box->thread();
        click(box, QStringLiteral("okButton"));
    }));
    std::unique_ptr<QThread> worker(QThread::create([&messenger] {
        messenger.critical(QStringLiteral("Импорт"), QStringLiteral("Архив повреждён"));
    }));
    QSignalSpy finished(worker.get(), &QThread::finished);
    worker->start();
    QVERIFY(finished.wait(5000));
    QCOMPARE(shownOn, QCoreApplication::instance()->thread());
    QCOMPARE(seen.text, QStringLiteral("Архив повреждён"));
}

QTEST_MAIN(LookMessageBoxTest)
#include "tst_look_message_box.moc"
