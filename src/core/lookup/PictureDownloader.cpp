// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/PictureDownloader.h"

#include "core/lookup/NamedDownloads.h"
#include "core/app/Log.h"

#include <QUrl>

namespace marvik::lookup {

PictureDownloader::PictureDownloader(QNetworkAccessManager *network, QObject *parent)
    : QObject(parent)
    , m_downloads(new NamedDownloads(network, this))
    , m_deadline(kDefaultPictureDeadlineMs)
{
    connect(m_downloads, &NamedDownloads::finished, this,
            [this](const QString &name, const QByteArray &bytes, const QByteArray &) {
                m_bytes = bytes;
                emit DownloadComplete(name);
            });
    connect(m_downloads, &NamedDownloads::progress, this,
            [this](const QString &name, qint64 done, qint64 total) { emit Progress(done, total, name); });
    connect(m_downloads, &NamedDownloads::failed, this, &PictureDownloader::downloadFailed);
}

PictureDownloader::~PictureDownloader() = default;

void PictureDownloader::DownloadFile(const QString &url, int cacheMode, const QString &name)
{
    const QUrl address(url, QUrl::TolerantMode);
    if (!address.isValid() || (address.scheme() != u"http" && address.scheme() != u"https")) {
        qCWarning(lcLookup) << "not a web address, no picture requested:" << url;
        emit downloadFailed(name, QStringLiteral("not a web address: %1").arg(url));
        return;
    }
    constexpr int kOffline = 8;
    const auto cache = cacheMode == kOffline ? QNetworkRequest::AlwaysCache : QNetworkRequest::AlwaysNetwork;
    m_downloads->start(name, address, kPictureSizeLimit, cache, m_deadline);
}

QStringList PictureDownloader::pendingDownloads() const
{
    return m_downloads->pendingNames();
}

void PictureDownloader::setTransferTimeout(int milliseconds)
{
    m_downloads->setTransferTimeout(milliseconds);
}

} // namespace marvik::lookup
