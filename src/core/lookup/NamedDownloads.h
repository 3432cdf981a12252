// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QNetworkRequest>
#include <QObject>
#include <QStringList>

class QNetworkAccessManager;
class QNetworkReply;
class QTimer;

namespace marvik::lookup {

/// Page size cap: a callbook page is far smaller; anything bigger is not one.
inline constexpr qint64 kPageSizeLimit = 4 * 1024 * 1024;
/// Picture size cap.
inline constexpr qint64 kPictureSizeLimit = 16 * 1024 * 1024;
/// How long a transfer may stand still before it is given up.
inline constexpr int kDefaultTransferTimeoutMs = 30000;
/// How long a page may take in all, however steadily it trickles in.
inline constexpr int kDefaultPageDeadlineMs = 60000;
/// How long a picture may take in all: the size cap at a slow line's pace.
inline constexpr int kDefaultPictureDeadlineMs = 180000;
/// Redirects followed for one download; more is a loop or a trap.
inline constexpr int kMaxRedirects = 10;

/// Downloads by name over one network access manager, the way the Windows
/// controls' named asynchronous reads worked: a new download under a pending
/// name cancels the earlier one, so only the newest answer for a name ever
/// arrives. Downloads never come from a cache, follow up to kMaxRedirects
/// redirects to http and https (never from https down to http), are cut off
/// at a size cap, and end at a deadline of their own however slowly the
/// answer keeps coming.
class NamedDownloads : public QObject
{
    Q_OBJECT

public:
    explicit NamedDownloads(QNetworkAccessManager *network, QObject *parent = nullptr);
    ~NamedDownloads() override;

    /// Starts (or restarts) the download `name`; it fails if it is not
    /// complete within `deadlineMs`, redirects included.
    void start(const QString &name, const QUrl &url, qint64 sizeLimit,
               QNetworkRequest::CacheLoadControl cache = QNetworkRequest::AlwaysNetwork,
               int deadlineMs = kDefaultPageDeadlineMs);
    /// Cancels a pending download; nothing is reported for it.
    void cancel(const QString &name);

    bool isPending(const QString &name) const { return m_downloads.contains(name); }
    /// The names in flight, oldest first.
    QStringList pendingNames() const { return m_pending; }

    void setTransferTimeout(int milliseconds) { m_transferTimeout = milliseconds; }
    int transferTimeout() const { return m_transferTimeout; }

signals:
    /// A download ended well; the name has left the pending list.
    void finished(const QString &name, const QByteArray &bytes, const QByteArray &contentType);
    /// A download failed (network error, HTTP error, size cap, refused
    /// redirect, too many redirects, time-out, deadline); the name has left
    /// the pending list.
    void failed(const QString &name, const QString &reason);
    void progress(const QString &name, qint64 bytesDone, qint64 bytesTotal);

private:
    struct Download
    {
        QNetworkReply *reply = nullptr;
        QTimer *deadline = nullptr;
        qint64 sizeLimit = 0;
        QNetworkRequest::CacheLoadControl cache = QNetworkRequest::AlwaysNetwork;
        int redirects = 0;
    };

    void send(const QString &name, const QUrl &url);
    void onFinished(QNetworkReply *reply, const QString &name);
    void fail(QNetworkReply *reply, const QString &reason);
    void drop(Download &download);
    void forget(const QString &name);

    QNetworkAccessManager *m_network;
    QHash<QString, Download> m_downloads;
    QStringList m_pending;
    int m_transferTimeout = kDefaultTransferTimeoutMs;
};

} // namespace marvik::lookup
