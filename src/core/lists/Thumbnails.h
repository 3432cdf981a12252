// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QImage>
#include <QMutex>
#include <QReadWriteLock>
#include <QString>
#include <QStringList>

#include <memory>
#include <unordered_map>
#include <vector>

namespace marvik::lists {

/// The thumbnails of one `Images/Thumbs` folder: listed once per run and
/// kept up to date as Marvik writes thumbnails, so loading a list never
/// lists the folder again. Rows keep a number into it instead of a path.
/// Safe to use from the list readers' worker threads.
class ThumbnailIndex
{
public:
    /// The index of a folder, shared by every list of the run (listed on
    /// first use).
    static std::shared_ptr<ThumbnailIndex> forFolder(const QString &thumbsDir);

    explicit ThumbnailIndex(const QString &thumbsDir);

    QString folder() const { return m_folder; }
    /// The number of a thumbnail named `name` (the file name less ".jpg"),
    /// -1 when the folder has none.
    int find(const QString &name) const;
    /// The numbers of many names at once, a few hundred to a lock: list
    /// readers on several threads would otherwise take it at every row.
    QList<int> find(const QStringList &names) const;
    QList<int> find(const std::vector<QStringView> &names) const;
    /// Records a thumbnail Marvik has just written; returns its number.
    int add(const QString &name);
    /// The file of thumbnail `id`; empty for -1.
    QString path(int id) const;
    /// The number of the file at `path` (any folder: its name decides).
    int fromPath(const QString &path);

private:
    /// Thumbnail names hashed by a function of our own, not Qt's seeded
    /// string hash: with Qt 6.4 on processors with the wide AES instructions
    /// that hash leaves the vector registers in a state that makes every
    /// later floating-point step of the thread several times slower, and a
    /// list reader looks a name up right before it computes each row's
    /// azimuth.
    struct NameHash
    {
        std::size_t operator()(QStringView name) const noexcept;
    };
    /// A name's place in the table: its hash, and its number (-1: empty).
    struct Slot
    {
        quint32 hash = 0;
        qint32 id = -1;
    };
    QStringView nameLocked(int id) const;
    int findLocked(QStringView name, quint32 hash) const;
    int addLocked(const QString &name);
    void place(Slot slot);

    QString m_folder;
    /// Shared by lookups: the window draws thumbnails while list readers
    /// look up thousands of names, and a reader the system has put aside
    /// in the middle of its lookups must not hold up the window's paint.
    mutable QReadWriteLock m_lock;
    /// The names back to back, and where each starts, with the end of the
    /// last one after them: comparing a name found by its hash then reads
    /// one stretch of this array rather than a string of its own somewhere
    /// on the heap.
    std::vector<char16_t> m_chars;
    std::vector<quint32> m_starts{0};
    /// The names by their hashes, looked up in place: a list of thousands
    /// finds its thumbnails without a node per name to chase. A power of
    /// two in size, never more than half full.
    std::vector<Slot> m_slots;
};

/// The decoded thumbnails of every list, one cache for the whole program,
/// bounded by their bytes and dropping the least recently drawn first.
namespace thumbnailCache {

/// The picture of a file drawn `height` device pixels high (0: as stored).
/// A null image when the file is no picture.
QImage image(const QString &path, int height = 0);
/// Forgets a file whose bytes have changed.
void forget(const QString &path);
/// The cache's bound in bytes, and what it holds now.
qint64 limit();
qint64 bytes();

} // namespace thumbnailCache

} // namespace marvik::lists
