// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/logs/PageRefreshLookup.h"

#include "core/app/Callsign.h"
#include "core/logs/ListRefresh.h"
#include "core/lookup/LookUp.h"
#include "core/lookup/LookupResult.h"

#include <utility>

namespace marvik::logs {

PageRefreshLookup::PageRefreshLookup(QNetworkAccessManager *network, const lookup::SourceSettings &settings,
                                     const QString &ownCallsign, lookup::Source source, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_source(source)
    , m_lookUp(new lookup::LookUp(network, settings, ownCallsign, this))
{
    m_lookUp->setDataBase(lookup::dataBaseOf(source));
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &PageRefreshLookup::timedOut);
    connect(m_lookUp, &lookup::LookUp::GotPage, this, &PageRefreshLookup::gotPage);
    connect(m_lookUp, &lookup::LookUp::PageNotFound, this, &PageRefreshLookup::pageNotFound);
    connect(m_lookUp, &lookup::LookUp::requestFailed, this, &PageRefreshLookup::requestFailed);
}

PageRefreshLookup::~PageRefreshLookup() = default;

QString PageRefreshLookup::sourceName() const
{
    return lookup::menuLabel(m_settings, m_source);
}

void PageRefreshLookup::connectTo(ListRefresh *refresh)
{
    connect(this, &PageRefreshLookup::found, refresh, &ListRefresh::found);
    connect(this, &PageRefreshLookup::notFound, refresh, &ListRefresh::notFound);
    connect(this, &PageRefreshLookup::failed, refresh, &ListRefresh::failed);
    connect(this, &PageRefreshLookup::quotaUsedUp, refresh, &ListRefresh::quotaUsedUp);
}

void PageRefreshLookup::start(const QString &call)
{
    m_call = call;
    m_request = callsign::forLookup(call);
    if (m_request.isEmpty()) {
        emit failed(takeCall(), QStringLiteral("not a callsign"));
        return;
    }
    m_timer.start(m_timeoutMs);
    m_lookUp->GetPage(m_request + u'2');
    if (m_lookUp->pendingRequests().isEmpty())
        emit failed(takeCall(), QStringLiteral("the source's address is not a web address"));
}

QString PageRefreshLookup::takeCall()
{
    m_timer.stop();
    m_request.clear();
    return std::exchange(m_call, QString());
}

void PageRefreshLookup::gotPage(const QString &subject)
{
    if (m_request.isEmpty() || subject != m_request)
        return;
    const lookup::LookupResult result = lookup::readLookupResult(*m_lookUp, subject);
    emit found(takeCall(), result, sourceName());
}

void PageRefreshLookup::pageNotFound(const QString &subject)
{
    if (!m_request.isEmpty() && subject == m_request)
        emit notFound(takeCall());
}

void PageRefreshLookup::requestFailed(const QString &name, const QString &reason)
{
    if (m_request.isEmpty() || name != m_request + u'2')
        return;
    // Callbooks answer a robot that asks too often with 429 Too Many Requests.
    if (reason.startsWith(QLatin1StringView("HTTP 429")))
        emit quotaUsedUp(takeCall(), reason);
    else
        emit failed(takeCall(), reason);
}

void PageRefreshLookup::timedOut()
{
    if (!m_request.isEmpty())
        emit failed(takeCall(), QStringLiteral("no answer within %1 s").arg(m_timeoutMs / 1000.0));
}

} // namespace marvik::logs
