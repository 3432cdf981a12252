// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lists/Thumbnails.h"

#include "core/lists/ListReaders.h"

#include <QCache>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include <algorithm>
#include <cstdint>
#include <utility>

#ifdef Q_OS_UNIX
#include <dirent.h>
#endif

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

/// The image format a file's first bytes name; empty for any other.
QByteArray formatOf(const QByteArray &head)
{
    if (head.startsWith("\xFF\xD8\xFF"))
        return QByteArrayLiteral("jpeg");
    if (head.startsWith("\x89PNG\r\n\x1A\n"))
        return QByteArrayLiteral("png");
    if (head.startsWith("BM"))
        return QByteArrayLiteral("bmp");
    if (head.startsWith("GIF87a") || head.startsWith("GIF89a"))
        return QByteArrayLiteral("gif");
    return {};
}

/// Calls `found` with the name (less ".jpg") of every thumbnail file in
/// `folder`, in the order the file system keeps them.
template <typename Found>
void walkThumbnails(const QString &folder, Found found)
{
#ifdef Q_OS_UNIX
    // Read straight from the directory: QDirIterator builds a file-info
    // object for every entry and took twice as long as the walk itself on a
    // folder of ten thousand thumbnails, while the first list read waits.
    DIR *dir = ::opendir(QFile::encodeName(folder).constData());
    if (!dir)
        return;
    while (const dirent *entry = ::readdir(dir)) {
        const QByteArrayView file(entry->d_name);
        if (file.size() < 4 || qstrnicmp(file.data() + file.size() - 4, ".jpg", 4) != 0)
            continue;
        // A link, or a file system that does not say, is asked as QDir would:
        // a link to a file counts as a file.
        const bool askFirst = entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN;
        if (entry->d_type == DT_REG || (askFirst && QFileInfo(folder + u'/' + QString::fromLocal8Bit(file)).isFile()))
            found(QString::fromLocal8Bit(file.chopped(4)));
    }
    ::closedir(dir);
#else
    // Walked, not QDir::entryList(): that matches a wildcard and sorts.
    QDirIterator files(folder, QDir::Files | QDir::Hidden);
    while (files.hasNext()) {
        files.next();
        const QString file = files.fileName();
        if (file.endsWith(QLatin1String(".jpg"), Qt::CaseInsensitive))
            found(file.chopped(4));
    }
#endif
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
    int seen = 0;
    walkThumbnails(m_folder, [this, &seen](QString name) {
        addLocked(name);
        if (++seen % 512 == 0)
            giveWayToTheWindow();
    });
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

QStringView ThumbnailIndex::nameLocked(int id) const
{
    const quint32 start = m_starts[std::size_t(id)];
    return {m_chars.data() + start, qsizetype(m_starts[std::size_t(id) + 1] - start)};
}

int ThumbnailIndex::findLocked(QStringView name, quint32 hash) const
{
    if (m_slots.empty())
        return -1;
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
        const Slot &slot = m_slots[i];
        if (slot.id < 0)
            return -1;
        if (slot.hash == hash && nameLocked(slot.id) == name)
            return slot.id;
    }
}

void ThumbnailIndex::place(Slot slot)
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t i = slot.hash & mask;
    while (m_slots[i].id >= 0)
        i = (i + 1) & mask;
    m_slots[i] = slot;
}

int ThumbnailIndex::addLocked(const QString &name)
{
    const auto hash = quint32(NameHash()(name));
    if (const int known = findLocked(name, hash); known >= 0)
        return known;
    const int id = int(m_starts.size() - 1);
    m_chars.insert(m_chars.end(), name.utf16(), name.utf16() + name.size());
    m_starts.push_back(quint32(m_chars.size()));
    if (std::size_t(id + 1) * 2 > m_slots.size()) {
        const std::size_t size = std::max<std::size_t>(64, m_slots.size() * 2);
        const std::vector<Slot> old = std::exchange(m_slots, std::vector<Slot>(size));
        for (const Slot &slot : old) {
            if (slot.id >= 0)
                place(slot);
        }
    }
    place({hash, id});
    return id;
}

int ThumbnailIndex::find(const QString &name) const
{
    QReadLocker lock(&m_lock);
    return findLocked(name, quint32(NameHash()(name)));
}

QList<int> ThumbnailIndex::find(const std::vector<QStringView> &names) const
{
    // A thumbnail Marvik writes meanwhile waits for one chunk, not a list.
    constexpr std::size_t kChunk = 512;
    QList<int> ids;
    ids.reserve(qsizetype(names.size()));
    for (std::size_t from = 0; from < names.size(); from += kChunk) {
        const std::size_t to = std::min(names.size(), from + kChunk);
        QReadLocker lock(&m_lock);
        for (std::size_t i = from; i < to; ++i)
            ids.append(findLocked(names[i], quint32(NameHash()(names[i]))));
    }
    return ids;
}

QList<int> ThumbnailIndex::find(const QStringList &names) const
{
    return find(std::vector<QStringView>(names.begin(), names.end()));
}

int ThumbnailIndex::add(const QString &name)
{
    QWriteLocker lock(&m_lock);
    return addLocked(name);
}

QString ThumbnailIndex::path(int id) const
{
    QReadLocker lock(&m_lock);
    if (id < 0 || std::size_t(id) + 1 >= m_starts.size())
        return {};
    return m_folder + u'/' + nameLocked(id) + QStringLiteral(".jpg");
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
    QImageReader reader;
    QFile file(path);
    const QByteArray format = file.open(QIODevice::ReadOnly) ? formatOf(file.peek(8)) : QByteArray();
    if (!format.isEmpty()) {
        // Known by its first bytes: straight to its reader, without asking
        // every image plugin in turn whether it knows the file.
        reader.setDevice(&file);
        reader.setFormat(format);
        reader.setAutoDetectImageFormat(false);
    } else {
        reader.setFileName(path);
        reader.setDecideFormatFromContent(true);
    }
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
