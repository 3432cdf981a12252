// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lists/CallListModel.h"

#include <QDateTime>
#include <QObject>
#include <QSet>
#include <QStringList>

#include <array>

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
};

/// The five lists: their models, reading their files (the current one at
/// start, the others right after the window first shows), writing them, and
/// what went wrong on the way. List names and the sort mode are the
/// session's settings; the store reads and changes them there.
class ListStore : public QObject
{
    Q_OBJECT

public:
    ListStore(const app::DataFolder &data, app::Settings &settings, QObject *parent = nullptr);

    /// The model of list 1..5 (null outside). A list still waiting to be
    /// read is read here first, so no caller ever sees it unread.
    CallListModel *model(int list) const;
    /// The five models as they are, lists still waiting to be read unread
    /// (for the grids, which show only the current list).
    std::array<CallListModel *, kListCount> models() const { return m_models; }
    /// Rows of list n as the chooser shows them: a list not read yet counts
    /// its file's lines.
    int rowCount(int list) const;
    /// The chooser line of list n: " name  (count)".
    QString chooserLine(int list) const;
    /// What the loader needs: Me and the thumbnail folder.
    LoadContext loadContext() const;

    /// While set, sorting does nothing (the program is starting).
    void setStarting(bool starting) { m_starting = starting; }

    /// Start-up: reads the current list now and leaves the others for
    /// loadPending(), counting their lines meanwhile.
    void loadAtStartUp(int currentList);
    /// Reads every list left for later (unsorted, as start-up reads them).
    void loadPending();
    bool hasPending() const;
    /// The list switch: reads the list's file again and sorts it. At the end
    /// of start-up, a file unchanged since it was read is only sorted.
    void reload(int list, bool atStartUp = false);

    /// Sorts list n with a selector passed on by reference (see
    /// CallListModel::sortList); nothing while starting.
    void sort(int list, qint16 &selector);
    /// Writes list n's file; a failure is reported by writeFailed().
    bool save(int list);
    /// After a change of list n: sort with the program's sort mode, save,
    /// and tell the chooser. False when the file could not be written.
    bool changed(int list);
    /// A list's rows changed without a save (a clear): tell the chooser.
    void countChanged(int list);
    /// Me moved: every row's azimuth again.
    void recomputeAzimuths();

signals:
    /// The chooser line of list n is out of date.
    void chooserLineChanged(int list);
    /// A list file is damaged or unreadable. Reported once per file per run.
    void damageFound(const lists::DamageReport &report);
    /// A list file could not be written.
    void writeFailed(const QString &path, const QString &why);

private:
    void load(int list, bool sorting);
    void loadIfPending(int list) const;

    const app::DataFolder &m_data;
    app::Settings &m_settings;
    bool m_starting = false;
    std::array<CallListModel *, kListCount> m_models{};
    /// What each list file was when it was last read.
    struct LoadedFile
    {
        qint64 size = -1;
        QDateTime modified;
        bool complete = false;
    };
    std::array<LoadedFile, kListCount> m_loaded{};
    std::array<bool, kListCount> m_pending{};
    std::array<int, kListCount> m_pendingRows{};
    QSet<QString> m_reportedDamage;
};

} // namespace marvik::lists
