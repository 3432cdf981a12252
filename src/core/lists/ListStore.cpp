// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lists/ListStore.h"

#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/app/Log.h"
#include "core/app/Session.h"
#include "core/app/TextFile.h"
#include "core/lists/ListEditing.h"
#include "core/lists/ListFile.h"
#include "core/lists/ListReaders.h"
#include "core/lists/Thumbnails.h"

#include <QFile>
#include <QFileInfo>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>

namespace marvik::lists {

/// A list file as a worker read it, with the file's size and time then and
/// the copy kept of a damaged file.
struct ListStore::Reading
{
    ParsedList parsed;
    qint64 size = -1;
    QDateTime modified;
    maps::Position me;
    QString keptAs;
    QString copyError;
};

namespace {

/// Rows a window can show at once (a tall screen, a small font).
constexpr qsizetype kFirstScreenRows = 64;

/// The file read into rows, and nothing else done about it.
std::shared_ptr<ListStore::Reading> readRows(const QString &path, const LoadContext &context)
{
    auto r = std::make_shared<ListStore::Reading>();
    const QFileInfo before(path);
    r->size = before.size();
    r->modified = before.lastModified();
    r->me = context.me;
    r->parsed = readListFile(path, context);
    return r;
}

/// A damaged file is copied aside before anyone can write over it.
void keepIfDamaged(ListStore::Reading &r, const QString &path)
{
    if (r.parsed.report.opened && !r.parsed.report.complete())
        r.keptAs = app::keepDamagedCopy(path, &r.copyError);
}

std::shared_ptr<ListStore::Reading> readOnWorker(const QString &path, const LoadContext &context)
{
    std::shared_ptr<ListStore::Reading> r = readRows(path, context);
    keepIfDamaged(*r, path);
    return r;
}

/// The lines of a list file: its rows once read.
int linesOf(const QString &path)
{
    // Mapped, not read: counting the lines of a large list costs no copy.
    QFile file(path);
    const uchar *bytes = file.open(QIODevice::ReadOnly) && file.size() > 0 ? file.map(0, file.size()) : nullptr;
    return bytes ? int(app::countLines(QByteArrayView(bytes, file.size()))) : 0;
}

} // namespace

ListStore::ListStore(const app::DataFolder &data, app::Settings &settings, QObject *parent)
    : QObject(parent)
    , m_data(data)
    , m_settings(settings)
{
    m_readers.setObjectName(QStringLiteral("listReaders"));
    m_adoptNext.setSingleShot(true);
    m_adoptNext.setInterval(0);
    connect(&m_adoptNext, &QTimer::timeout, this, [this] {
        if (m_done.empty())
            return;
        const auto [list, read] = m_done.front();
        m_done.erase(m_done.begin());
        if (!m_done.empty())
            m_adoptNext.start();
        const std::size_t k = std::size_t(list - 1);
        if (m_readCount[k] == read && m_reading[k].isValid())
            adopt(list);
    });
    // Two at a time: the window keeps a core to itself, and five large lists
    // read at once would hold five files' rows in memory at the same moment.
    // The others wait their turn in the queue.
    m_readers.setMaxThreadCount(2);
    for (int n = 1; n <= kListCount; ++n) {
        auto *model = new CallListModel(this);
        model->setObjectName(QStringLiteral("List%1").arg(n));
        m_models[std::size_t(n - 1)] = model;
    }
}

ListStore::~ListStore()
{
    // A worker still reading must not outlive what it reports to. The
    // future leaves its slot first: a wait may run a queued read right here,
    // and its hand-over must find nothing left to adopt.
    for (QFuture<std::shared_ptr<Reading>> &slot : m_reading) {
        QFuture<std::shared_ptr<Reading>> f = std::exchange(slot, {});
        if (f.isValid())
            f.waitForFinished();
    }
    if (m_ahead.isValid())
        m_ahead.waitForFinished();
    if (m_counted.isValid())
        m_counted.waitForFinished();
}

void ListStore::readAhead(const app::Settings &peeked)
{
    readCurrentAhead(peeked);
    countLinesAhead();
}

void ListStore::readCurrentAhead(const app::Settings &peeked)
{
    const int list = peeked.currentList;
    if (list < 1 || list > kListCount || m_ahead.isValid())
        return;
    const QString path = m_data.listFile(list);
    if (!QFileInfo::exists(path))
        return;
    LoadContext ctx = loadContext();
    ctx.me = peeked.me;
    m_aheadList = list;
    m_ahead = QtConcurrent::run(&m_readers, [path, ctx] {
        becomeListReader();
        std::shared_ptr<Reading> r = readRows(path, ctx);
        // The rows the window shows first are the file's first: their
        // thumbnails are decoded here, not in the window's first paint.
        const ParsedList &parsed = r->parsed;
        if (parsed.thumbnails) {
            const qsizetype shown = std::min<qsizetype>(parsed.rows.size(), kFirstScreenRows);
            for (qsizetype row = 0; row < shown; ++row) {
                if (const qint32 thumbnail = parsed.rows[row].thumbnail; thumbnail >= 0) {
                    thumbnailCache::image(parsed.thumbnails->path(thumbnail));
                    giveWayToTheWindow();
                }
            }
        }
        return r;
    });
}

void ListStore::countLinesAhead()
{
    if (m_counted.isValid())
        return;
    // Mapping four large files and counting their lines cost the window's
    // thread a millisecond and more at start-up, most of it page faults.
    std::array<QString, kListCount> paths;
    for (int n = 1; n <= kListCount; ++n)
        paths[std::size_t(n - 1)] = m_data.listFile(n);
    m_counted = QtConcurrent::run(&m_readers, [paths] {
        becomeListReader();
        std::array<int, kListCount> lines;
        for (std::size_t i = 0; i < paths.size(); ++i)
            lines[i] = QFileInfo::exists(paths[i]) ? linesOf(paths[i]) : -1;
        return lines;
    });
}

CallListModel *ListStore::model(int list) const
{
    if (list < 1 || list > kListCount)
        return nullptr;
    auto *self = const_cast<ListStore *>(this);
    const std::size_t i = std::size_t(list - 1);
    if (m_waiting[i])
        self->startReading(list, false);
    if (m_reading[i].isValid())
        self->adopt(list);
    return m_models[i];
}

int ListStore::rowCount(int list) const
{
    if (list < 1 || list > kListCount)
        return 0;
    const std::size_t i = std::size_t(list - 1);
    // While its file is read, a list counts the file's lines: the chooser
    // shows every list's size from the first paint on.
    return (m_reading[i].isValid() || m_waiting[i]) && m_pendingRows[i] >= 0 ? m_pendingRows[i]
                                                                               : m_models[i]->rowCount();
}

QString ListStore::chooserLine(int list) const
{
    return lists::chooserLine(m_settings.listNames[std::size_t(list - 1)], rowCount(list));
}

LoadContext ListStore::loadContext() const
{
    LoadContext ctx;
    ctx.me = m_settings.me;
    ctx.thumbsDir = m_data.thumbsDir();
    return ctx;
}

void ListStore::startReading(int list, bool sortAfter)
{
    const std::size_t i = std::size_t(list - 1);
    // The newer read wins; the older one is dropped. It leaves its slot
    // before the wait: a read still queued runs right here, on this thread,
    // and its hand-over must not adopt it or touch the future being waited on.
    if (QFuture<std::shared_ptr<Reading>> older = std::exchange(m_reading[i], {}); older.isValid())
        older.waitForFinished();
    m_sortAfter[i] = sortAfter;
    const QString path = m_data.listFile(list);
    if (!std::exchange(m_waiting[i], false))
        m_pendingRows[i] = linesOf(path);
    const LoadContext ctx = loadContext();
    if (m_aheadList == list && m_ahead.isValid()) {
        // Read ahead: used when the file is still what was read, else read
        // again. Either way it is copied aside here if damaged, now that
        // the data folder is Marvik's. A step that follows the read, not a
        // job that waits for it: a waiting job would hold one of the two
        // readers while the other lists queue behind it.
        //
        // The step reports to a future of our own, started now. The future
        // then() gives counts as no read at all (not valid) until a reader
        // is free to run the step, and a list switch in that moment read
        // the file a second time and copied a damaged one aside twice.
        QFutureInterface<std::shared_ptr<Reading>> handOver;
        handOver.reportStarted();
        m_reading[i] = handOver.future();
        std::exchange(m_ahead, {}).then(&m_readers, [handOver, path, ctx](QFuture<std::shared_ptr<Reading>> ahead) mutable {
            becomeListReader();
            try {
                std::shared_ptr<Reading> r = ahead.result();
                const QFileInfo now(path);
                if (now.size() != r->size || now.lastModified() != r->modified)
                    r = readOnWorker(path, ctx);
                else
                    keepIfDamaged(*r, path);
                handOver.reportAndMoveResult(std::move(r));
            } catch (...) {
                // Whoever waits for the list learns of it, rather than waiting for ever.
                handOver.reportException(std::current_exception());
            }
            handOver.reportFinished();
        });
    } else {
        m_reading[i] = QtConcurrent::run(&m_readers, [path, ctx] {
            becomeListReader();
            return readOnWorker(path, ctx);
        });
    }
    // Adopted on the window's thread when done, unless someone needed it
    // sooner and adopted it already, or a newer read took its place.
    const quint64 mine = ++m_readCount[i];
    m_reading[i].then(this, [this, list, mine](const std::shared_ptr<Reading> &) {
        m_done.emplace_back(list, mine);
        if (!m_adoptNext.isActive())
            m_adoptNext.start();
    });
}

void ListStore::adopt(int list)
{
    const std::size_t i = std::size_t(list - 1);
    QFuture<std::shared_ptr<Reading>> future = std::exchange(m_reading[i], {});
    if (!future.isValid())
        return;
    const std::shared_ptr<Reading> r = future.result();
    const LoadReport report = r->parsed.report;
    CallListModel *model = m_models[i];
    model->adopt(std::move(r->parsed));
    // Me may have moved while the worker read.
    if (r->me.latitude != m_settings.me.latitude || r->me.longitude != m_settings.me.longitude)
        model->recomputeAzimuths(m_settings.me);
    m_loaded[i] = {r->size, r->modified, report.complete(), report.opened};
    if (report.complete() && m_sortAfter[i])
        sort(list, m_settings.sortMode);
    emit chooserLineChanged(list);
    emit listRead(list);
    if (report.complete())
        return;

    const QString path = m_data.listFile(list);
    DamageReport damage;
    damage.list = list;
    damage.path = path;
    damage.opened = report.opened;
    damage.badLine = report.badLine;
    damage.error = report.errorString;
    damage.keptAs = r->keptAs;
    damage.copyError = r->copyError;
    // Not read whole and no complete copy of it anywhere: the next save
    // would write over the only copy of what the list held.
    damage.guarded = !report.opened || r->keptAs.isEmpty();
    if (damage.guarded)
        m_guarded[i] = true;
    // Each damaged file is reported once per run, not at every switch to it.
    const QString key = path + u'#' + QString::number(r->size);
    if (m_reportedDamage.contains(key))
        return;
    m_reportedDamage.insert(key);
    emit damageFound(damage);
}

void ListStore::loadAtStartUp(int currentList)
{
    if (QFileInfo::exists(m_data.listFile(currentList)))
        startReading(currentList, false);
    // The other lists wait for the window's first paint: read now, they
    // would take the cores the window needs to get there. The chooser
    // counts their lines meanwhile (counted ahead, when they were).
    std::array<int, kListCount> counted;
    counted.fill(-1);
    if (m_counted.isValid())
        counted = std::exchange(m_counted, {}).result();
    for (int n = 1; n <= kListCount; ++n) {
        const QString path = m_data.listFile(n);
        const std::size_t i = std::size_t(n - 1);
        if (n != currentList && QFileInfo::exists(path)) {
            m_waiting[i] = true;
            m_pendingRows[i] = counted[i] >= 0 ? counted[i] : linesOf(path);
        }
    }
}

void ListStore::startWaitingReads()
{
    for (int n = 1; n <= kListCount; ++n) {
        if (m_waiting[std::size_t(n - 1)])
            startReading(n, false);
    }
}

bool ListStore::isReading() const
{
    return std::any_of(m_reading.begin(), m_reading.end(), [](const auto &f) { return f.isValid(); })
           || std::any_of(m_waiting.begin(), m_waiting.end(), [](bool waiting) { return waiting; });
}

void ListStore::finishReading()
{
    for (int n = 1; n <= kListCount; ++n)
        model(n);
}

void ListStore::reload(int list, bool atStartUp)
{
    const std::size_t i = std::size_t(list - 1);
    const QFileInfo file(m_data.listFile(list));
    if (!file.exists())
        return;
    if (atStartUp && m_reading[i].isValid()) {
        // The read start-up began ends the list switch with its sort.
        m_sortAfter[i] = true;
        return;
    }
    // A file unchanged since it was read gives the same rows again: when
    // the list still holds them, only the sort is done. A cleared list does
    // not hold them and comes back from its file, as it always did.
    const LoadedFile &loaded = m_loaded[i];
    const bool unchanged = !m_reading[i].isValid() && loaded.matchesFile && loaded.size == file.size()
                           && loaded.modified == file.lastModified();
    if (unchanged && loaded.complete) {
        sort(list, m_settings.sortMode);
    } else if (unchanged && atStartUp) {
        // A damaged file start-up read a moment ago (someone needed the
        // list before the switch that ends the start): read again, it would
        // only be copied aside a second time.
    } else {
        startReading(list, !m_starting);
    }
}

void ListStore::loadNow(int list, bool sorting)
{
    startReading(list, sorting);
    adopt(list);
}

void ListStore::sort(int list, qint16 &selector)
{
    if (m_starting || list < 1 || list > kListCount)
        return;
    model(list)->sortList(selector);
}

bool ListStore::save(int list)
{
    CallListModel *m = model(list);
    const std::size_t i = std::size_t(list - 1);
    if (m_guarded[i]) {
        if (!std::exchange(m_refusalTold[i], true))
            emit saveRefused(list);
        qCInfo(lcLists) << "list" << list << "not written: its file was not read whole";
        return false;
    }
    const QString path = m_data.listFile(list);
    QString why;
    if (!lists::saveList(*m, path, &why)) {
        emit writeFailed(path, why);
        return false;
    }
    const QFileInfo written(path);
    m_loaded[i] = {written.size(), written.lastModified(), true, true};
    return true;
}

bool ListStore::changed(int list)
{
    sort(list, m_settings.sortMode);
    const bool saved = save(list);
    emit chooserLineChanged(list);
    return saved;
}

void ListStore::countChanged(int list)
{
    if (list >= 1 && list <= kListCount)
        m_loaded[std::size_t(list - 1)].matchesFile = false;
    emit chooserLineChanged(list);
}

void ListStore::recomputeAzimuths()
{
    for (int n = 1; n <= kListCount; ++n) {
        // A list still being read gets the new Me when it is adopted.
        if (!m_reading[std::size_t(n - 1)].isValid())
            m_models[std::size_t(n - 1)]->recomputeAzimuths(m_settings.me);
    }
}

bool ListStore::isGuarded(int list) const
{
    return list >= 1 && list <= kListCount && m_guarded[std::size_t(list - 1)];
}

bool ListStore::retryGuarded(int list, DamageReport *report)
{
    const std::size_t i = std::size_t(list - 1);
    if (!isGuarded(list))
        return true;
    const QString path = m_data.listFile(list);
    DamageReport damage;
    damage.list = list;
    damage.path = path;
    const std::shared_ptr<Reading> r = readOnWorker(path, loadContext());
    damage.opened = r->parsed.report.opened;
    damage.badLine = r->parsed.report.badLine;
    damage.error = r->parsed.report.errorString;
    damage.keptAs = r->keptAs;
    damage.copyError = r->copyError;
    damage.guarded = !damage.opened || (damage.badLine != 0 && damage.keptAs.isEmpty());
    if (damage.opened && m_models[i]->rowCount() == 0) {
        // A file that could not be read at all showed an empty list; now it
        // can, it shows what it holds.
        m_models[i]->adopt(std::move(r->parsed));
        m_models[i]->recomputeAzimuths(m_settings.me);
        m_loaded[i] = {r->size, r->modified, damage.badLine == 0, true};
        emit chooserLineChanged(list);
    }
    m_guarded[i] = damage.guarded;
    m_refusalTold[i] = false;
    if (report)
        *report = damage;
    return !damage.guarded;
}

bool ListStore::keepCopyAt(int list, const QString &target, QString *why)
{
    QFile file(m_data.listFile(list));
    if (!file.open(QIODevice::ReadOnly)) {
        if (why)
            *why = file.errorString();
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError || bytes.size() != file.size()) {
        if (why)
            *why = file.errorString();
        return false;
    }
    if (!app::writeFileAtomically(target, bytes, why))
        return false;
    m_guarded[std::size_t(list - 1)] = false;
    m_refusalTold[std::size_t(list - 1)] = false;
    return true;
}

} // namespace marvik::lists
