// A small host-side program: prepares a dialog session the way every dialog export does and
// prints what it found. Run from a folder, it looks for the host's modules in that folder.

#include "frame/session.h"

#include <QApplication>
#include <QTextStream>

#include <system_error>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QTextStream out(stdout);
    try {
        prepare_dialog_session();
        out << "session ready\n";
    } catch (const std::system_error& e) {
        out << "session refused 0x" << QString::number(uint(e.code().value()), 16) << "\n";
    }
    out << "version " << (host_version().isEmpty() ? QStringLiteral("none") : host_version())
        << "\n";
    out << "message box " << host_message_box(QStringLiteral("Проверка")) << "\n";
    return 0;
}
