#include "settings.h"

#include "help.h"
#include "host/gapi.h"
#include "host/gstring.h"
#include "host/host_error.h"
#include "session.h"

#include <QDir>
#include <QSettings>

namespace {

#if defined(_WIN32)
const QString settings_name = QStringLiteral("\\aec\\MarloUssCfg.ini");
const QString library_help = QStringLiteral("\\Grundo\\Help\\VObject.chm");
#else
const QString settings_name = QStringLiteral("/aec/MarloUssCfg.ini");
const QString library_help = QStringLiteral("/Grundo/Help/VObject.chm");
#endif

const QString group = QStringLiteral("common");

// Created on first use and kept for the life of the process.
QSettings* settings()
{
    static QSettings* instance = new QSettings(settings_file_path(), QSettings::IniFormat);
    return instance;
}

void open_help(const QString& relativePath, int topic)
{
    using namespace gapi;
    com_ptr<abi::IAutomation> automation = gapi::automation();
    if (!automation) throw_host_error(abi::e_pointer, abi::IAutomation::iid_text);

    abi::variant_t kind;
    kind.type = abi::vt_i4;
    kind.i4 = 1;
    abi::variant_t folder =
        invoke(automation.get(), abi::disp_folder, abi::invoke_method, &kind, 1);
    QString file = folder.type == abi::vt_string ? to_qstring(folder.str) : QString();
    folder.clear();
    file += relativePath;

    const quintptr owner = host_main_window();
    help::show_context(owner, file.toStdU16String(), static_cast<unsigned long>(topic));
}

} // namespace

QString settings_file_path()
{
    return host_folder(3) + settings_name;
}

QString read_setting(const QString& key, const QString& defaultValue)
{
    QSettings* s = settings();
    if (!s) return defaultValue;
    s->beginGroup(group);
    const QString value = s->value(key, defaultValue).toString();
    s->endGroup();
    return value;
}

void write_setting(const QString& key, const QString& value)
{
    QSettings* s = settings();
    if (!s) return;
    s->beginGroup(group);
    s->setValue(key, value);
    s->endGroup();
    // The host may end the process without unloading the library.
    s->sync();
}

void show_help(int topic)
{
    open_help(library_help, topic);
}

void show_help_file(const QString& relativePath, int topic)
{
    open_help(relativePath, topic);
}
