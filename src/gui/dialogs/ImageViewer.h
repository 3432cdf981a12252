// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QPoint>
#include <QWidget>

class QLabel;
class QMovie;

namespace marvik::gui {

/// `Form4`: one operator picture in a small window of its own, animated
/// when the picture is an animated GIF. A click closes it and puts the
/// pointer back where it was when the viewer opened.
class ImageViewer : public QWidget
{
    Q_OBJECT

public:
    explicit ImageViewer(QWidget *parent = nullptr);
    ~ImageViewer() override;

    /// Loads a picture file, read by its content whatever its extension.
    /// False when the bytes make no picture; the viewer must then not be shown.
    bool load(const QString &path);
    bool isAnimated() const { return m_movie != nullptr; }
    /// The pointer position recorded when the viewer was made.
    QPoint savedCursor() const { return m_savedCursor; }
    /// The point inside the viewer the pointer is moved to after a
    /// thumbnail click, in screen coordinates.
    QPoint cursorTarget() const;
    /// Puts the pointer at cursorTarget() once the window is shown where the
    /// window manager places it.
    void moveCursorInside();

protected:
    void showEvent(QShowEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QSize fittedSize(QSize picture) const;

    QLabel *m_picture = nullptr;
    QMovie *m_movie = nullptr;
    QByteArray m_bytes;
    QBuffer m_buffer;
    QPoint m_savedCursor;
    bool m_cursorPending = false;
};

} // namespace marvik::gui
