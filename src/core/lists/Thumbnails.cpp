// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lists/Thumbnails.h"

#include <QCache>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QImageReader>

#include <cstdint>

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
    // Every list reader asks here first (see NameHash).
    static std::unordered_map<QString, std::weak_ptr<ThumbnailIndex>, NameHash> indexes;
    const QString folder = QDir::cleanPath(thumbsDir);
    QMutexLocker lock(&mutex);
    std::weak_ptr<ThumbnailIndex> &known = indexes[folder];
    if (std::shared_ptr<ThumbnailIndex> existing = known.lock())
        return existing;
    auto index = std::make_shared<ThumbnailIndex>(folder);
    known = index;
    return index;
}

ThumbnailIndex::ThumbnailIndex(const QString &thumbsDir)
    : m_folder(QDir::cleanPath(thumbsDir))
{
    if (thumbsDir.isEmpty())
        return;
    // Walked, not QDir::entryList(): that matches a wildcard and sorts, which
    // costs three times the walk on a folder of ten thousand thumbnails,
    // and the first list read waits for it.
    QDirIterator files(m_folder, QDir::Files | QDir::Hidden);
    while (files.hasNext()) {
        files.next();
        const QString file = files.fileName();
        if (!file.endsWith(QLatin1String(".jpg"), Qt::CaseInsensitive))
            continue;
        if (m_ids.emplace(file.chopped(4), int(m_names.size())).second)
            m_names.append(file.chopped(4));
    }
}

std::size_t ThumbnailIndex::NameHash::operator()(QStringView name) const noexcept
{
    // FNV-1a over the UTF-16 units: names are short and few.
    std::uint64_t h = 14695981039346656037ULL;
    for (const QChar c : name) {
        h ^= c.unicode();
        h *= 1099511628211ULL;
    }
    return std::size_t(h);
}

int ThumbnailIndex::find(const QString &name) const
{
    QMutexLocker lock(&m_mutex);
    const auto it = m_ids.find(name);
    return it == m_ids.end() ? -1 : it->second;
}

QList<int> ThumbnailIndex::find(const std::vector<QStringView> &names) const
{
    QList<int> ids;
    ids.reserve(qsizetype(names.size()));
    QMutexLocker lock(&m_mutex);
    for (const QStringView name : names) {
        const auto it = m_ids.find(name);
        ids.append(it == m_ids.end() ? -1 : it->second);
    }
    return ids;
}

QList<int> ThumbnailIndex::find(const QStringList &names) const
{
    return find(std::vector<QStringView>(names.begin(), names.end()));
}

int ThumbnailIndex::add(const QString &name)
{
    QMutexLocker lock(&m_mutex);
    const auto [it, added] = m_ids.emplace(name, int(m_names.size()));
    if (added)
        m_names.append(name);
    return it->second;
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
