// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/NamedDownloads.h"

#include "core/app/Log.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

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

} // namespace

NamedDownloads::NamedDownloads(QNetworkAccessManager *network, QObject *parent)
    : QObject(parent)
    , m_network(network)
{
}

NamedDownloads::~NamedDownloads()
{
    const auto replies = m_replies;
    for (QNetworkReply *reply : replies) {
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
    }
}

void NamedDownloads::start(const QString &name, const QUrl &url, qint64 sizeLimit,
                           QNetworkRequest::CacheLoadControl cache)
{
    if (QNetworkReply *old = m_replies.take(name)) {
        old->disconnect(this);
        old->abort();
        old->deleteLater();
    } else {
        m_pending.append(name);
    }

    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, cache);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::UserVerifiedRedirectPolicy);
    request.setMaximumRedirectsAllowed(10);
    request.setTransferTimeout(m_transferTimeout);
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Marvik/3.12"));

    QNetworkReply *reply = m_network->get(request);
    m_replies.insert(name, reply);
    qCDebug(lcLookup) << "download" << name << url;

    connect(reply, &QNetworkReply::redirected, this, [this, reply](const QUrl &target) {
        const QString scheme = target.scheme().toLower();
        if (scheme == u"http" || scheme == u"https")
            emit reply->redirectAllowed();
        else
            fail(reply, QStringLiteral("redirect to %1 refused").arg(target.toDisplayString()));
    });
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
    if (QNetworkReply *reply = m_replies.take(name)) {
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
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
    m_replies.remove(name);
    m_pending.removeOne(name);
}

void NamedDownloads::onFinished(QNetworkReply *reply, const QString &name)
{
    reply->deleteLater();
    if (m_replies.value(name) != reply)
        return;
    // The name leaves the list before anyone hears of it, so a handler may
    // start the same name again without losing the new download.
    forget(name);
    const QVariant abortReason = reply->property(kAbortReason);
    if (!abortReason.isNull()) {
        qCDebug(lcLookup) << "download" << name << "failed:" << abortReason.toString();
        emit failed(name, abortReason.toString());
        return;
    }
    if (reply->error() != QNetworkReply::NoError) {
        const QString reason = reply->error() == QNetworkReply::OperationCanceledError
            ? QStringLiteral("no answer within %1 s").arg(m_transferTimeout / 1000.0)
            : httpError(reply);
        qCDebug(lcLookup) << "download" << name << "failed:" << reason;
        emit failed(name, reason);
        return;
    }
    const QByteArray bytes = reply->readAll();
    const QByteArray contentType = reply->header(QNetworkRequest::ContentTypeHeader).toByteArray();
    emit finished(name, bytes, contentType);
}

} // namespace marvik::lookup
