// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lists/ListStore.h"

#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/app/Session.h"
#include "core/app/TextFile.h"
#include "core/lists/ListEditing.h"
#include "core/lists/ListFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace marvik::lists {

ListStore::ListStore(const app::DataFolder &data, app::Settings &settings, QObject *parent)
    : QObject(parent)
    , m_data(data)
    , m_settings(settings)
{
    for (int n = 1; n <= kListCount; ++n) {
        auto *model = new CallListModel(this);
        model->setObjectName(QStringLiteral("List%1").arg(n));
        m_models[std::size_t(n - 1)] = model;
    }
}

CallListModel *ListStore::model(int list) const
{
    if (list < 1 || list > kListCount)
        return nullptr;
    loadIfPending(list);
    return m_models[std::size_t(list - 1)];
}

void ListStore::loadIfPending(int list) const
{
    if (!m_pending[std::size_t(list - 1)])
        return;
    auto *self = const_cast<ListStore *>(this);
    self->load(list, false);
    emit self->chooserLineChanged(list);
}

int ListStore::rowCount(int list) const
{
    if (list < 1 || list > kListCount)
        return 0;
    const std::size_t i = std::size_t(list - 1);
    return m_pending[i] ? m_pendingRows[i] : m_models[i]->rowCount();
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

void ListStore::loadAtStartUp(int currentList)
{
    for (int n = 1; n <= kListCount; ++n) {
        if (!QFileInfo::exists(m_data.listFile(n)))
            continue;
        if (n == currentList) {
            load(n, false);
        } else {
            // Large lists would keep the window from showing; the chooser
            // needs only their line counts until they are read.
            QFile file(m_data.listFile(n));
            m_pending[std::size_t(n - 1)] = true;
            m_pendingRows[std::size_t(n - 1)] = file.open(QIODevice::ReadOnly) ? int(app::countLines(file.readAll())) : 0;
        }
    }
}

bool ListStore::hasPending() const
{
    return std::any_of(m_pending.begin(), m_pending.end(), [](bool p) { return p; });
}

void ListStore::loadPending()
{
    for (int n = 1; n <= kListCount; ++n)
        loadIfPending(n);
}

void ListStore::reload(int list, bool atStartUp)
{
    const QFileInfo file(m_data.listFile(list));
    if (!file.exists())
        return;
    // The first switch follows the load of every list at once; when the file
    // is as it was then, reading it again would give the same rows, so only
    // the sort that the load skipped is done.
    const LoadedFile &loaded = m_loaded[std::size_t(list - 1)];
    if (atStartUp && loaded.complete && loaded.size == file.size() && loaded.modified == file.lastModified())
        sort(list, m_settings.sortMode);
    else
        load(list, !m_starting);
}

void ListStore::load(int list, bool sorting)
{
    const QString path = m_data.listFile(list);
    const QFileInfo before(path);
    m_pending[std::size_t(list - 1)] = false;
    const LoadReport report =
        loadList(*m_models[std::size_t(list - 1)], path, loadContext(), m_settings.sortMode, sorting);
    m_loaded[std::size_t(list - 1)] = {before.size(), before.lastModified(), report.complete()};
    if (report.complete())
        return;
    // Each damaged file is copied aside and reported once per run, not at
    // every switch to its list.
    const QString key = path + QString::number(QFileInfo(path).size());
    if (m_reportedDamage.contains(key))
        return;
    m_reportedDamage.insert(key);
    DamageReport damage;
    damage.list = list;
    damage.path = path;
    damage.opened = report.opened;
    damage.badLine = report.badLine;
    damage.error = report.errorString;
    if (report.opened)
        damage.keptAs = app::keepDamagedCopy(path);
    emit damageFound(damage);
}

void ListStore::sort(int list, qint16 &selector)
{
    if (m_starting || !model(list))
        return;
    model(list)->sortList(selector);
}

bool ListStore::save(int list)
{
    QString why;
    if (lists::saveList(*model(list), m_data.listFile(list), &why))
        return true;
    emit writeFailed(m_data.listFile(list), why);
    return false;
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
    emit chooserLineChanged(list);
}

void ListStore::recomputeAzimuths()
{
    const LoadContext ctx = loadContext();
    for (int n = 1; n <= kListCount; ++n) {
        if (!m_pending[std::size_t(n - 1)])
            m_models[std::size_t(n - 1)]->recomputeAzimuths(ctx.me);
    }
}

} // namespace marvik::lists
