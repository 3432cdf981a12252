// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/app/Placement.h"
#include "core/lookup/SourceSettings.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

class QLockFile;
class QSettings;

namespace marvik::app {

/// What became of taking the data folder's lock.
struct LockOutcome
{
    enum class State {
        Acquired,      ///< ours now (a stale lock was removed on the way)
        OtherInstance, ///< a Marvik on this computer holds it
        OtherHost,     ///< left by a Marvik on another computer: the user may take it over
        Failed,        ///< the folder cannot hold a lock (read-only, full); go on without one
    };
    State state = State::Failed;
    QString host;      ///< OtherHost: the host name written in the lock
    qint64 pid = 0;    ///< OtherHost, OtherInstance: the process written in the lock
    QString why;       ///< Failed: the reason
    bool staleRemoved = false; ///< an unreadable or orphaned lock was cleared first
};

/// What start-up found that the user should hear about.
struct StartUpNotes
{
    QString configKeptAs;    ///< a damaged Marvik.cfg was copied aside to this file
    QString configProblem;   ///< Marvik.cfg could not be read (why)
    bool folderReadOnly = false; ///< changes cannot be saved in the data folder
    QString folderProblem;   ///< the data folder could not be made (why)
};

/// The program's session with its data folder: the instance lock, the folder
/// and its seeding from the shipped defaults, Marvik.cfg read at start and
/// written at exit, the window's place in the settings store, the `.ini`
/// rotation and the removal of a stray Maps folder. It also holds the
/// program-wide state that lives between start and exit: the own station,
/// the current lookup source and the language.
class Session : public QObject
{
    Q_OBJECT

public:
    /// `dataDir` empty: the per-user data folder. `store` null: the per-user
    /// settings store QSettings("Marvik", "Marvik").
    explicit Session(const QString &dataDir = {}, QSettings *store = nullptr, QObject *parent = nullptr);
    ~Session() override;

    const DataFolder &dataFolder() const { return m_data; }
    QSettings &store() const { return *m_store; }
    Settings &settings() { return m_settings; }
    const Settings &settings() const { return m_settings; }
    const lookup::SourceSettings &sources() const { return m_sources; }
    /// New source settings (accounts, the ways, the fallback order, the
    /// cache), kept in the settings store at once.
    void setSources(const lookup::SourceSettings &sources);

    // ---- start-up, in this order
    /// One Marvik per data folder: two would overwrite each other's lists
    /// at exit. A lock nobody can hold any more (empty, garbage, or from a
    /// process that is gone) is removed on the way.
    LockOutcome lock();
    /// Takes over a lock left on another host, after the user agreed.
    LockOutcome takeOverLock();
    /// Creates the data folder, seeds what is missing from the shipped
    /// defaults, and tells whether changes can be saved there.
    void prepareFolder(StartUpNotes &notes);
    Placement placement() const;
    /// Images/ and Images/Thumbs/.
    void ensureImageFolders();
    /// The map table from the Maps/ folder.
    void scanMaps();
    /// Reads Marvik.cfg. A file that is not a Marvik.cfg at all is copied
    /// aside before anything else happens, so the exit cannot lose it.
    void readConfig(StartUpNotes &notes);

    // ---- program-wide state
    /// Set from the first step of start-up until the list chooser is built:
    /// the sort and the option and list handlers do nothing meanwhile.
    bool isStarting() const { return m_starting; }
    void setStarting(bool starting) { m_starting = starting; }

    maps::Position me() const { return m_settings.me; }
    void setMe(const maps::Position &me);
    lookup::Source currentSource() const { return m_currentSource; }
    /// Makes a source current (not the default).
    void setCurrentSource(lookup::Source source);
    /// Makes a source the default and the current one.
    void setDefaultSource(lookup::Source source);

    // ---- shut-down, in this order
    void savePlacement(const Placement &placement);
    bool writeConfig(QString *errorString);
    /// The `.ini` rotation and the stray Maps folder, then the lock goes.
    void finish();

signals:
    void meChanged();
    void currentSourceChanged(lookup::Source source);
    void sourcesChanged();

private:
    LockOutcome tryLock(bool takeOver);

    DataFolder m_data;
    Settings m_settings;
    lookup::SourceSettings m_sources;
    QSettings *m_store = nullptr;
    std::unique_ptr<QSettings> m_ownStore;
    std::unique_ptr<QLockFile> m_lock;
    lookup::Source m_currentSource = lookup::Source::EHam;
    bool m_starting = false;
};

/// True when `bytes` are plainly not a Marvik.cfg (it always starts with
/// "LatLon:" and holds text only), so it must be kept before it is replaced.
bool isForeignConfig(const QByteArray &bytes);

/// Copies a file aside as "<file>.damaged-<stamp>" (a number added when that
/// name is taken), whole or not at all. Returns the copy's path; empty, with
/// `why`, when it could not be made.
QString keepDamagedCopy(const QString &path, QString *why = nullptr);

} // namespace marvik::app
