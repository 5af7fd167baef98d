#include "headless_editor.h"

#include "host_state.h"
#include "main_window.h"
#include "modal_script.h"
#include "sample_catalog.h"
#include "sample_editor.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QRadioButton>
#include <QTabWidget>
#include <QTextStream>
#include <QTimer>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

namespace sandbox {
namespace {

using Answer = ModalScript::Answer;

// Presses a button once the answer has returned: the button opens a dialog of its own (a
// chooser or a warning) that the script answers next.
void later(QWidget* dialog, const QString& button)
{
    QTimer::singleShot(0, dialog, [dialog, button] {
        if (auto* b = dialog->findChild<QAbstractButton*>(button)) b->click();
    });
}

void click(QWidget* dialog, const QString& button)
{
    if (auto* b = dialog->findChild<QAbstractButton*>(button)) b->click();
}

// Sets a row of the editor's property tree by its label, as the user would.
void setRow(QWidget* dialog, const QString& label, const QVariant& value)
{
    auto* tree = dialog->findChild<QTreeWidget*>(QStringLiteral("propertyTree"));
    if (!tree) return;
    for (QTreeWidgetItemIterator it(tree); *it; ++it) {
        if ((*it)->text(0) == label || (*it)->text(0) == label + QStringLiteral(" *"))
            (*it)->setData(1, Qt::EditRole, value);
    }
}

void choose(QWidget* dialog, const QString& box, int index)
{
    if (auto* combo = dialog->findChild<QComboBox*>(box)) combo->setCurrentIndex(index);
}

class EditorRuns
{
public:
    EditorRuns(MarloUssLibrary& library, MainWindow& window, ModalScript& script,
               const QString& work, const QString& shots)
        : m_library(library), m_window(window), m_script(script), m_work(work), m_shots(shots)
    {
        const QString files = work + QStringLiteral("/editor-files");
        QDir().mkpath(files);
        for (const char* name : {"top", "simple", "gost"}) {
            const QString path = files + "/" + name + ".frw";
            write_sample_document(path, {0, 1}, {1});
            m_files[QString::fromLatin1(name)] = path;
        }
        m_files["model"] = files + "/model.m3d";
        write_sample_document(m_files["model"], {0}, {});
        m_files["newer"] = files + "/newer.frw";
        write_sample_document(m_files["newer"], {0}, {}, host_document_version + 1);
    }

    QString file(const QString& name) const { return m_files.value(name); }

    Answer step(std::function<void(QWidget*)> act)
    {
        return [act](QWidget* dialog) { act(dialog); };
    }

    Answer pick(const QString& name)
    {
        const QString path = file(name);
        return [path](QWidget* dialog) {
            auto* chooser = qobject_cast<QFileDialog*>(dialog);
            if (!chooser) return dialog->close();
            chooser->setDirectory(QFileInfo(path).absolutePath());
            if (auto* name = chooser->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")))
                name->setText(path);
            QMetaObject::invokeMethod(chooser, "accept", Qt::QueuedConnection);
            return true;
        };
    }

    // The warning the editor shows: its text must be the expected one.
    Answer warned(const QString& text)
    {
        return [this, text](QWidget* box) {
            bool seen = false;
            for (const QLabel* label : box->findChildren<QLabel*>())
                seen = seen || label->text() == text;
            if (!seen) m_problems << QStringLiteral("expected the warning \"%1\"").arg(text);
            click(box, QStringLiteral("okButton"));
        };
    }

    // After a warning the editor shows the tab of the offending input.
    void expectTab(QWidget* dialog, int tab)
    {
        auto* tabs = dialog->findChild<QTabWidget*>(QStringLiteral("qViewTab"));
        if (!tabs || tabs->currentIndex() != tab)
            m_problems << QStringLiteral("expected tab %1 to be shown").arg(tab);
    }

    // Pictures of both tabs as "<name>-views.png" and "<name>-params.png".
    void shootTabs(QWidget* dialog, const QString& name)
    {
        auto* tabs = dialog->findChild<QTabWidget*>(QStringLiteral("qViewTab"));
        if (!tabs) return;
        const int shown = tabs->currentIndex();
        const char* const parts[] = {"views", "params"};
        for (int i = 0; i < 2; ++i) {
            tabs->setCurrentIndex(i);
            const QString path =
                QDir(m_shots).filePath(name + "-" + QString::fromLatin1(parts[i]) + ".png");
            if (dialog->grab().save(path))
                m_pictures << path;
            else
                m_problems << QStringLiteral("could not save %1").arg(path);
        }
        tabs->setCurrentIndex(shown);
    }

    // One call with its scripted answers; returns whether it behaved.
    bool run(const QString& title, const EditCall& call, bool writes, int theme,
             QString* written = nullptr)
    {
        set_theme(theme);
        const int before = elementCount(m_window.provider());
        const CallResult result =
            callCreateCloneEdit(m_library, m_window.winId(), m_window.provider(), m_work, call);
        set_theme(theme_light);
        QStringList problems = m_script.takeProblems();
        problems << m_problems;
        m_problems.clear();
        if (const int unanswered = m_script.takeUnanswered())
            problems << QStringLiteral("%1 expected dialog(s) did not appear").arg(unanswered);
        if (result.value != (writes ? 1 : 0))
            problems << QStringLiteral("expected %1").arg(writes ? "true" : "false");
        const int after = elementCount(m_window.provider());
        const int added = writes && call.mode != 2 ? 1 : 0;
        if (after != before + added)
            problems
                << QStringLiteral("catalog went from %1 to %2 elements").arg(before).arg(after);

        QString line =
            (problems.isEmpty() ? QStringLiteral("[ok]     ") : QStringLiteral("[FAILED] ")) +
            title + ": " + result.line;
        if (!problems.isEmpty()) line += " — " + problems.join("; ");
        if (writes && !result.text.isEmpty())
            line += "\n    " + describeElement(m_window.provider(), call.packet, result.text);
        QTextStream(stdout) << line << Qt::endl;
        m_window.log(line);
        if (written) *written = result.text;
        return problems.isEmpty();
    }

    QStringList pictures() const { return m_pictures; }
    void problem(const QString& text) { m_problems << text; }

private:
    MarloUssLibrary& m_library;
    MainWindow& m_window;
    ModalScript& m_script;
    QString m_work, m_shots;
    QHash<QString, QString> m_files;
    QStringList m_problems, m_pictures;
};

} // namespace

CallResult runHeadlessEditor(MarloUssLibrary& library, MainWindow& window, ModalScript& script,
                             const QString& workFolder, const QString& shotFolder)
{
    EditorRuns runs(library, window, script, workFolder, shotFolder);
    int failures = 0;
    const QString packet = QStringLiteral("ПЭ_Трубы");

    // Create: category, parameters, the top view and the model from files.
    EditCall create;
    create.mode = 0;
    create.packet = packet;
    create.commands = {"uss"};
    create.command = "uss";
    create.categoryPath = "ПЭ_Трубы\\Трубы\\Напорные";
    create.requestText = "sandbox-create";
    script.expect({}, runs.step([&](QWidget* d) {
        choose(d, "qCategoryBox", 0);
        setRow(d, "Наименование", "Труба ПЭ100 SDR11 40x3,7");
        setRow(d, "Диаметр, мм", 40);
        setRow(d, "Толщина стенки, мм", 3.7);
        setRow(d, "Длина, мм", 6000.0);
        setRow(d, "Материал", "ПЭ100");
        click(d, "qCTop");
        later(d, "qViewFileBut");
    }));
    script.expect({}, runs.pick("top"));
    script.expect({}, runs.step([&](QWidget* d) {
        click(d, "qM3dBut");
        later(d, "qViewFileBut");
    }));
    script.expect({}, runs.pick("model"));
    script.expect({}, runs.step([&](QWidget* d) {
        runs.shootTabs(d, "editor-create-light");
        later(d, "okButton");
    }));
    QString created;
    failures += !runs.run("create", create, true, theme_light, &created);

    // Clone a sample element: add a simplified top view, change the length.
    EditCall clone;
    clone.mode = 1;
    clone.packet = packet;
    clone.elementId = "PE100-SDR11-63";
    clone.commands = {"uss"};
    clone.category = "Трубы напорные";
    clone.requestText = "sandbox-clone";
    script.expect({}, runs.step([&](QWidget* d) {
        click(d, "qSTop");
        later(d, "qViewFileBut");
    }));
    script.expect({}, runs.pick("simple"));
    script.expect({}, runs.step([&](QWidget* d) {
        setRow(d, "Длина, мм", 12000.0);
        runs.shootTabs(d, "editor-clone-light");
        later(d, "okButton");
    }));
    failures += !runs.run("clone", clone, true, theme_light);

    // Edit the created element in the dark theme: drop the top view, add the drawing view.
    EditCall edit;
    edit.mode = 2;
    edit.packet = packet;
    edit.elementId = created;
    edit.commands = {"uss"};
    edit.category = "Трубы безнапорные";
    script.expect({}, runs.step([&](QWidget* d) {
        click(d, "qCTop");
        click(d, "qViewNoneRadio");
        click(d, "qGostBut");
        later(d, "qViewFileBut");
    }));
    script.expect({}, runs.pick("gost"));
    script.expect({}, runs.step([&](QWidget* d) {
        setRow(d, "Наименование", "Труба ПЭ100 SDR11 40x3,7 (изм.)");
        runs.shootTabs(d, "editor-edit-dark");
        later(d, "okButton");
    }));
    failures += !runs.run("edit", edit, true, theme_dark);

    // Every accept check in turn, each warning answered, then cancel.
    EditCall checks;
    checks.packet = packet;
    checks.commands = {"uss", "pump", "valve"};
    checks.command = "pump";
    script.expect({}, runs.step([&](QWidget* d) { later(d, "okButton"); }));
    script.expect({}, runs.warned("Невозможно создать элемент, выберите команду"));
    script.expect({}, runs.step([&](QWidget* d) {
        runs.expectTab(d, 1);
        choose(d, "qCommandBox", 1);
        later(d, "okButton");
    }));
    script.expect({}, runs.warned("Невозможно создать элемент, выберите категорию"));
    script.expect({}, runs.step([&](QWidget* d) {
        runs.expectTab(d, 1);
        choose(d, "qCategoryBox", 0);
        later(d, "okButton");
    }));
    script.expect({}, runs.warned("Невозможно создать элемент, задайте изображение: Сверху, "
                                  "3D Деталь"));
    script.expect({}, runs.step([&](QWidget* d) {
        runs.expectTab(d, 0);
        click(d, "qCTop");
        later(d, "qViewFileBut");
    }));
    script.expect({}, runs.pick("top"));
    script.expect({}, runs.step([&](QWidget* d) {
        click(d, "qM3dBut");
        later(d, "qViewFileBut");
    }));
    script.expect({}, runs.pick("model"));
    script.expect({}, runs.step([&](QWidget* d) { later(d, "okButton"); }));
    script.expect({}, runs.warned("Невозможно создать элемент, заполните все обязательные поля"));
    script.expect({}, runs.step([&](QWidget* d) {
        runs.expectTab(d, 1);
        setRow(d, "Наименование", "Насос");
        later(d, "okButton");
    }));
    script.expect({}, runs.warned("Свойство \"Длина\" не должно быть нулевым"));
    script.expect({}, runs.step([&](QWidget* d) {
        runs.expectTab(d, 1);
        runs.shootTabs(d, "editor-checks-light");
        click(d, "cancelButton");
    }));
    failures += !runs.run("accept checks", checks, false, theme_light);

    // A command without required views and no image at all.
    EditCall bare;
    bare.packet = packet;
    bare.commands = {"valve"};
    script.expect({}, runs.step([&](QWidget* d) { later(d, "okButton"); }));
    script.expect({}, runs.warned("Невозможно создать элемент, задайте изображение хотя бы для "
                                  "одной проекции элемента"));
    script.expect({}, runs.step([&](QWidget* d) {
        runs.expectTab(d, 0);
        click(d, "cancelButton");
    }));
    failures += !runs.run("no image", bare, false, theme_light);

    // Specification layout (discipline 2, dark): the parts must be chosen.
    EditCall spec = bare;
    spec.discipline = 2;
    script.expect({}, runs.step([&](QWidget* d) {
        later(d, "qViewFileBut"); // the simplified top view is current
    }));
    script.expect({}, runs.pick("simple"));
    script.expect({}, runs.step([&](QWidget* d) {
        runs.shootTabs(d, "editor-spec-dark");
        later(d, "okButton");
    }));
    script.expect({}, runs.warned("Невозможно создать элемент, выберите разделы спецификации"));
    script.expect({}, runs.step([&](QWidget* d) {
        runs.expectTab(d, 1);
        click(d, "cancelButton");
    }));
    failures += !runs.run("specification parts", spec, false, theme_dark);

    // A fragment of a later host version is refused and the slot keeps its state.
    EditCall newer = create;
    script.expect({}, runs.step([&](QWidget* d) { later(d, "qViewFileBut"); }));
    script.expect({}, runs.pick("newer"));
    script.expect({}, runs.warned("Невозможно открыть документ, так как он создан в более "
                                  "поздней версии ГРАВИС-3D"));
    script.expect({}, runs.step([&](QWidget* d) {
        auto* none = d->findChild<QRadioButton*>(QStringLiteral("qViewNoneRadio"));
        if (!none || !none->isChecked()) runs.problem("the refused file changed the slot");
        click(d, "cancelButton");
    }));
    failures += !runs.run("later version refused", newer, false, theme_light);

    CallResult result;
    result.value = failures;
    result.line = QStringLiteral("uss_create_clone_edit: 7 scripted editor runs, pictures: %1")
                      .arg(runs.pictures().join(", "));
    return result;
}

} // namespace sandbox
