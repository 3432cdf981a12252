// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/Sources.h"
#include "core/lookup/SourceSettings.h"

#include <QObject>
#include <QTimer>

class QNetworkAccessManager;

namespace marvik::lookup {
class LookUp;
struct LookupResult;
}

namespace marvik::logs {

class ListRefresh;

/// A refresh's lookups on the callbook pages, through a lookup control of
/// its own (sharing the network and its cookies with the window's): start()
/// is the refresh's StartLookup, and the signals carry the outcome to the
/// refresh's slots (connectTo() wires them). A page that answers "HTTP 429"
/// (too many requests) means the quota is used up.
class PageRefreshLookup : public QObject
{
    Q_OBJECT

public:
    static constexpr int kDefaultTimeoutMs = 12000; ///< the main window's lookup time-out

    PageRefreshLookup(QNetworkAccessManager *network, const lookup::SourceSettings &settings,
                      const QString &ownCallsign, lookup::Source source, QObject *parent = nullptr);
    ~PageRefreshLookup() override;

    void setTimeoutMs(int ms) { m_timeoutMs = ms; }
    /// The source's name as the Database menu shows it ("QRZ.com").
    QString sourceName() const;
    lookup::LookUp *lookUp() const { return m_lookUp; }

    /// Starts the lookup of a list's call; the outcome names the call as given here.
    void start(const QString &call);
    /// Routes the outcomes to a refresh's slots.
    void connectTo(ListRefresh *refresh);

signals:
    void found(const QString &call, const marvik::lookup::LookupResult &result, const QString &source);
    void notFound(const QString &call);
    void failed(const QString &call, const QString &reason);
    void quotaUsedUp(const QString &call, const QString &message);

private:
    void gotPage(const QString &subject);
    void pageNotFound(const QString &subject);
    void requestFailed(const QString &name, const QString &reason);
    void timedOut();
    QString takeCall();

    lookup::SourceSettings m_settings;
    lookup::Source m_source;
    lookup::LookUp *m_lookUp;
    QTimer m_timer;
    int m_timeoutMs = kDefaultTimeoutMs;
    QString m_call;    ///< as the list has it
    QString m_request; ///< as asked for
};

} // namespace marvik::logs
