#include "headless_update.h"

#include "host_items.h"
#include "main_window.h"
#include "marlouss_library.h"
#include "modal_script.h"

#include <esdata/esdata.h>

#include <QAbstractButton>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>

#include <vector>

namespace sandbox {
namespace {

std::vector<wchar_t> wide(const QString& text)
{
    std::vector<wchar_t> buffer(static_cast<size_t>(text.size()) + 1, 0);
    text.toWCharArray(buffer.data());
    return buffer;
}

CallResult missing(const char* name)
{
    CallResult result;
    result.line = QString::fromLatin1(name) + QStringLiteral(": not exported by the library");
    result.value = -1;
    return result;
}

QString yesNo(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

QJsonObject json(const QString& text)
{
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

// The catalog pool of the sandbox's "user_tx" catalog, which the variants come from.
qint64 samplePool()
{
    return qint64(reinterpret_cast<quintptr>(esGetLibraryProviderPool(u"orvik.aec.engsystx")));
}

// Types name into the line edit and presses the button.
ModalScript::Answer enter(const QString& name, const QString& prefix, const QString& button)
{
    return [=](QWidget* dialog) {
        if (auto* edit = dialog->findChild<QLineEdit*>(QStringLiteral("nameEdit")))
            edit->setText(name);
        if (auto* edit = dialog->findChild<QLineEdit*>(QStringLiteral("prefixEdit")))
            edit->setText(prefix);
        ModalScript::click(button)(dialog);
    };
}

// Chooses the combo's item and presses the button.
ModalScript::Answer choose(const QString& comboName, const QString& item, const QString& button)
{
    return [=](QWidget* dialog) {
        if (auto* combo = dialog->findChild<QComboBox*>(comboName)) combo->setCurrentText(item);
        ModalScript::click(button)(dialog);
    };
}

ModalScript::Answer clickTwice(const QString& first, const QString& then)
{
    return [=](QWidget* dialog) {
        ModalScript::click(first)(dialog);
        ModalScript::click(then)(dialog);
    };
}

QString expectRecord(const CallResult& r, const QJsonObject& expected)
{
    if (r.value != 1) return QStringLiteral("expected 1");
    const QJsonObject record = json(r.text);
    for (auto it = expected.begin(); it != expected.end(); ++it)
        if (record.value(it.key()) != it.value())
            return QStringLiteral("expected %1 = %2")
                .arg(it.key(),
                     QString::fromUtf8(
                         QJsonDocument(QJsonArray{it.value()}).toJson(QJsonDocument::Compact)));
    return QString();
}

QString expectValue(const CallResult& r, qint64 value)
{
    return r.value == value ? QString() : QStringLiteral("expected %1").arg(value);
}

} // namespace

QByteArray mediumRequest(bool ventilation, int version)
{
    QJsonObject r;
    r["version"] = version;
    r["sysName"] = ventilation ? "П1" : "Т1";
    r["prefix"] = ventilation ? "П" : "Т";
    r["protoch"] = true;
    r["color"] = ventilation ? 16711680 : 255;
    r["systems"] = QJsonArray{"Т1", "Т2", "В1"};
    r["segs"] = QJsonArray{"ГОСТ 10704-91", "ГОСТ 3262-75", "ГОСТ 18599-2001"};
    r["curSeg"] = "ГОСТ 10704-91";
    r["varSeg"] = "Сталь 20";
    r["otvods"] = QJsonArray{"ГОСТ 17375-2001", "ГОСТ 30753-2001"};
    r["curOtvod"] = "ГОСТ 17375-2001";
    r["varOtvod"] = "исполнение 2";
    r["trks"] = QJsonArray{"ГОСТ 17376-2001"};
    r["curTrk"] = "ГОСТ 17376-2001";
    r["varTrk"] = "равнопроходный";
    r["prhs"] = QJsonArray{"ГОСТ 17378-2001"};
    r["curPrh"] = "ГОСТ 17378-2001";
    r["varPrh"] = "концентрический";
    r["isoSegments"] = QJsonArray{"K-FLEX ST 13 мм", "Тилит Супер 9 мм"};
    r["currentIsoSegment"] = "K-FLEX ST 13 мм";
    r["isoBends"] = QJsonArray{"K-FLEX ST 13 мм"};
    r["currentIsoBend"] = "K-FLEX ST 13 мм";
    r["isoTees"] = QJsonArray{};
    r["isoTransitions"] = QJsonArray{"Тилит Супер 9 мм"};
    r["currentIsoTransition"] = "";
    r["cats"] = QJsonArray{"I", "II", "III", "IV"};
    r["cat"] = "II";
    r["temp"] = "95";
    r["density"] = "958";
    r["maxP"] = "1.6";
    r["chmHelp"] = ventilation ? "\\Grundo\\Help\\Vent.chm" : "\\Grundo\\Help\\EngSys.chm";
    r["helpId"] = ventilation ? 5120 : 4021;
    r["provider"] = samplePool();
    return QJsonDocument(r).toJson(QJsonDocument::Compact);
}

void addSampleItems(const QString& folder)
{
    QDir().mkpath(folder + "/valves");
    QDir().mkpath(folder + "/fittings");
    const struct
    {
        const char* name;
        const char* file;
        const char* second;
        const char* content;
    } items[] = {
        {"Кран шаровый", "valves/ball.rtw", "КШ-Ду15", "item ball valve DN15 PN40\n"},
        {"Отвод 90", "fittings/bend90.rtw", "ОТ-57", "item bend 90 57x3.5 steel 20\nrev 2\n"},
        {"Тройник", "fittings/tee.rtw", "ТР-57", "item tee 57x3.5\n"},
        // The same file as the ball valve, named with doubled separators.
        {"Кран шаровый (копия)", "valves//ball.rtw", "КШ-Ду15", nullptr},
    };
    for (const auto& item : items) {
        const QString path = folder + "/" + QString::fromUtf8(item.file);
        if (item.content) {
            QFile file(path);
            if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) file.write(item.content);
        }
        add_catalog_item(QString::fromUtf8(item.name), path, QString::fromUtf8(item.second));
    }
}

CallResult callMediumDialog(const MarloUssLibrary& library, quintptr window, bool create,
                            bool ventilation, const QByteArray& request)
{
    if (!library.mediumDialog) return missing("engsys_medium_dialog");
    const char* out = nullptr;
    CallResult result;
    result.value = library.mediumDialog(window, create, ventilation, request.constData(), &out);
    result.pointer = out;
    if (result.value && out) result.text = QString::fromUtf8(out);
    const QJsonObject sent = json(QString::fromUtf8(request));
    result.line = QStringLiteral("engsys_medium_dialog(window 0x%1, create %2, ventilation %3, "
                                 "version %4, \"%5\") -> %6%7")
                      .arg(QString::number(window, 16), yesNo(create), yesNo(ventilation))
                      .arg(sent["version"].toInt())
                      .arg(sent["sysName"].toString())
                      .arg(result.value)
                      .arg(result.text.isEmpty() ? QString() : QStringLiteral(" ") + result.text);
    return result;
}

CallResult callTryUpdateRtw(const MarloUssLibrary& library, const QString& name)
{
    if (!library.tryUpdateRtw) return missing("uss_try_update_rtw");
    CallResult result;
    result.value = library.tryUpdateRtw(wide(name).data());
    result.line = QStringLiteral("uss_try_update_rtw(\"%1\") -> %2; the store's updated items: %3")
                      .arg(name, yesNo(result.value))
                      .arg(QString::fromUtf16(esx_UpdatedRtw()));
    return result;
}

CallResult callIsRtwUpdated(const MarloUssLibrary& library, const QString& name)
{
    if (!library.isRtwUpdated) return missing("uss_is_rtw_updated");
    CallResult result;
    result.value = library.isRtwUpdated(wide(name).data());
    result.line = QStringLiteral("uss_is_rtw_updated(\"%1\") -> %2").arg(name, yesNo(result.value));
    return result;
}

CallResult callReloadUpdatedRtw(const MarloUssLibrary& library)
{
    if (!library.reloadUpdatedRtw) return missing("uss_reload_updated_rtw");
    clear_item_log();
    library.reloadUpdatedRtw();
    CallResult result;
    result.text = item_log().join(QStringLiteral("; "));
    result.value = item_log().size();
    result.line =
        QStringLiteral("uss_reload_updated_rtw() -> the host: %1")
            .arg(result.text.isEmpty() ? QStringLiteral("nothing reloaded") : result.text);
    return result;
}

CallResult callShowUpdateDialog(const MarloUssLibrary& library, quintptr window, bool* flag)
{
    if (!library.showUpdateDialog) return missing("uss_show_update_dialog");
    const bool before = *flag;
    const QString text = QStringLiteral(
        "\nНайдено 12 элементов чертежа (4 типоразмеров), отличающихся от элементов в каталоге. "
        "Все рассогласованные элементы на чертеже будут перестроены в соответствии с каталогом."
        "\n\nДля просмотра измененных пользовательских элементов используйте команду Меню - "
        "Выделить - Группу...\n");
    CallResult result;
    result.value = library.showUpdateDialog(
        window, wide(QStringLiteral("Обновление элементов")).data(), wide(text).data(), flag);
    result.line = QStringLiteral("uss_show_update_dialog(window 0x%1, \"Обновление элементов\", "
                                 "12 elements / 4 sizes, flag %2) -> %3, flag %4")
                      .arg(QString::number(window, 16), yesNo(before))
                      .arg(result.value)
                      .arg(yesNo(*flag));
    return result;
}

void runUpdateCalls(MarloUssLibrary& library, MainWindow& window, ModalScript& script,
                    const QString& workFolder, const Step& step)
{
    const quintptr handle = window.winId();
    const int theme = sandbox::theme();
    for (const bool dark : {false, true}) {
        set_theme(dark ? theme_dark : theme_light);
        const QString tone = dark ? QStringLiteral("-dark") : QString();

        // A new piping system: first a name the section already has, then a new one.
        script.expect("medium-create" + tone, enter("Т1", "Т", "okButton"));
        script.expect("medium-duplicate" + tone, ModalScript::click("okButton"));
        script.expect(QString(), enter("Т3", "Т", "okButton"));
        step([&] { return callMediumDialog(library, handle, true, false, mediumRequest(false)); },
             [&](const CallResult& r) {
                 return expectRecord(r, {{"sysName", "Т3"},
                                         {"cat", "I"},
                                         {"maxP", "1.60"},
                                         {"varSeg", "Сталь 20"},
                                         {"varOtvod", "исполнение 2"}});
             });

        // Properties of the current system: another pipe standard keeps the shared variant.
        script.expect("medium-properties" + tone, choose("segCombo", "ГОСТ 3262-75", "okButton"));
        step([&] { return callMediumDialog(library, handle, false, false, mediumRequest(false)); },
             [&](const CallResult& r) {
                 return expectRecord(r, {{"sysName", "Т1"},
                                         {"cat", "II"},
                                         {"curSeg", "ГОСТ 3262-75"},
                                         {"varSeg", "Сталь 20"}});
             });

        // A ventilation system turned from supply to exhaust.
        script.expect("medium-ventilation" + tone, choose("typeBox", " вытяжная", "okButton"));
        step([&] { return callMediumDialog(library, handle, true, true, mediumRequest(true)); },
             [&](const CallResult& r) {
                 return expectRecord(r,
                                     {{"sysName", "П1"}, {"protoch", false}, {"color", 16711680}});
             });

        // The update notice: the box clicked, then saved (light) or cancelled (dark).
        bool popup = false;
        script.expect("update-notice" + tone,
                      clickTwice("qFlyBox", dark ? "cancelButton" : "okButton"));
        step([&] { return callShowUpdateDialog(library, handle, &popup); },
             [&](const CallResult& r) {
                 if (!popup) return QStringLiteral("expected the flag set");
                 return expectValue(r, dark ? 0 : 1);
             });
    }
    set_theme(theme);

    // A record of another version is refused with the library's message.
    script.expect("medium-version", ModalScript::click("okButton"));
    step([&] { return callMediumDialog(library, handle, true, false, mediumRequest(false, 2)); },
         [&](const CallResult& r) { return expectValue(r, 0); });

    // The register of updated catalog items.
    addSampleItems(workFolder + "/rtw");
    const auto expectBool = [](bool value) {
        return [value](const CallResult& r) { return expectValue(r, value ? 1 : 0); };
    };
    step([&] { return callTryUpdateRtw(library, "Кран шаровый"); }, expectBool(true));
    step([&] { return callTryUpdateRtw(library, "Отвод 90"); }, expectBool(true));
    step([&] { return callTryUpdateRtw(library, "Кран шаровый"); }, expectBool(false));
    step([&] { return callTryUpdateRtw(library, "Кран шаровый (копия)"); }, expectBool(false));
    step([&] { return callTryUpdateRtw(library, "Задвижка"); }, expectBool(false));
    step([&] { return callIsRtwUpdated(library, "КРАН ШАРОВЫЙ"); }, expectBool(true));
    step([&] { return callIsRtwUpdated(library, "отвод 90"); }, expectBool(true));
    step([&] { return callIsRtwUpdated(library, "Тройник"); }, expectBool(false));
    step([&] { return callReloadUpdatedRtw(library); },
         [](const CallResult& r) {
             return r.value == 2 && r.text.contains("reload Отвод 90") &&
                            r.text.contains("reload Кран шаровый")
                        ? QString()
                        : QStringLiteral("expected both items reloaded from their files");
         });
    step([&] { return callIsRtwUpdated(library, "Кран шаровый"); }, expectBool(false));
}

} // namespace sandbox
