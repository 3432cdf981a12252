// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/NamedDownloads.h"

#include "core/app/Log.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

namespace marvik::lookup {

namespace {

// Why we aborted a reply ourselves, kept on the reply.
const char kAbortReason[] = "marvikAbortReason";

QString httpError(QNetworkReply *reply)
{
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && status.toInt() >= 400) {
        return QStringLiteral("HTTP %1 %2")
            .arg(status.toInt())
            .arg(reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString());
    }
    return reply->errorString();
}

QString seconds(int milliseconds)
{
    return QString::number(milliseconds / 1000.0);
}

/// The address a redirect answer sends us to, or an empty one.
QUrl redirectTarget(QNetworkReply *reply)
{
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status != 301 && status != 302 && status != 303 && status != 307 && status != 308)
        return {};
    const QUrl location = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    return location.isEmpty() ? QUrl() : reply->url().resolved(location);
}

/// Why a redirect may not be followed, or nothing: only to web addresses,
/// and never from an encrypted one to a plain one, where anyone on the way
/// could read and change the answer.
QString redirectRefusal(const QUrl &from, const QUrl &to)
{
    const QString scheme = to.scheme().toLower();
    if (scheme != u"http" && scheme != u"https")
        return QStringLiteral("redirect to %1 refused").arg(to.toDisplayString());
    if (from.scheme().toLower() == u"https" && scheme == u"http")
        return QStringLiteral("redirect from https to http refused (%1)").arg(to.toDisplayString());
    return {};
}

} // namespace

NamedDownloads::NamedDownloads(QNetworkAccessManager *network, QObject *parent)
    : QObject(parent)
    , m_network(network)
{
}

NamedDownloads::~NamedDownloads()
{
    for (Download &download : m_downloads)
        drop(download);
}

void NamedDownloads::drop(Download &download)
{
    if (download.reply) {
        download.reply->disconnect(this);
        download.reply->abort();
        download.reply->deleteLater();
        download.reply = nullptr;
    }
    if (download.deadline) {
        // Possibly the very timer whose time-out got us here.
        download.deadline->stop();
        download.deadline->deleteLater();
        download.deadline = nullptr;
    }
}

void NamedDownloads::start(const QString &name, const QUrl &url, qint64 sizeLimit,
                           QNetworkRequest::CacheLoadControl cache, int deadlineMs)
{
    const auto old = m_downloads.find(name);
    if (old != m_downloads.end()) {
        drop(*old);
        m_downloads.erase(old);
    } else {
        m_pending.append(name);
    }

    Download download;
    download.sizeLimit = sizeLimit;
    download.cache = cache;
    // The transfer time-out only notices an answer that stands still; one
    // that trickles a byte at a time is ended by this.
    download.deadline = new QTimer(this);
    download.deadline->setSingleShot(true);
    connect(download.deadline, &QTimer::timeout, this, [this, name, deadlineMs] {
        const auto it = m_downloads.constFind(name);
        if (it != m_downloads.constEnd() && it->reply)
            fail(it->reply, QStringLiteral("no complete answer within %1 s").arg(seconds(deadlineMs)));
    });
    download.deadline->start(deadlineMs);
    m_downloads.insert(name, download);
    send(name, url);
}

void NamedDownloads::send(const QString &name, const QUrl &url)
{
    Download &download = m_downloads[name];
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, download.cache);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    // Redirects are followed here rather than by Qt: its user-verified
    // policy loses the answer after the second hop (Qt 6.4), and we want
    // our own rule and limit.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(m_transferTimeout);
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Marvik/3.12"));

    QNetworkReply *reply = m_network->get(request);
    download.reply = reply;
    qCDebug(lcLookup) << "download" << name << url;

    const qint64 sizeLimit = download.sizeLimit;
    connect(reply, &QNetworkReply::metaDataChanged, this, [this, reply, sizeLimit] {
        const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
        if (length.isValid() && length.toLongLong() > sizeLimit)
            fail(reply, QStringLiteral("answer too large (%1 bytes)").arg(length.toLongLong()));
    });
    connect(reply, &QNetworkReply::downloadProgress, this, [this, reply, name, sizeLimit](qint64 done, qint64 total) {
        if (done > sizeLimit) {
            fail(reply, QStringLiteral("answer larger than %1 bytes").arg(sizeLimit));
            return;
        }
        emit progress(name, done, total);
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply, name] { onFinished(reply, name); });
}

void NamedDownloads::cancel(const QString &name)
{
    const auto it = m_downloads.find(name);
    if (it != m_downloads.end()) {
        drop(*it);
        m_downloads.erase(it);
    }
    m_pending.removeOne(name);
}

void NamedDownloads::fail(QNetworkReply *reply, const QString &reason)
{
    if (reply->property(kAbortReason).isNull())
        reply->setProperty(kAbortReason, reason);
    reply->abort(); // finishes the reply, which reports the reason
}

void NamedDownloads::forget(const QString &name)
{
    const auto it = m_downloads.find(name);
    if (it != m_downloads.end()) {
        it->reply = nullptr; // finished: deleted later by onFinished
        drop(*it);
        m_downloads.erase(it);
    }
    m_pending.removeOne(name);
}

void NamedDownloads::onFinished(QNetworkReply *reply, const QString &name)
{
    reply->deleteLater();
    const auto it = m_downloads.find(name);
    if (it == m_downloads.end() || it->reply != reply)
        return;
    QString reason = reply->property(kAbortReason).toString();
    if (reason.isEmpty() && reply->error() != QNetworkReply::NoError) {
        reason = reply->error() == QNetworkReply::OperationCanceledError
            ? QStringLiteral("no answer within %1 s").arg(seconds(m_transferTimeout))
            : httpError(reply);
    }
    const QUrl target = reason.isEmpty() ? redirectTarget(reply) : QUrl();
    if (!target.isEmpty()) {
        reason = redirectRefusal(reply->url(), target);
        if (reason.isEmpty() && it->redirects >= kMaxRedirects)
            reason = QStringLiteral("too many redirects (more than %1)").arg(kMaxRedirects);
        if (reason.isEmpty()) {
            ++it->redirects;
            qCDebug(lcLookup) << "download" << name << "redirected to" << target;
            send(name, target);
            return;
        }
    }
    // The name leaves the list before anyone hears of it, so a handler may
    // start the same name again without losing the new download.
    forget(name);
    if (!reason.isEmpty()) {
        qCDebug(lcLookup) << "download" << name << "failed:" << reason;
        emit failed(name, reason);
        return;
    }
    const QByteArray bytes = reply->readAll();
    const QByteArray contentType = reply->header(QNetworkRequest::ContentTypeHeader).toByteArray();
    emit finished(name, bytes, contentType);
}

} // namespace marvik::lookup
