// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace marvik::app {

/// The per-user folder that holds every file of Marvik's: Marvik.cfg, the
/// list files, Images/, Maps/, Languages/. Paths given in the Windows
/// program's backslash form ("\Images\Thumbs") are relative to it.
class DataFolder
{
public:
    /// `path` empty: the platform's per-user application-data folder for
    /// Marvik ($XDG_DATA_HOME/Marvik on Linux).
    explicit DataFolder(const QString &path = {});

    static QString defaultPath();

    QString path() const { return m_path; }
    /// A file below the data folder; accepts "/" or "\" separators.
    QString filePath(const QString &relative) const;

    QString configFile() const;
    QString listFile(int list) const;
    QString imagesDir() const;
    QString thumbsDir() const;
    QString mapsDir() const;
    QString languagesDir() const;
    /// The picture of a station, "Images/<call>.jpg".
    QString picturePath(const QString &callsign) const;
    /// The thumbnail of a station, "Images/Thumbs/<call>.jpg".
    QString thumbnailPath(const QString &callsign) const;

    /// Creates the data folder and seeds what is missing from the shipped
    /// defaults in `shareDir`: Marvik.cfg and Maps/ when absent, and each
    /// shipped language file that is missing or whose version line no longer
    /// matches the program (the old one is kept as "<name>.old"). Never
    /// overwrites any other file of the user's. Returns false when the folder
    /// cannot be made.
    bool ensureCreated(const QString &shareDir, QString *errorString = nullptr) const;

    /// Creates Images/ and Images/Thumbs/ when missing.
    void ensureImageFolders() const;

    /// The names of the maps in Maps/: each file name less its last four
    /// characters, kept when it ends in "Map" (case-sensitive), sorted.
    QStringList scanMaps() const;

    /// At exit: an old Marvik.ini becomes MarvikOld.ini (replacing the older).
    void rotateIni() const;

private:
    QString m_path;
};

/// The folder of the running program (the installation folder).
QString installationFolder();

/// Where the shipped data lies: share/marvik beside the program's bin/.
QString shareFolder();

/// True in a development build: Marvik.vbp beside the program.
bool isDevelopmentInstallation(const QString &installDir);

/// Removes a folder with everything below it, as the Windows program cleaned
/// up a stray Maps folder: nothing happens when the folder is missing or when
/// `installDir` marks a development build. Links are removed, never followed.
void removeFolder(const QString &folder, const QString &installDir);

} // namespace marvik::app
