// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/widgets/ButtonProperties.h"
#include "gui/widgets/ButtonFace.h"

#include <QPushButton>

#include <optional>

namespace marvik::gui {

/// `chameleonButton`: the push button of every Marvik dialog. It draws its
/// face itself in one of seven styles, with the edge shades worked out from
/// its BackColor, and otherwise behaves as a push button: the default
/// button of a dialog takes Enter, Space presses it, Alt and the access key
/// click it, the arrow keys move the focus on, and it reports the mouse and
/// the keys to its dialog.
class ChameleonButton : public QPushButton
{
    Q_OBJECT
    Q_PROPERTY(QColor BackColor READ backColor WRITE setBackColor)
    Q_PROPERTY(QColor ForeColor READ foreColor WRITE setForeColor)
    Q_PROPERTY(int ButtonType READ buttonType WRITE setButtonType)
    Q_PROPERTY(QString Caption READ caption WRITE setCaption)
    Q_PROPERTY(bool Enabled READ isEnabled WRITE setEnabled)
    Q_PROPERTY(QFont Font READ font WRITE setFont)
    Q_PROPERTY(int ColorScheme READ colorScheme WRITE setColorScheme)
    Q_PROPERTY(bool ShowFocusRect READ showFocusRect WRITE setShowFocusRect)
    Q_PROPERTY(WId hWnd READ hWnd)

public:
    explicit ChameleonButton(QWidget *parent = nullptr);
    explicit ChameleonButton(const QString &caption, QWidget *parent = nullptr);

    /// The face colour; until one is set, the palette's button colour.
    QColor backColor() const;
    void setBackColor(const QColor &colour);
    /// The caption colour; until one is set, the palette's button text colour.
    QColor foreColor() const;
    void setForeColor(const QColor &colour);
    /// The style, 1 to 7 (see ButtonStyle); other numbers are refused.
    int buttonType() const { return m_type; }
    void setButtonType(int type);
    /// The caption with its "&" marks; text() stays empty, since Qt would
    /// read the marks by its own rules.
    QString caption() const { return m_caption; }
    void setCaption(const QString &caption);
    /// The key that Alt clicks the button with, or a null QChar.
    QChar accessKey() const;
    /// 1 own colours, 2 the palette's, 3 own colours with the palette's
    /// accent; other numbers draw as 1 but are kept.
    int colorScheme() const { return m_scheme; }
    void setColorScheme(int scheme);
    bool showFocusRect() const { return m_showFocusRect; }
    void setShowFocusRect(bool show);
    /// The window-system handle of the window the button is shown in. The
    /// button does not make a native window of its own for it.
    WId hWnd() const { return effectiveWinId(); }

    /// The look the button shows now.
    ButtonLook look() const;

    /// The stored properties under their keys "BCOL", "FCOL", "BTYPE",
    /// "TX", "ENAB", "FONT", "COLTYPE" and "FOCUSR".
    QVariantMap properties() const;
    /// Sets every stored property from a map; a key that is missing gives
    /// that property's default.
    void setProperties(const QVariantMap &map);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void mouseDown(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, const QPointF &position);
    void mouseMoved(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers, const QPointF &position);
    void mouseUp(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, const QPointF &position);
    void keyDown(int key, Qt::KeyboardModifiers modifiers);
    /// A typed character, after keyDown.
    void keyPressed(const QString &text);
    void keyUp(int key, Qt::KeyboardModifiers modifiers);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    bool hitButton(const QPoint &position) const override;

private:
    void updateShape();
    widgets::ButtonColours colours() const;

    std::optional<QColor> m_backColor;
    std::optional<QColor> m_foreColor;
    int m_type = widgets::ButtonProperties::kDefaultType;
    QString m_caption;
    int m_scheme = widgets::ButtonProperties::kDefaultScheme;
    bool m_showFocusRect = true;
};

} // namespace marvik::gui
