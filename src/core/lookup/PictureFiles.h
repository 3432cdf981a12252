// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

namespace marvik::app {
class DataFolder;
}

namespace marvik::lookup {

/// Thumbnails are this many pixels high; their width keeps the aspect ratio.
inline constexpr int kThumbnailHeight = 16;
/// A cap on the thumbnail's width, so a picture a few pixels high but
/// thousands wide cannot ask for a giant bitmap.
inline constexpr int kThumbnailMaxWidth = 4096;

/// The address of an operator's picture: host + last character of the call
/// as typed (lower case, a slashed zero stays "ø") + "/" + the call in lower
/// case with slashed zeros as "0" + "/" + that call + ".jpg". W1AW gives
/// host + "w/w1aw/w1aw.jpg".
QString pictureAddress(const QString &picturesHost, const QString &callSign);

/// The thumbnail's size for a picture of `picture` pixels: 16 high and
/// 16 × W / H wide, the ratio taken in single precision as the Windows
/// program did. An empty size for an empty picture.
QSize thumbnailSize(QSize picture);

/// The thumbnail of a picture given as file bytes (read by content, whatever
/// the extension), drawn smoothly over white. A null image when the bytes
/// are no picture we can read; `pictureSize` gets the picture's own size.
QImage makeThumbnail(const QByteArray &bytes, QSize *pictureSize = nullptr, QString *error = nullptr);

/// What became of storing a downloaded picture.
enum class PictureStatus {
    Saved,       ///< picture and thumbnail written
    NotAPicture, ///< bytes written as they came, but they make no picture: no thumbnail
    WriteFailed, ///< the picture file could not be written
};

struct StoredPicture
{
    PictureStatus status = PictureStatus::WriteFailed;
    QString picturePath;   ///< Images/<call>.jpg
    QString thumbnailPath; ///< Images/Thumbs/<call>.jpg; empty without a thumbnail
    QSize pictureSize;
    QSize thumbnailSize;
    QString error;
};

/// Writes the downloaded bytes unchanged to Images/<call>.jpg and the
/// thumbnail, as BMP whatever the extension says, to Images/Thumbs/<call>.jpg.
/// The callsign is made safe as a file name first; both files are replaced
/// atomically.
StoredPicture storePicture(const app::DataFolder &folder, const QString &callSign, const QByteArray &bytes);


} // namespace marvik::lookup
