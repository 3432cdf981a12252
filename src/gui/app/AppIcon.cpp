// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/app/AppIcon.h"

#include "core/app/DataFolder.h"

#include <QImage>
#include <QImageReader>
#include <QPixmap>

namespace marvik::gui {

QIcon applicationIcon()
{
    // Read as PNG by name: QIcon::addFile asks every image plugin whether it
    // knows the file, which loads all of them (and libtiff, libwebp, libmng
    // with them).
    const QString icons = app::shareFolder() + QStringLiteral("/icons/");
    QIcon fallback;
    for (int size : {16, 32, 48, 64, 128, 256}) {
        QImageReader reader(icons + QStringLiteral("marvik-%1.png").arg(size), "png");
        reader.setAutoDetectImageFormat(false);
        const QImage image = reader.read();
        if (!image.isNull())
            fallback.addPixmap(QPixmap::fromImage(image));
    }
    return QIcon::fromTheme(QStringLiteral("marvik"), fallback);
}

} // namespace marvik::gui
