// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/TextFile.h"

#include "core/app/TextCodec.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStorageInfo>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace marvik::app {

namespace {

/// The end-to-end tests' stand-in for a full disk and an unreadable file,
/// which cannot be made for real when tests run as root: every file whose
/// name holds the text of MARVIK_TEST_FULL_DISK cannot be written, and of
/// MARVIK_TEST_UNREADABLE cannot be read. Unset, as always outside the
/// tests, nothing happens.
bool injectedFault(const char *variable, const QString &path)
{
    static const QByteArray full = qgetenv("MARVIK_TEST_FULL_DISK");
    static const QByteArray unreadable = qgetenv("MARVIK_TEST_UNREADABLE");
    const QByteArray &pattern = qstrcmp(variable, "MARVIK_TEST_FULL_DISK") == 0 ? full : unreadable;
    return !pattern.isEmpty() && QFileInfo(path).fileName().contains(QString::fromLocal8Bit(pattern));
}

} // namespace

bool readFileBytes(const QString &path, QByteArray &bytes, QString *errorString)
{
    QFile file(path);
    if (injectedFault("MARVIK_TEST_UNREADABLE", path)) {
        if (errorString)
            *errorString = QStringLiteral("Permission denied");
        return false;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        if (errorString)
            *errorString = file.errorString();
        return false;
    }
    bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        if (errorString)
            *errorString = file.errorString();
        return false;
    }
    return true;
}

TextFileContent readTextFile(const QString &path)
{
    TextFileContent content;
    QByteArray bytes;
    if (!readFileBytes(path, bytes, &content.errorString))
        return content;
    content.text = decodeTextFile(bytes);
    content.ok = true;
    return content;
}

QStringList splitLines(QStringView text)
{
    QStringList lines;
    qsizetype start = 0;
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = text[i];
        if (c != u'\r' && c != u'\n')
            continue;
        lines.append(text.sliced(start, i - start).toString());
        if (c == u'\r' && i + 1 < n && text[i + 1] == u'\n')
            ++i;
        start = i + 1;
    }
    if (start < n)
        lines.append(text.sliced(start).toString());
    return lines;
}

qsizetype countLines(QByteArrayView bytes)
{
    // A lone CR (a file from an old Mac editor) ends a line too. Counting
    // the other four lists at start-up is on the window's way to its first
    // paint, so this is one plain pass the compiler turns into vector
    // compares (see Sources.cmake): a memchr for every line cost a
    // millisecond for four 10,000-row lists. The counts go in byte-sized
    // sums of at most 255 bytes, which keeps the vectors wide.
    const qsizetype n = bytes.size();
    if (n == 0)
        return 0;
    const auto *data = reinterpret_cast<const unsigned char *>(bytes.data());
    const qsizetype beforeLast = n - 1;
    qsizetype lines = 0;
    for (qsizetype i = 0; i < beforeLast;) {
        const qsizetype end = std::min(beforeLast, i + 255);
        unsigned char breaks = 0;
        for (; i < end; ++i)
            breaks += (data[i] == '\n') | ((data[i] == '\r') & (data[i + 1] != '\n'));
        lines += breaks;
    }
    // The last byte ends the last line, whether it is a break or not.
    return lines + 1;
}

namespace {

/// Why a write failed, in words a user can act on: a full disk is named as
/// such (the system's own text for it is often "Unknown error").
QString writeFailure(const QString &path, const QString &systemText, qint64 needed, int error)
{
    const QStorageInfo disk(QFileInfo(path).absolutePath());
    bool full = error == ENOSPC;
#ifdef EDQUOT
    full = full || error == EDQUOT;
#endif
    if (full || (disk.isValid() && disk.bytesAvailable() < needed + 4096))
        return QStringLiteral("the disk is full");
    return systemText;
}

#ifdef Q_OS_UNIX
QString systemError(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

/// Writes the bytes to a new file beside `path`, syncs it, renames it over
/// `path` and syncs the folder, so that after a power cut the file is either
/// the old one or the new one, whole.
bool writeDurably(const QString &path, const QByteArray &bytes, QString *errorString)
{
    const QByteArray target = QFile::encodeName(path);
    const QByteArray folder = QFile::encodeName(QFileInfo(path).absolutePath());
    static std::atomic<int> counter{0};
    const QByteArray temp = target + ".tmp-" + QByteArray::number(qint64(::getpid())) + '-'
                            + QByteArray::number(counter++);
    const auto fail = [&](int error, const QByteArray &remove) {
        if (errorString)
            *errorString = writeFailure(path, systemError(error), bytes.size(), error);
        if (!remove.isEmpty())
            ::unlink(remove.constData());
        return false;
    };
    // A new file gets the usual permissions (the umask applies); a replaced
    // one keeps the permissions it had (the cookie jar's are owner-only).
    if (injectedFault("MARVIK_TEST_FULL_DISK", path))
        return fail(ENOSPC, {});
    const int fd = ::open(temp.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0)
        return fail(errno, {});
    struct stat old {};
    if (::stat(target.constData(), &old) == 0)
        ::fchmod(fd, old.st_mode & 07777);
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            const int error = n < 0 ? errno : ENOSPC;
            ::close(fd);
            return fail(error, temp);
        }
        done += n;
    }
    if (::fsync(fd) != 0) {
        const int error = errno;
        ::close(fd);
        return fail(error, temp);
    }
    if (::close(fd) != 0)
        return fail(errno, temp);
    if (::rename(temp.constData(), target.constData()) != 0)
        return fail(errno, temp);
    // The rename itself lives in the folder.
    const int dir = ::open(folder.constData(), O_RDONLY | O_DIRECTORY);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return true;
}
#endif

} // namespace

bool writeFileAtomically(const QString &path, const QByteArray &bytes, QString *errorString)
{
#ifdef Q_OS_UNIX
    return writeDurably(path, bytes, errorString);
#else
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        if (errorString)
            *errorString = writeFailure(path, file.errorString(), bytes.size(), 0);
        file.cancelWriting();
        return false;
    }
    return true;
#endif
}

bool writeTextLines(const QString &path, const QStringList &lines, QString *errorString)
{
    qsizetype size = 0;
    for (const QString &line : lines)
        size += line.size() + 2;
    QString text;
    text.reserve(size);
    for (const QString &line : lines) {
        text += line;
        text += QLatin1String("\r\n");
    }
    return writeFileAtomically(path, encodeTextFile(text), errorString);
}

} // namespace marvik::app
