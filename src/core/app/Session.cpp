// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/Session.h"

#include "core/app/Log.h"
#include "core/app/TextCodec.h"
#include "core/app/TextFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSettings>
#include <QSysInfo>
#include <QTemporaryFile>

#include <algorithm>

namespace marvik::app {

namespace {

bool folderTakesFiles(const QString &folder)
{
    QTemporaryFile probe(folder + QStringLiteral("/.marvik-write-test-XXXXXX"));
    return probe.open();
}

} // namespace

Session::Session(const QString &dataDir, QSettings *store, QObject *parent)
    : QObject(parent)
    , m_data(dataDir)
    , m_store(store)
{
    if (!m_store) {
        m_ownStore = std::make_unique<QSettings>(QStringLiteral("Marvik"), QStringLiteral("Marvik"));
        m_store = m_ownStore.get();
    }
    m_sources = lookup::SourceSettings::load(*m_store);
}

Session::~Session()
{
    if (m_lock)
        m_lock->unlock();
}

LockOutcome Session::lock()
{
    return tryLock(false);
}

LockOutcome Session::takeOverLock()
{
    return tryLock(true);
}

LockOutcome Session::tryLock(bool takeOver)
{
    LockOutcome out;
    QDir().mkpath(m_data.path());
    m_lock = std::make_unique<QLockFile>(m_data.filePath(QStringLiteral("Marvik.lock")));
    // Never stale by age: a Marvik left running for weeks still holds it.
    m_lock->setStaleLockTime(0);
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (m_lock->tryLock(0)) {
            out.state = LockOutcome::State::Acquired;
            return out;
        }
        if (m_lock->error() != QLockFile::LockFailedError)
            break;
        qint64 pid = 0;
        QString host;
        QString appName;
        // An empty or garbled lock (a crash while it was written) names no
        // one who could still hold it.
        if (!m_lock->getLockInfo(&pid, &host, &appName) || pid <= 0) {
            qCInfo(lcApp) << "removing an unreadable lock";
        } else if (host != QSysInfo::machineHostName() && !takeOver) {
            out.state = LockOutcome::State::OtherHost;
            out.host = host;
            out.pid = pid;
            return out;
        } else if (host == QSysInfo::machineHostName()) {
            // QLockFile has already cleared a lock whose process is gone, so
            // this one's holder is alive.
            out.state = LockOutcome::State::OtherInstance;
            out.pid = pid;
            return out;
        }
        m_lock->removeStaleLockFile();
        out.staleRemoved = true;
    }
    out.state = m_lock->error() == QLockFile::LockFailedError ? LockOutcome::State::OtherInstance
                                                             : LockOutcome::State::Failed;
    if (out.state == LockOutcome::State::Failed) {
        out.why = m_lock->error() == QLockFile::PermissionError ? QStringLiteral("permission denied")
                                                                : QStringLiteral("the lock file cannot be written");
        qCWarning(lcApp) << "cannot lock the data folder" << m_data.path() << out.why;
        m_lock.reset();
    }
    return out;
}

void Session::prepareFolder(StartUpNotes &notes)
{
    QString why;
    if (!m_data.ensureCreated(shareFolder(), &why)) {
        notes.folderProblem = why;
        qCWarning(lcApp) << why;
    }
    notes.folderReadOnly = QFileInfo(m_data.path()).isDir() && !folderTakesFiles(m_data.path());
}

Placement Session::placement() const
{
    return Placement::load(*m_store);
}

void Session::ensureImageFolders()
{
    m_data.ensureImageFolders();
}

void Session::scanMaps()
{
    m_settings.maps.clear();
    for (const QString &name : m_data.scanMaps())
        m_settings.maps.append(MapRow{name, {}, {}});
}

void Session::readConfig(StartUpNotes &notes)
{
    const QString path = m_data.configFile();
    if (!QFileInfo::exists(path))
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        notes.configProblem = file.errorString();
        qCWarning(lcApp) << "cannot read" << path << file.errorString();
        return;
    }
    const QByteArray bytes = file.readAll();
    if (isForeignConfig(bytes)) {
        notes.configKeptAs = keepDamagedCopy(path);
        qCWarning(lcApp) << path << "is not a Marvik.cfg; kept as" << notes.configKeptAs;
    }
    parseConfig(decodeTextFile(bytes), m_settings);
    m_currentSource = lookup::sourceFromMenuIndex(m_settings.defaultDatabase).value_or(lookup::Source::EHam);
}

void Session::setMe(const maps::Position &me)
{
    if (me.latitude == m_settings.me.latitude && me.longitude == m_settings.me.longitude)
        return;
    m_settings.me = me;
    emit meChanged();
}

void Session::setCurrentSource(lookup::Source source)
{
    m_currentSource = source;
    emit currentSourceChanged(source);
}

void Session::setSources(const lookup::SourceSettings &sources)
{
    m_sources = sources;
    m_sources.save(*m_store);
    m_store->sync();
    emit sourcesChanged();
}

void Session::setDefaultSource(lookup::Source source)
{
    m_settings.defaultDatabase = qint16(lookup::menuIndexOf(source));
    setCurrentSource(source);
}

void Session::savePlacement(const Placement &placement)
{
    placement.save(*m_store);
    m_store->sync();
}

bool Session::writeConfig(QString *errorString)
{
    return app::writeConfig(m_data.configFile(), m_settings, errorString);
}

void Session::finish()
{
    m_data.rotateIni();
    const QString install = installationFolder();
    removeFolder(install + QStringLiteral("/Maps"), install);
    if (m_lock)
        m_lock->unlock();
}

bool isForeignConfig(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return false;
    if (bytes.contains('\0'))
        return true;
    QByteArrayView text(bytes);
    if (text.startsWith("\xEF\xBB\xBF"))
        text = text.sliced(3);
    return !text.startsWith("LatLon:");
}

QString keepDamagedCopy(const QString &path, QString *why)
{
    QByteArray bytes;
    if (!readFileBytes(path, bytes, why))
        return {};
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddHHmmss"));
    QString copy = path + QStringLiteral(".damaged-") + stamp;
    for (int n = 2; QFileInfo::exists(copy); ++n)
        copy = path + QStringLiteral(".damaged-") + stamp + u'-' + QString::number(n);
    // Written as any file of ours: whole, synced, or not at all.
    if (!writeFileAtomically(copy, bytes, why)) {
        qCWarning(lcApp) << "could not keep a copy of" << path;
        return {};
    }
    return copy;
}

} // namespace marvik::app
