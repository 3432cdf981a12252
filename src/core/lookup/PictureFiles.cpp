// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/PictureFiles.h"

#include "core/app/Callsign.h"
#include "core/app/DataFolder.h"
#include "core/app/Log.h"
#include "core/app/TextFile.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace marvik::lookup {

QString pictureAddress(const QString &picturesHost, const QString &callSign)
{
    const QString first = callsign::forAddress(callSign.right(1).toLower());
    const QString call = callsign::forAddress(callsign::plainZero(callSign).toLower());
    return picturesHost + first + u'/' + call + u'/' + call + QStringLiteral(".jpg");
}

QSize thumbnailSize(QSize picture)
{
    if (picture.width() <= 0 || picture.height() <= 0)
        return {};
    const float ratio = float(picture.width()) / float(picture.height());
    const float width = float(kThumbnailHeight) * ratio;
    const int pixels = int(std::clamp(std::nearbyint(width), 1.0f, float(kThumbnailMaxWidth)));
    return {pixels, kThumbnailHeight};
}

QImage makeThumbnail(const QByteArray &bytes, QSize *pictureSize, QString *error)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(false);
    const QSize size = reader.size();
    const QSize target = thumbnailSize(size);
    if (target.isEmpty()) {
        if (error)
            *error = reader.errorString();
        return {};
    }
    if (pictureSize)
        *pictureSize = size;
    // A JPEG decoder can shrink while it decodes (by up to 8 times), which
    // makes a 12-megapixel photo's thumbnail many times faster; the result
    // is scaled smoothly to the same size either way.
    if (reader.format() == "jpeg" && reader.supportsOption(QImageIOHandler::ScaledSize))
        reader.setScaledSize(target);
    QImage picture = reader.read();
    if (picture.isNull()) {
        if (error)
            *error = reader.errorString();
        return {};
    }
    if (picture.size() != target)
        picture = picture.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QImage thumbnail(target, QImage::Format_RGB32);
    thumbnail.fill(Qt::white);
    QPainter painter(&thumbnail);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRect(QPoint(0, 0), target), picture);
    painter.end();
    return thumbnail;
}

StoredPicture storePicture(const app::DataFolder &folder, const QString &callSign, const QByteArray &bytes)
{
    StoredPicture result;
    folder.ensureImageFolders();
    result.picturePath = folder.picturePath(callSign);
    if (!app::writeFileAtomically(result.picturePath, bytes, &result.error)) {
        qCWarning(lcLookup) << "cannot write" << result.picturePath << result.error;
        result.status = PictureStatus::WriteFailed;
        return result;
    }
    const QImage thumbnail = makeThumbnail(bytes, &result.pictureSize, &result.error);
    if (thumbnail.isNull()) {
        qCDebug(lcLookup) << "the picture of" << callSign << "cannot be read:" << result.error;
        result.status = PictureStatus::NotAPicture;
        return result;
    }
    // Written as BMP whatever the extension says, as the Windows program's
    // picture box saved it; pictures and thumbnails are read by content.
    QByteArray bmp;
    QBuffer out(&bmp);
    out.open(QIODevice::WriteOnly);
    QImageWriter writer(&out, "bmp");
    if (!writer.write(thumbnail)) {
        result.error = writer.errorString();
        result.status = PictureStatus::WriteFailed;
        return result;
    }
    const QString thumbPath = folder.thumbnailPath(callSign);
    if (!app::writeFileAtomically(thumbPath, bmp, &result.error)) {
        qCWarning(lcLookup) << "cannot write" << thumbPath << result.error;
        result.status = PictureStatus::WriteFailed;
        return result;
    }
    result.thumbnailPath = thumbPath;
    result.thumbnailSize = thumbnail.size();
    result.status = PictureStatus::Saved;
    return result;
}

} // namespace marvik::lookup
