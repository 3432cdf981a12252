// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/maps/Geometry.h"

#include <QList>
#include <QString>

#include <array>

namespace marvik::app {

/// The version text shown in captions and checked in language files: the
/// product word, two blanks, the CMake project's version.
inline constexpr char16_t kVersionText[] = u"Marvik  " MARVIK_VERSION;

/// One row of the map table: the map's name and the two whole numbers kept
/// for it in Marvik.cfg (as text, exactly as read).
struct MapRow
{
    QString name;
    QString value1;
    QString value2;
};

/// The program-wide settings kept in Marvik.cfg.
struct Settings
{
    maps::Position me;     ///< own latitude and longitude
    qint16 sortMode = 0;   ///< 0 by callsign, 1 by date/time; the sort may leave 9 here
    qint16 sortMode2 = 0;  ///< kept and written back, used by nothing
    qint16 alwaysOnTop = 0;
    QString ownCallsign;
    qint16 defaultDatabase = 0; ///< menu index 0..6 of the default lookup source
    qint16 language = 0;        ///< 0 English .. 4 Dutch
    std::array<QString, 5> listNames;
    qint16 currentList = 1; ///< 1..5
    qint16 currentMap = 0;  ///< row of the map table
    QList<MapRow> maps;     ///< filled by the Maps/ scan, then by the "Maps:" lines
};

/// What became of reading Marvik.cfg.
enum class ConfigReadStatus {
    Read,    ///< read (a short file leaves the rest at their defaults)
    Missing, ///< no file: everything stays at the defaults
    Unreadable,
};

/// Reads Marvik.cfg into `settings`, line by line as the Windows program did.
/// `settings.maps` must already hold the scanned map table; the "Maps:"
/// section fills in the two numbers of the rows it names (case-insensitive).
ConfigReadStatus readConfig(const QString &path, Settings &settings);

/// Reads from text already in memory (the same rules as readConfig()).
void parseConfig(QStringView text, Settings &settings);

/// The lines Marvik.cfg is written as: 21 lines and one per map.
QStringList configLines(const Settings &settings);

/// Writes Marvik.cfg whole, atomically.
bool writeConfig(const QString &path, const Settings &settings, QString *errorString = nullptr);

} // namespace marvik::app
