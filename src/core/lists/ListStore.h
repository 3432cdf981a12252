// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lists/CallListModel.h"

#include <QDateTime>
#include <QFuture>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QThreadPool>
#include <QTimer>

#include <array>
#include <memory>
#include <vector>

namespace marvik::app {
class DataFolder;
struct Settings;
}

namespace marvik::lists {

inline constexpr int kListCount = 5;

/// A list file that was not read whole.
struct DamageReport
{
    int list = 0;
    QString path;
    bool opened = false;  ///< false: the file could not be read at all
    int badLine = 0;      ///< 1-based line with fewer than eleven fields
    QString error;        ///< why it could not be read
    QString keptAs;       ///< the copy of the whole file; empty when none could be made
    QString copyError;    ///< why no copy could be made
    /// The list is not written until the user has chosen: its file could not
    /// be read, or no copy of it could be kept.
    bool guarded = false;
};

/// The five lists: their models, reading their files on a worker thread
/// (the window adopts each list when it is read), writing them, and what
/// went wrong on the way. A list whose file was not read whole is never
/// written over until a complete copy of the file has been kept somewhere
/// the user was told about. List names and the sort mode are the session's
/// settings; the store reads and changes them there.
class ListStore : public QObject
{
    Q_OBJECT

public:
    /// A list file as a worker read it (see ListStore.cpp).
    struct Reading;

    ListStore(const app::DataFolder &data, app::Settings &settings, QObject *parent = nullptr);
    ~ListStore() override;

    /// The model of list 1..5 (null outside). A list still being read is
    /// waited for and adopted here first, so no caller ever acts on a list
    /// its file has not filled yet.
    CallListModel *model(int list) const;
    /// The five models as they are (for the grids).
    std::array<CallListModel *, kListCount> models() const { return m_models; }
    /// The rows list n holds now.
    int rowCount(int list) const;
    /// The chooser line of list n: " name  (count)".
    QString chooserLine(int list) const;
    /// What the loader needs: Me and the thumbnail folder.
    LoadContext loadContext() const;

    /// While set, sorting does nothing (the program is starting).
    void setStarting(bool starting) { m_starting = starting; }

    /// Start-up, before the window is built: reads the file of the list
    /// the configuration names as current on a worker, so the window has
    /// it sooner. Used only if start-up then asks for that list and its file
    /// has not changed since; a damaged file is copied aside only then.
    /// Counts the lines of every list file for the chooser meanwhile.
    void readAhead(const app::Settings &peeked);
    /// Start-up: every list file is read on a worker, the current one at
    /// once, the others from startWaitingReads() on (or when first asked
    /// for); each list is adopted as it arrives (unsorted, as start-up read
    /// them).
    void loadAtStartUp(int currentList);
    /// Starts the reads start-up held back: once the window has painted.
    void startWaitingReads();
    /// True while some list is still being read.
    bool isReading() const;
    /// Waits for every list being read and adopts it.
    void finishReading();
    /// The list switch: the list's file is read again and sorted. When the
    /// file has not changed since it was read and the list still holds what
    /// it read, only the sort is done.
    void reload(int list, bool atStartUp = false);

    /// Sorts list n with a selector passed on by reference (see
    /// CallListModel::sortList); nothing while starting.
    void sort(int list, qint16 &selector);
    /// Writes list n's file; a failure is reported by writeFailed(), a
    /// guarded list is not written and reported by saveRefused().
    bool save(int list);
    /// After a change of list n: sort with the program's sort mode, save,
    /// and tell the chooser. Returns whether the save worked.
    bool changed(int list);
    /// A list's rows changed without a save (a clear): the list no longer
    /// holds what its file holds; tell the chooser.
    void countChanged(int list);
    /// Me moved: every row's azimuth again.
    void recomputeAzimuths();

    /// Whether list n must not be written (see DamageReport::guarded).
    bool isGuarded(int list) const;
    /// Tries again to keep a copy of a guarded list's file beside it (or,
    /// for a file that could not be read, to read it). True when the list
    /// may be written again; `report` says what happened.
    bool retryGuarded(int list, DamageReport *report);
    /// Keeps a copy of a guarded list's file at `target`; the list may then
    /// be written. False and `why` when the copy could not be made whole.
    bool keepCopyAt(int list, const QString &target, QString *why);

signals:
    /// The chooser line of list n is out of date.
    void chooserLineChanged(int list);
    /// List n has been read and adopted.
    void listRead(int list);
    /// A list file is damaged or unreadable. Reported once per file per run.
    void damageFound(const lists::DamageReport &report);
    /// A list file could not be written.
    void writeFailed(const QString &path, const QString &why);
    /// A guarded list was not written (once per list per run).
    void saveRefused(int list);

private:
    void readCurrentAhead(const app::Settings &peeked);
    void countLinesAhead();
    void startReading(int list, bool sortAfter);
    void adopt(int list);
    void loadNow(int list, bool sorting);

    const app::DataFolder &m_data;
    app::Settings &m_settings;
    /// The list readers' own threads. Not Qt's global pool: the raster
    /// engine paints large areas on that pool and waits for it, so lists
    /// read there would hold up the window's paints until they are done.
    QThreadPool m_readers;
    bool m_starting = false;
    std::array<CallListModel *, kListCount> m_models{};
    /// What each list file was when it was last read, and whether the list
    /// still holds exactly that.
    struct LoadedFile
    {
        qint64 size = -1;
        QDateTime modified;
        bool complete = false;
        bool matchesFile = false;
    };
    std::array<LoadedFile, kListCount> m_loaded{};
    std::array<QFuture<std::shared_ptr<Reading>>, kListCount> m_reading{};
    /// The read ahead of start-up, until start-up takes it or it is left.
    QFuture<std::shared_ptr<Reading>> m_ahead;
    int m_aheadList = 0;
    /// The lines of each list file (-1: none) counted on a worker while the
    /// window is built, until start-up takes them.
    QFuture<std::array<int, kListCount>> m_counted;
    /// Counts the reads of each list, so a read overtaken by a newer one is
    /// dropped when it ends.
    std::array<quint64, kListCount> m_readCount{};
    /// Reads done and not yet adopted (list, read number), adopted one at a
    /// time by a zero timer: lists read at the same moment would otherwise be
    /// adopted back to back, and the window could neither paint nor take a
    /// key in between.
    std::vector<std::pair<int, quint64>> m_done;
    QTimer m_adoptNext;
    std::array<bool, kListCount> m_sortAfter{};
    /// The lines of each list file being read (what the chooser counts
    /// until the list is adopted).
    std::array<int, kListCount> m_pendingRows{};
    /// Lists start-up will read once the window has painted.
    std::array<bool, kListCount> m_waiting{};
    std::array<bool, kListCount> m_guarded{};
    std::array<bool, kListCount> m_refusalTold{};
    QSet<QString> m_reportedDamage;
};

} // namespace marvik::lists
