// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/dialogs/ImageViewer.h"

#include "core/app/Log.h"

#include <QCloseEvent>
#include <QCursor>
#include <QFile>
#include <QImageReader>
#include <QLabel>
#include <QMouseEvent>
#include <QMovie>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

namespace marvik::gui {

ImageViewer::ImageViewer(QWidget *parent)
    : QWidget(parent, Qt::Dialog)
    , m_savedCursor(QCursor::pos())
{
    setObjectName(QStringLiteral("Form4"));
    setWindowTitle(QStringLiteral("Marvik"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_picture = new QLabel(this);
    m_picture->setObjectName(QStringLiteral("AniGIF1"));
    m_picture->setAlignment(Qt::AlignCenter);
    m_picture->installEventFilter(this);
    layout->addWidget(m_picture);
}

ImageViewer::~ImageViewer() = default;

QSize ImageViewer::fittedSize(QSize picture) const
{
    // A picture larger than the screen is shown whole, scaled down; smaller
    // ones keep their own size.
    const QScreen *screen = this->screen();
    if (!screen || picture.isEmpty())
        return picture;
    const QSize room = screen->availableSize() * 9 / 10;
    return picture.width() <= room.width() && picture.height() <= room.height()
               ? picture
               : picture.scaled(room, Qt::KeepAspectRatio);
}

bool ImageViewer::load(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qCDebug(lcLookup) << "cannot open the picture" << path << file.errorString();
        return false;
    }
    m_bytes = file.readAll();
    m_buffer.setData(m_bytes);

    QSize size;
    {
        m_buffer.open(QIODevice::ReadOnly);
        QImageReader probe(&m_buffer);
        probe.setDecideFormatFromContent(true);
        const bool animated = probe.supportsAnimation() && probe.imageCount() > 1;
        const QByteArray format = probe.format();
        m_buffer.close();
        if (animated) {
            m_movie = new QMovie(&m_buffer, format, this);
            if (m_movie->isValid() && m_movie->jumpToFrame(0)) {
                size = fittedSize(m_movie->currentImage().size());
                m_movie->setScaledSize(size);
                m_picture->setMovie(m_movie);
                m_movie->jumpToFrame(0);
                m_movie->start();
            } else {
                delete m_movie;
                m_movie = nullptr;
            }
        }
    }
    if (!m_movie) {
        m_buffer.open(QIODevice::ReadOnly);
        QImageReader reader(&m_buffer);
        reader.setDecideFormatFromContent(true);
        reader.setAutoTransform(true);
        const QImage image = reader.read();
        m_buffer.close();
        if (image.isNull()) {
            qCDebug(lcLookup) << "not a picture:" << path << reader.errorString();
            return false;
        }
        size = fittedSize(image.size());
        m_picture->setPixmap(QPixmap::fromImage(
            size == image.size() ? image : image.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    }
    setFixedSize(size);
    return true;
}

QPoint ImageViewer::cursorTarget() const
{
    return mapToGlobal(QPoint(width() / 2, height() / 2));
}

void ImageViewer::moveCursorInside()
{
    m_cursorPending = true;
    if (isVisible())
        QCursor::setPos(cursorTarget());
}

void ImageViewer::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!m_cursorPending)
        return;
    QCursor::setPos(cursorTarget());
    // A window manager places the window after it is shown (and the window
    // system may add its frame only then); the pointer follows the moves of
    // the first moments, not later ones the user makes.
    QTimer::singleShot(0, this, [this] {
        if (m_cursorPending)
            QCursor::setPos(cursorTarget());
    });
    QTimer::singleShot(500, this, [this] { m_cursorPending = false; });
}

void ImageViewer::moveEvent(QMoveEvent *event)
{
    QWidget::moveEvent(event);
    if (m_cursorPending)
        QCursor::setPos(cursorTarget());
}

void ImageViewer::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        close();
}

bool ImageViewer::eventFilter(QObject *watched, QEvent *event)
{
    // The picture fills the window, so its clicks close the viewer too.
    if (watched == m_picture && event->type() == QEvent::MouseButtonRelease) {
        auto *mouse = static_cast<QMouseEvent *>(event);
        if (mouse->button() == Qt::LeftButton) {
            close();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void ImageViewer::closeEvent(QCloseEvent *event)
{
    if (m_movie)
        m_movie->stop();
    QCursor::setPos(m_savedCursor);
    event->accept();
}

} // namespace marvik::gui
