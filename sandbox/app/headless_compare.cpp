#include "headless_compare.h"

#include "host_state.h"

#include <QAbstractButton>
#include <QDir>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

namespace sandbox {
namespace {

const char* const kViewButtons[] = {"qCTop",   "qCFront", "qCBack",   "qCLeft",
                                    "qCRight", "qSTop",   "qSFront",  "qSBack",
                                    "qSLeft",  "qSRight", "qGostBut", "qM3dBut"};
const char* const kIcons[] = {"up",  "f",   "back", "left", "right", "s_up",
                              "s_f", "s_b", "s_l",  "s_r",  "gost",  "3d"};

bool sameIcon(const QIcon& icon, const QString& resource)
{
    return !icon.isNull() &&
           icon.pixmap(32, 32).toImage().convertToFormat(QImage::Format_ARGB32) ==
               QIcon(resource).pixmap(32, 32).toImage().convertToFormat(QImage::Format_ARGB32);
}

class Inspection
{
public:
    Inspection(QWidget* dialog, CompareExample* result) : m_dialog(dialog), m_result(result) {}

    template <class T> T* find(const char* name)
    {
        T* found = m_dialog->findChild<T*>(QString::fromLatin1(name));
        if (!found) problem(QStringLiteral("no %1").arg(QString::fromLatin1(name)));
        return found;
    }

    void problem(const QString& text) { m_result->problems << text; }

    void expectText(const char* name, const QString& text)
    {
        if (auto* button = find<QAbstractButton>(name); button && button->text() != text)
            problem(
                QStringLiteral("%1 reads \"%2\"").arg(QString::fromLatin1(name), button->text()));
    }

    // A preview label shows either a picture or the text, never nothing.
    bool preview(const char* name)
    {
        auto* label = find<QLabel>(name);
        if (!label) return false;
        const bool picture = !label->pixmap().isNull();
        if (!picture && label->text() != QStringLiteral("Невозможно отобразить элемент"))
            problem(QStringLiteral("%1 shows neither a picture nor the text").arg(name));
        return picture;
    }

    // Every view button; returns the first whose sides differ (or the first enabled one).
    QToolButton* views(QStringList& seen, bool& anyRed)
    {
        QToolButton* chosen = nullptr;
        QToolButton* firstEnabled = nullptr;
        for (int i = 0; i < 12; ++i) {
            auto* button = find<QToolButton>(kViewButtons[i]);
            if (!button || !button->isEnabled()) continue;
            const QString icon = QString::fromLatin1(kIcons[i]);
            const bool red = sameIcon(button->icon(), ":/red/" + icon + ".png");
            if (!red && !sameIcon(button->icon(), ":/clean/" + icon + ".png"))
                problem(QStringLiteral("%1 has neither of its icons").arg(kViewButtons[i]));
            const QString ext = button->property("ext").toString();
            if (ext != (i == 11 ? QStringLiteral(".m3d") : QStringLiteral(".frw")))
                problem(QStringLiteral("%1 has ext \"%2\"").arg(kViewButtons[i], ext));
            const bool both = !button->property("importFile").toString().isEmpty() &&
                              !button->property("stdFile").toString().isEmpty();
            button->click();
            const bool imported = preview("qViewImage_Imp");
            const bool mine = preview("qViewImageMine");
            // "qCTop clean [imp|mine]": the look and which sides have a picture.
            seen << QStringLiteral("%1 %2 [%3|%4]")
                        .arg(QString::fromLatin1(kViewButtons[i]),
                             red ? QStringLiteral("red") : QStringLiteral("clean"),
                             imported ? QStringLiteral("imp") : QStringLiteral("-"),
                             mine ? QStringLiteral("mine") : QStringLiteral("-"));
            if (!red && !both)
                problem(QStringLiteral("%1 is clean with one side missing").arg(kViewButtons[i]));
            anyRed = anyRed || red;
            if (red && !chosen) chosen = button;
            if (!firstEnabled) firstEnabled = button;
        }
        return chosen ? chosen : firstEnabled;
    }

    // Parameter rows: the count, how many differ; every cell carries its tool tip.
    std::pair<int, int> parameters()
    {
        auto* tree = find<QTreeWidget>("CompareTreeWidget");
        if (!tree) return {0, 0};
        const QStringList header{QStringLiteral("Свойство"), QStringLiteral("Имп. элемент"),
                                 QStringLiteral("Мой элемент")};
        for (int column = 0; column < 3; ++column) {
            if (tree->headerItem()->text(column) != header[column])
                problem(QStringLiteral("column %1 is \"%2\"")
                            .arg(column)
                            .arg(tree->headerItem()->text(column)));
        }
        int differ = 0;
        for (int i = 0; i < tree->topLevelItemCount(); ++i) {
            const QTreeWidgetItem* row = tree->topLevelItem(i);
            for (int column = 0; column < 3; ++column) {
                if (row->toolTip(column) != row->text(column))
                    problem(QStringLiteral("row \"%1\" lacks its tool tip").arg(row->text(0)));
            }
            if (row->foreground(1).color() == QColor(Qt::red)) ++differ;
        }
        return {tree->topLevelItemCount(), differ};
    }

    void save(const QString& folder, const QString& file)
    {
        const QString path = QDir(folder).filePath(file);
        if (m_dialog->grab().save(path))
            m_result->pictures << path;
        else
            problem(QStringLiteral("could not save %1").arg(path));
    }

private:
    QWidget* m_dialog;
    CompareExample* m_result;
};

} // namespace

std::function<void(QWidget*)> showCompareExample(const QString& shotFolder, const QString& name,
                                                 const QString& button, CompareExample* result)
{
    return [shotFolder, name, button, result](QWidget* dialog) {
        Inspection look(dialog, result);
        if (dialog->windowTitle() !=
            QStringLiteral("Сравнение параметров пользовательских элементов"))
            look.problem(QStringLiteral("title \"%1\"").arg(dialog->windowTitle()));
        look.expectText("impButton", QStringLiteral("Заменить на импортируемый"));
        look.expectText("mineButton", QStringLiteral("Оставить мой"));
        look.expectText("closeButton", QStringLiteral("Закрыть"));
        auto* tabs = look.find<QTabWidget>("tabWidget");
        if (!tabs) {
            dialog->close();
            return;
        }

        QStringList seen;
        bool anyRed = false;
        QToolButton* shown = look.views(seen, anyRed);
        const auto [rows, differ] = look.parameters();
        if (sameIcon(tabs->tabIcon(0), ":/vznak.png") != anyRed)
            look.problem(QStringLiteral("the views tab's warning does not match its views"));
        if (sameIcon(tabs->tabIcon(1), ":/vznak.png") != (differ > 0))
            look.problem(QStringLiteral("the parameters tab's warning does not match its rows"));

        const QString theme =
            sandbox::theme() == theme_dark ? QStringLiteral("dark") : QStringLiteral("light");
        if (shown) shown->click();
        tabs->setCurrentIndex(0);
        look.save(shotFolder, name + "-views-" + theme + ".png");
        tabs->setCurrentIndex(1);
        look.save(shotFolder, name + "-params-" + theme + ".png");
        tabs->setCurrentIndex(0);

        auto* press = dialog->findChild<QAbstractButton*>(button);
        result->summary =
            QStringLiteral("comparison: %1 parameter(s), %2 differ; views: %3; "
                           "pressed %4%5")
                .arg(rows)
                .arg(differ)
                .arg(seen.isEmpty() ? QStringLiteral("none") : seen.join(", "), button,
                     press && !press->isEnabled() ? QStringLiteral(" (disabled)") : QString());
        if (!press) {
            look.problem(QStringLiteral("no %1").arg(button));
            dialog->close();
        } else if (!press->isEnabled()) {
            // A record of a later version cannot replace mine: leave without a choice.
            dialog->close();
        } else {
            press->click();
        }
    };
}

} // namespace sandbox
