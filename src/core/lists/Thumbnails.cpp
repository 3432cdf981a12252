// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lists/Thumbnails.h"

#include <QCache>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>

namespace marvik::lists {

namespace {

// About 2,700 thumbnails of 24 × 16 at 32 bits, or 700 drawn for a 200 %
// screen: far more than a screen shows at once.
constexpr qint64 kCacheBytes = 4 * 1024 * 1024;

struct Cache
{
    QMutex mutex;
    // QCache counts in its own units: kilobytes here.
    QCache<QString, QImage> images{int(kCacheBytes / 1024)};
    qint64 bytes = 0;
};

Cache &cache()
{
    static Cache c;
    return c;
}

QString key(const QString &path, int height)
{
    return path + u'@' + QString::number(height);
}

} // namespace

std::shared_ptr<ThumbnailIndex> ThumbnailIndex::forFolder(const QString &thumbsDir)
{
    static QMutex mutex;
    static QHash<QString, std::weak_ptr<ThumbnailIndex>> indexes;
    const QString folder = QDir::cleanPath(thumbsDir);
    QMutexLocker lock(&mutex);
    if (std::shared_ptr<ThumbnailIndex> existing = indexes.value(folder).lock())
        return existing;
    auto index = std::make_shared<ThumbnailIndex>(folder);
    indexes.insert(folder, index);
    return index;
}

ThumbnailIndex::ThumbnailIndex(const QString &thumbsDir)
    : m_folder(QDir::cleanPath(thumbsDir))
{
    if (thumbsDir.isEmpty())
        return;
    const QStringList files = QDir(m_folder).entryList({QStringLiteral("*.jpg")}, QDir::Files | QDir::Hidden);
    m_names.reserve(files.size());
    m_ids.reserve(files.size());
    for (const QString &file : files) {
        m_ids.insert(file.chopped(4), int(m_names.size()));
        m_names.append(file.chopped(4));
    }
}

int ThumbnailIndex::find(const QString &name) const
{
    QMutexLocker lock(&m_mutex);
    return m_ids.value(name, -1);
}

int ThumbnailIndex::add(const QString &name)
{
    QMutexLocker lock(&m_mutex);
    const auto it = m_ids.constFind(name);
    if (it != m_ids.constEnd())
        return *it;
    m_ids.insert(name, int(m_names.size()));
    m_names.append(name);
    return int(m_names.size()) - 1;
}

QString ThumbnailIndex::path(int id) const
{
    QMutexLocker lock(&m_mutex);
    if (id < 0 || id >= m_names.size())
        return {};
    return m_folder + u'/' + m_names[id] + QStringLiteral(".jpg");
}

int ThumbnailIndex::fromPath(const QString &path)
{
    if (path.isEmpty())
        return -1;
    QString name = QFileInfo(path).fileName();
    if (name.endsWith(QLatin1String(".jpg")))
        name.chop(4);
    return add(name);
}

namespace thumbnailCache {

QImage image(const QString &path, int height)
{
    Cache &c = cache();
    const QString k = key(path, height);
    {
        QMutexLocker lock(&c.mutex);
        if (const QImage *found = c.images.object(k))
            return *found;
    }
    // Thumbnails are bitmaps behind a ".jpg" name, pictures anything: trust
    // the content. A picture is decoded straight to the height asked for
    // (JPEG decodes at a fraction of the cost that way).
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    if (height > 0) {
        const QSize size = reader.size();
        if (size.isValid() && size.height() > 0)
            reader.setScaledSize(QSize(std::max(1, size.width() * height / size.height()), height));
    }
    const QImage image = reader.read();
    const int kilobytes = std::max<int>(1, int(image.sizeInBytes() / 1024));
    QMutexLocker lock(&c.mutex);
    c.images.insert(k, new QImage(image), kilobytes);
    c.bytes = qint64(c.images.totalCost()) * 1024;
    return image;
}

void forget(const QString &path)
{
    Cache &c = cache();
    QMutexLocker lock(&c.mutex);
    const QList<QString> keys = c.images.keys();
    for (const QString &k : keys) {
        if (k.startsWith(path + u'@'))
            c.images.remove(k);
    }
    c.bytes = qint64(c.images.totalCost()) * 1024;
}

qint64 limit()
{
    return kCacheBytes;
}

qint64 bytes()
{
    Cache &c = cache();
    QMutexLocker lock(&c.mutex);
    return qint64(c.images.totalCost()) * 1024;
}

} // namespace thumbnailCache

} // namespace marvik::lists
