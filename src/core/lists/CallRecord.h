// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QDateTime>
#include <QString>

#include <array>

namespace marvik::lists {

/// The eleven fields of a list entry, in file and grid column order.
enum class Column : int {
    Callsign = 0,
    FirstName,
    Azimuth,
    FullName,
    Address,
    City,
    Country,
    Latitude,
    Longitude,
    TimeStamp,
    Extra,
};
inline constexpr int kColumnCount = 11;

/// A first name that is not the full name's first word.
inline const QColor kNicknameColour{187, 238, 255};
/// A row marked for the paste text.
inline const QColor kMarkColour{170, 255, 170};
/// The blink of an entry that is already in the list.
inline const QColor kBlinkColour{255, 0, 0};

/// One station of a list: one grid row, one list-file line.
struct CallRecord
{
    std::array<QString, kColumnCount> fields;
    QColor callsignBack;  ///< back colour of the callsign cell; invalid: the grid's own
    QColor firstNameBack; ///< back colour of the first-name cell; invalid: the grid's own
    QString thumbnail;    ///< thumbnail file drawn beside the first name; empty: none

    QString &operator[](Column c) { return fields[std::size_t(c)]; }
    const QString &operator[](Column c) const { return fields[std::size_t(c)]; }

    /// The file line: the eleven fields joined by "*".
    QString toLine() const;
};

/// The first word of a full name: everything before its first blank.
QString firstWord(const QString &fullName);

/// The time stamp pattern of the list files, "yyyymmddhhnnss".
QString timeStamp(const QDateTime &when);

/// The loader's nickname rule: the full name's first word, when there is one,
/// differs from the first name in upper case.
bool isNicknameAtLoad(QStringView fullName, QStringView firstName);

/// The editors' nickname rule (copying, renaming, the add/edit dialog): the
/// first word differs from the first name as it stands, case and all.
bool isNicknameWhenEdited(const QString &fullName, const QString &firstName);

} // namespace marvik::lists
