// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/DataFolder.h"

#include "core/app/Callsign.h"
#include "core/app/Log.h"
#include "core/i18n/LanguageFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>

namespace marvik::app {

namespace {

void copyMissingTree(const QString &from, const QString &to)
{
    QDir().mkpath(to);
    const QFileInfoList entries = QDir(from).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries) {
        const QString target = to + u'/' + entry.fileName();
        if (entry.isDir()) {
            copyMissingTree(entry.filePath(), target);
        } else if (!QFileInfo::exists(target) && !QFile::copy(entry.filePath(), target)) {
            qCWarning(lcApp) << "could not seed" << target;
        } else {
            // Shipped files are read-only in a system installation; the
            // user's copies must not be.
            QFile::setPermissions(target, QFile::permissions(target) | QFile::WriteOwner);
        }
    }
}

// A language file must match the program, so the shipped ones are put in
// place whenever the user's copy is missing or of another version. A copy
// with the right version line is the user's to edit and stays; one that is
// replaced is kept beside as "<name>.old", since it may hold their own words.
void installLanguageFiles(const QString &from, const QString &to)
{
    if (!QFileInfo(from).isDir())
        return;
    QDir().mkpath(to);
    const QFileInfoList shipped = QDir(from).entryInfoList({QStringLiteral("*.Language")}, QDir::Files);
    for (const QFileInfo &file : shipped) {
        const QString target = to + u'/' + file.fileName();
        if (QFileInfo::exists(target)) {
            if (i18n::hasCurrentVersionLine(target) || !i18n::hasCurrentVersionLine(file.filePath()))
                continue;
            const QString old = target + QStringLiteral(".old");
            QFile::remove(old);
            if (!QFile::rename(target, old)) {
                qCWarning(lcApp) << "could not move aside" << target;
                continue;
            }
            qCInfo(lcApp) << "language file" << target << "is of another version; the shipped one replaces it";
        }
        if (!QFile::copy(file.filePath(), target))
            qCWarning(lcApp) << "could not install" << target;
        else
            QFile::setPermissions(target, QFile::permissions(target) | QFile::WriteOwner);
    }
}

} // namespace

DataFolder::DataFolder(const QString &path)
    : m_path(QDir::cleanPath(path.isEmpty() ? defaultPath() : QDir(path).absolutePath()))
{
}

QString DataFolder::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

QString DataFolder::filePath(const QString &relative) const
{
    QString rel = relative;
    rel.replace(u'\\', u'/');
    while (rel.startsWith(u'/'))
        rel.remove(0, 1);
    return m_path + u'/' + rel;
}

QString DataFolder::configFile() const { return filePath(QStringLiteral("Marvik.cfg")); }
QString DataFolder::listFile(int list) const { return filePath(QStringLiteral("List%1.dat").arg(list)); }
QString DataFolder::imagesDir() const { return filePath(QStringLiteral("Images")); }
QString DataFolder::thumbsDir() const { return filePath(QStringLiteral("Images/Thumbs")); }
QString DataFolder::mapsDir() const { return filePath(QStringLiteral("Maps")); }
QString DataFolder::languagesDir() const { return filePath(QStringLiteral("Languages")); }

QString DataFolder::picturePath(const QString &callsign) const
{
    return imagesDir() + u'/' + callsign::fileName(callsign) + QStringLiteral(".jpg");
}

QString DataFolder::thumbnailPath(const QString &callsign) const
{
    return thumbsDir() + u'/' + callsign::fileName(callsign) + QStringLiteral(".jpg");
}

bool DataFolder::ensureCreated(const QString &shareDir, QString *errorString) const
{
    if (!QDir().mkpath(m_path)) {
        if (errorString)
            *errorString = QCoreApplication::translate("DataFolder", "Cannot create the data folder %1").arg(m_path);
        return false;
    }
    if (shareDir.isEmpty() || !QFileInfo(shareDir).isDir())
        return true;
    const QString cfg = configFile();
    if (!QFileInfo::exists(cfg) && QFileInfo::exists(shareDir + QStringLiteral("/Marvik.cfg"))) {
        QFile::copy(shareDir + QStringLiteral("/Marvik.cfg"), cfg);
        QFile::setPermissions(cfg, QFile::permissions(cfg) | QFile::WriteOwner);
    }
    const QString maps = mapsDir();
    if (!QFileInfo(maps).isDir() && QFileInfo(shareDir + QStringLiteral("/Maps")).isDir())
        copyMissingTree(shareDir + QStringLiteral("/Maps"), maps);
    installLanguageFiles(shareDir + QStringLiteral("/Languages"), languagesDir());
    return true;
}

void DataFolder::ensureImageFolders() const
{
    for (const QString &folder : {imagesDir(), thumbsDir()}) {
        if (!QFileInfo(folder).isDir() && !QDir().mkdir(folder))
            qCWarning(lcApp) << "could not create" << folder;
    }
}

QStringList DataFolder::scanMaps() const
{
    QStringList names;
    const QStringList files = QDir(mapsDir()).entryList(QDir::Files | QDir::Hidden, QDir::Unsorted);
    for (const QString &file : files) {
        // The name less its last four characters: the extension with its dot.
        const QString name = file.left(std::max<qsizetype>(0, file.size() - 4));
        if (name.endsWith(QLatin1String("Map"), Qt::CaseSensitive))
            names.append(name);
    }
    std::stable_sort(names.begin(), names.end(),
                     [](const QString &a, const QString &b) { return a.compare(b, Qt::CaseSensitive) < 0; });
    return names;
}

void DataFolder::rotateIni() const
{
    const QString ini = filePath(QStringLiteral("Marvik.ini"));
    if (!QFileInfo::exists(ini))
        return;
    const QString old = filePath(QStringLiteral("MarvikOld.ini"));
    if (QFileInfo::exists(old))
        QFile::remove(old);
    if (!QFile::rename(ini, old))
        qCWarning(lcApp) << "could not rename" << ini;
}

QString installationFolder()
{
    return QCoreApplication::applicationDirPath();
}

QString shareFolder()
{
    return QDir::cleanPath(installationFolder() + QStringLiteral("/../") + QStringLiteral(MARVIK_SHARE_SUBDIR));
}

bool isDevelopmentInstallation(const QString &installDir)
{
    return QFileInfo::exists(installDir + QStringLiteral("/Marvik.vbp"));
}

void removeFolder(const QString &folder, const QString &installDir)
{
    const QFileInfo info(folder);
    if (!info.isDir() || info.isSymLink() || isDevelopmentInstallation(installDir))
        return;
    const QFileInfoList entries =
        QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries) {
        if (entry.isDir() && !entry.isSymLink()) {
            removeFolder(entry.filePath(), installDir);
        } else {
            QFile::setPermissions(entry.filePath(), QFile::permissions(entry.filePath()) | QFile::WriteOwner);
            QFile::remove(entry.filePath());
        }
    }
    QFile::setPermissions(folder, QFile::permissions(folder) | QFile::WriteOwner | QFile::ExeOwner);
    QDir().rmdir(folder);
}

} // namespace marvik::app
