#pragma once

// The library's own settings (an INI file below the host's user folder, group "common") and
// the host's compiled help.

#include <QString>

// Full path of the settings file: the host folder of kind 3 followed by the library's file
// name; the name alone when the host cannot report the folder.
QString settings_file_path();

// Value of key in the group "common", or defaultValue when unset or when there is no settings
// file.
QString read_setting(const QString& key, const QString& defaultValue = {});
void write_setting(const QString& key, const QString& value);

// Opens the library's help file at a context number.
// Throws std::system_error with 0x80004003 when the host gives no automation object.
void show_help(int topic);
// Opens the help file at the host's system folder followed by relativePath.
void show_help_file(const QString& relativePath, int topic);
