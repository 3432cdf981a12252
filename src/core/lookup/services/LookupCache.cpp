// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/services/LookupCache.h"

#include "core/app/Log.h"

#include <QAtomicInt>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace marvik::lookup {

namespace {

QAtomicInt g_connections;

// The fields of a result, in the order of the table's columns after the
// key, the source, the way and the time.
constexpr const char *kFields = "name, first_name, address1, address2, country, latitude, longitude, locator, "
                                "position_from_locator, class, previous_call, born, web_page, picture";

bool exec(QSqlQuery &query, const QString &statement)
{
    if (query.exec(statement))
        return true;
    qCWarning(lcLookup) << "lookup cache:" << statement << "failed:" << query.lastError().text();
    return false;
}

} // namespace

QString LookupCache::fileName()
{
    return QStringLiteral("LookupCache.sqlite");
}

LookupCache::LookupCache(const QString &path)
    : m_path(path)
    , m_connection(QStringLiteral("marvik-lookup-cache-%1").arg(g_connections.fetchAndAddRelaxed(1)))
{
    if (open())
        return;
    // Whatever stood in the way is set aside once; a second failure means
    // the folder itself is the trouble, and the program goes on without.
    if (QFile::exists(m_path)) {
        setAside(m_error);
        if (open())
            return;
    }
    qCWarning(lcLookup) << "no lookup cache:" << m_error;
}

LookupCache::~LookupCache()
{
    close();
}

void LookupCache::close()
{
    if (QSqlDatabase::contains(m_connection)) {
        QSqlDatabase::database(m_connection, false).close();
        QSqlDatabase::removeDatabase(m_connection);
    }
    m_open = false;
}

bool LookupCache::open()
{
    close();
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    db.setDatabaseName(m_path);
    if (!db.open()) {
        m_error = db.lastError().text();
        return false;
    }
    QSqlQuery q(db);
    // SQLite opens anything; reading the header and the pages tells a
    // database from a damaged file.
    if (!q.exec(QStringLiteral("PRAGMA quick_check")) || !q.next() || q.value(0).toString() != u"ok") {
        // The check lists every bad page; the first line says enough.
        const QString why = q.lastError().isValid() ? q.lastError().text() : q.value(0).toString();
        m_error = QStringLiteral("damaged: %1").arg(why.section(u'\n', 0, 0));
        return false;
    }
    q.finish();
    if (!q.exec(QStringLiteral("PRAGMA user_version")) || !q.next()) {
        m_error = q.lastError().text();
        return false;
    }
    const int version = q.value(0).toInt();
    q.finish();
    if (version != 0 && version != kSchemaVersion) {
        m_error = QStringLiteral("a cache of schema %1, this program writes %2").arg(version).arg(kSchemaVersion);
        return false;
    }
    // Write-ahead logging: a writer killed half-way leaves the last
    // committed state, and a second Marvik (the command line) can read
    // while the window writes.
    if (!q.exec(QStringLiteral("PRAGMA journal_mode=WAL")) || !q.next() || q.value(0).toString() != u"wal") {
        m_error = QStringLiteral("no write-ahead log: %1").arg(q.lastError().text());
        return false;
    }
    q.finish();
    exec(q, QStringLiteral("PRAGMA synchronous=NORMAL"));
    exec(q, QStringLiteral("PRAGMA busy_timeout=3000"));
    if (version == 0 && !createSchema())
        return false;
    m_open = true;
    m_error.clear();
    return true;
}

bool LookupCache::createSchema()
{
    QSqlDatabase db = QSqlDatabase::database(m_connection, false);
    QSqlQuery q(db);
    db.transaction();
    const bool ok = exec(q, QStringLiteral("CREATE TABLE IF NOT EXISTS results ("
                                           "callsign TEXT NOT NULL, source TEXT NOT NULL, via TEXT NOT NULL, "
                                           "stored INTEGER NOT NULL, name TEXT, first_name TEXT, address1 TEXT, "
                                           "address2 TEXT, country TEXT, latitude REAL, longitude REAL, locator TEXT, "
                                           "position_from_locator INTEGER, class TEXT, previous_call TEXT, born TEXT, "
                                           "web_page TEXT, picture TEXT, PRIMARY KEY (callsign, source))"))
        && exec(q, QStringLiteral("CREATE INDEX IF NOT EXISTS results_stored ON results (stored)"))
        && exec(q, QStringLiteral("PRAGMA user_version=%1").arg(kSchemaVersion));
    if (!ok) {
        m_error = q.lastError().text();
        db.rollback();
        return false;
    }
    return db.commit();
}

void LookupCache::setAside(const QString &why)
{
    close();
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddHHmmss"));
    const QString target = m_path + QStringLiteral(".damaged-") + stamp;
    // The log and the shared-memory index belong to the file and go with it.
    const bool moved = QFile::rename(m_path, target);
    for (const char *suffix : {"-wal", "-shm"}) {
        const QString side = m_path + QLatin1String(suffix);
        if (QFile::exists(side) && !(moved && QFile::rename(side, target + QLatin1String(suffix))))
            QFile::remove(side);
    }
    if (moved) {
        m_setAside = target;
        qCWarning(lcLookup) << "the lookup cache" << m_path << "could not be used (" << why << "); set aside as" << target;
    } else {
        QFile::remove(m_path);
    }
}

bool LookupCache::store(const QString &callsign, Source source, Via via, const LookupResult &r, const QDateTime &when)
{
    if (!m_open || callsign.isEmpty())
        return false;
    QSqlDatabase db = QSqlDatabase::database(m_connection, false);
    QSqlQuery q(db);
    q.prepare(QStringLiteral("INSERT OR REPLACE INTO results (callsign, source, via, stored, %1) VALUES "
                             "(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
                  .arg(QLatin1String(kFields)));
    const QVariantList values{callsign,   sourceName(source), viaName(via),        when.toMSecsSinceEpoch(),
                              r.name,     r.firstName,        r.address1,          r.address2,
                              r.country,  r.latitude,         r.longitude,         r.locator,
                              int(r.positionFromLocator),     r.licenceClass,      r.previousCall,
                              r.dateOfBirth, r.webPage,       r.pictureUrl};
    for (const QVariant &v : values)
        q.addBindValue(v);
    if (!q.exec()) {
        m_error = q.lastError().text();
        qCWarning(lcLookup) << "lookup cache: storing" << callsign << "failed:" << m_error;
        return false;
    }
    // The cap is kept at every write, so the file never outgrows it.
    QSqlQuery trim(db);
    trim.prepare(QStringLiteral("DELETE FROM results WHERE rowid IN "
                                "(SELECT rowid FROM results ORDER BY stored DESC LIMIT -1 OFFSET ?)"));
    trim.addBindValue(std::max(m_maxEntries, 1));
    trim.exec();
    return true;
}

std::optional<CachedResult> LookupCache::find(const QString &callsign, const QDateTime &now) const
{
    if (!m_open || m_freshDays <= 0)
        return std::nullopt;
    QSqlQuery q(QSqlDatabase::database(m_connection, false));
    q.prepare(QStringLiteral("SELECT source, via, stored, %1 FROM results WHERE callsign = ? AND stored >= ? "
                             "ORDER BY stored DESC LIMIT 1")
                  .arg(QLatin1String(kFields)));
    q.addBindValue(callsign);
    q.addBindValue(now.addDays(-m_freshDays).toMSecsSinceEpoch());
    if (!q.exec() || !q.next())
        return std::nullopt;
    const std::optional<Source> source = sourceFromName(q.value(0).toString());
    if (!source)
        return std::nullopt;
    CachedResult c;
    c.callsign = callsign;
    c.source = *source;
    c.via = viaFromName(q.value(1).toString()).value_or(Via::Page);
    c.storedAt = QDateTime::fromMSecsSinceEpoch(q.value(2).toLongLong(), Qt::UTC);
    LookupResult &r = c.result;
    int i = 3;
    r.name = q.value(i++).toString();
    r.firstName = q.value(i++).toString();
    r.address1 = q.value(i++).toString();
    r.address2 = q.value(i++).toString();
    r.country = q.value(i++).toString();
    r.latitude = q.value(i++).toDouble();
    r.longitude = q.value(i++).toDouble();
    r.locator = q.value(i++).toString();
    r.positionFromLocator = q.value(i++).toInt() != 0;
    r.licenceClass = q.value(i++).toString();
    r.previousCall = q.value(i++).toString();
    r.dateOfBirth = q.value(i++).toString();
    r.webPage = q.value(i++).toString();
    r.pictureUrl = q.value(i++).toString();
    return c;
}

int LookupCache::count() const
{
    if (!m_open)
        return 0;
    QSqlQuery q(QSqlDatabase::database(m_connection, false));
    return q.exec(QStringLiteral("SELECT COUNT(*) FROM results")) && q.next() ? q.value(0).toInt() : 0;
}

bool LookupCache::clear()
{
    if (!m_open)
        return false;
    QSqlQuery q(QSqlDatabase::database(m_connection, false));
    return exec(q, QStringLiteral("DELETE FROM results"));
}

int LookupCache::prune(const QDateTime &now)
{
    if (!m_open)
        return 0;
    QSqlDatabase db = QSqlDatabase::database(m_connection, false);
    QSqlQuery stale(db);
    stale.prepare(QStringLiteral("DELETE FROM results WHERE stored < ?"));
    stale.addBindValue(now.addDays(-m_freshDays).toMSecsSinceEpoch());
    int gone = stale.exec() ? stale.numRowsAffected() : 0;
    QSqlQuery over(db);
    over.prepare(QStringLiteral("DELETE FROM results WHERE rowid IN "
                                "(SELECT rowid FROM results ORDER BY stored DESC LIMIT -1 OFFSET ?)"));
    over.addBindValue(std::max(m_maxEntries, 1));
    gone += over.exec() ? over.numRowsAffected() : 0;
    return gone;
}

} // namespace marvik::lookup
