// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QObject>
#include <QStringList>

class QNetworkAccessManager;

namespace marvik::lookup {

class NamedDownloads;

/// The picture download control: named downloads that hand their host raw
/// bytes and report progress. A download under a pending name cancels the
/// earlier one, so only the second of two same-named downloads completes.
class PictureDownloader : public QObject
{
    Q_OBJECT

public:
    /// The cache mode that forces a fresh download (the Windows "force
    /// update" option, 16), which the main window always passes.
    static constexpr int kForceUpdate = 16;

    explicit PictureDownloader(QNetworkAccessManager *network, QObject *parent = nullptr);
    ~PictureDownloader() override;

    /// Starts downloading `url` under `name`. `cacheMode` takes the Windows
    /// read options: 16 (force update) and anything unknown go to the
    /// network, 8 (offline) reads the cache only.
    void DownloadFile(const QString &url, int cacheMode, const QString &name);

    /// The bytes of the last completed download; read them on DownloadComplete.
    const QByteArray &bytes() const { return m_bytes; }
    QStringList pendingDownloads() const;
    void setTransferTimeout(int milliseconds);
    /// How long one picture may take in all, however steadily it arrives.
    void setDeadline(int milliseconds) { m_deadline = milliseconds; }

signals:
    // The events, in the Windows control's order.
    void DownloadComplete(const QString &name);
    void Progress(qint64 bytesDone, qint64 bytesMax, const QString &name);
    void NoImage(); ///< declared, never raised

    /// Not one of the events: a download ended without a picture's bytes
    /// (refused address, network or HTTP error, too large, refused or too
    /// many redirects, time-out, deadline).
    void downloadFailed(const QString &name, const QString &reason);

private:
    NamedDownloads *m_downloads;
    QByteArray m_bytes;
    int m_deadline;
};

} // namespace marvik::lookup
