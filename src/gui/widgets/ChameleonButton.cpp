// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/widgets/ChameleonButton.h"

#include "core/widgets/AccessKey.h"

#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

namespace marvik::gui {

namespace {

// Space presses the button as a left click at this point would.
const QPointF kKeyPressPoint(1, 1);

} // namespace

ChameleonButton::ChameleonButton(QWidget *parent)
    : QPushButton(parent)
{
    // Dialogs colour their buttons as the mouse passes over them, so moves
    // are reported with no mouse button held as well.
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
}

ChameleonButton::ChameleonButton(const QString &caption, QWidget *parent)
    : ChameleonButton(parent)
{
    setCaption(caption);
}

QColor ChameleonButton::backColor() const
{
    return m_backColor.value_or(palette().color(QPalette::Active, QPalette::Button));
}

void ChameleonButton::setBackColor(const QColor &colour)
{
    m_backColor = colour;
    update();
}

QColor ChameleonButton::foreColor() const
{
    return m_foreColor.value_or(palette().color(QPalette::Active, QPalette::ButtonText));
}

void ChameleonButton::setForeColor(const QColor &colour)
{
    m_foreColor = colour;
    update();
}

void ChameleonButton::setButtonType(int type)
{
    if (type < widgets::ButtonProperties::kFirstType || type > widgets::ButtonProperties::kLastType)
        return;
    m_type = type;
    updateShape();
    updateGeometry();
    update();
}

void ChameleonButton::setCaption(const QString &caption)
{
    m_caption = caption;
    const QChar key = widgets::accessKey(caption);
    // Our own rule picks the key, so Qt's mnemonic reading of text() is
    // never involved.
    setShortcut(key.isNull()
            ? QKeySequence()
            : QKeySequence(QKeyCombination(Qt::AltModifier, static_cast<Qt::Key>(key.toUpper().unicode()))));
    setAccessibleName(widgets::captionText(caption).text);
    updateGeometry();
    update();
}

QChar ChameleonButton::accessKey() const
{
    return widgets::accessKey(m_caption);
}

void ChameleonButton::setColorScheme(int scheme)
{
    m_scheme = scheme;
    update();
}

void ChameleonButton::setShowFocusRect(bool show)
{
    m_showFocusRect = show;
    update();
}

ButtonLook ChameleonButton::look() const
{
    if (!isEnabled())
        return ButtonLook::Normal;
    if (isDown())
        return ButtonLook::Pressed;
    if (hasFocus() || underMouse())
        return ButtonLook::Hot;
    return ButtonLook::Normal;
}

QVariantMap ChameleonButton::properties() const
{
    widgets::ButtonProperties p;
    p.backColor = m_backColor;
    p.foreColor = m_foreColor;
    p.buttonType = m_type;
    p.caption = m_caption;
    // The button's own setting, not whether its dialog is disabled just now.
    p.enabled = !testAttribute(Qt::WA_ForceDisabled);
    if (testAttribute(Qt::WA_SetFont))
        p.font = font();
    p.colorScheme = m_scheme;
    p.showFocusRect = m_showFocusRect;
    return p.toMap();
}

void ChameleonButton::setProperties(const QVariantMap &map)
{
    const widgets::ButtonProperties p = widgets::ButtonProperties::fromMap(map);
    m_backColor = p.backColor;
    m_foreColor = p.foreColor;
    setButtonType(p.buttonType);
    setCaption(p.caption);
    setEnabled(p.enabled);
    // An empty font resolves nothing of its own: the container's font again.
    setFont(p.font.value_or(QFont()));
    m_scheme = p.colorScheme;
    m_showFocusRect = p.showFocusRect;
    update();
}

QSize ChameleonButton::sizeHint() const
{
    return buttonSizeHint(buttonStyleFrom(m_type), QFontMetricsF(font()), m_caption);
}

QSize ChameleonButton::minimumSizeHint() const
{
    // A layout that squeezes a button below this would clip its caption.
    return sizeHint();
}

widgets::ButtonColours ChameleonButton::colours() const
{
    widgets::ColourSources sources;
    sources.back = backColor();
    sources.fore = foreColor();
    const QPalette &pal = palette();
    sources.paletteButton = pal.color(QPalette::Active, QPalette::Button);
    sources.paletteButtonText = pal.color(QPalette::Active, QPalette::ButtonText);
    sources.paletteAccent = pal.color(QPalette::Active, QPalette::Highlight);
    sources.enabled = isEnabled();
    return widgets::buttonColours(widgets::colorSchemeFrom(m_scheme), sources);
}

void ChameleonButton::paintEvent(QPaintEvent *)
{
    FaceRequest request;
    request.style = buttonStyleFrom(m_type);
    request.look = look();
    request.colours = colours();
    request.enabled = isEnabled();
    request.focusRect = m_showFocusRect && hasFocus();
    request.caption = m_caption;
    request.font = font();
    QPainter painter(this);
    paintButtonFace(painter, QRectF(rect()), request);
}

void ChameleonButton::resizeEvent(QResizeEvent *event)
{
    QPushButton::resizeEvent(event);
    updateShape();
}

void ChameleonButton::updateShape()
{
    const QRegion shape = buttonMask(buttonStyleFrom(m_type), size());
    if (shape.isEmpty())
        clearMask();
    else
        setMask(shape);
}

bool ChameleonButton::hitButton(const QPoint &position) const
{
    const QRegion shape = mask();
    return shape.isEmpty() ? rect().contains(position) : shape.contains(position);
}

void ChameleonButton::enterEvent(QEnterEvent *event)
{
    QPushButton::enterEvent(event);
    update();
}

void ChameleonButton::leaveEvent(QEvent *event)
{
    QPushButton::leaveEvent(event);
    update();
}

// The mouse handlers report first and then act; a dialog may close itself
// from a report, so each one checks that the button is still there. The
// events are taken even where the push button would pass them on: the
// dialog heard of them through the reports already.

void ChameleonButton::mousePressEvent(QMouseEvent *event)
{
    const QPointer<ChameleonButton> alive(this);
    emit mouseDown(event->button(), event->modifiers(), event->position());
    if (!alive)
        return;
    QPushButton::mousePressEvent(event);
    event->accept();
}

void ChameleonButton::mouseMoveEvent(QMouseEvent *event)
{
    const QPointer<ChameleonButton> alive(this);
    emit mouseMoved(event->buttons(), event->modifiers(), event->position());
    if (!alive)
        return;
    QPushButton::mouseMoveEvent(event);
    event->accept();
}

void ChameleonButton::mouseReleaseEvent(QMouseEvent *event)
{
    const QPointer<ChameleonButton> alive(this);
    emit mouseUp(event->button(), event->modifiers(), event->position());
    if (!alive)
        return;
    QPushButton::mouseReleaseEvent(event);
    event->accept();
}

void ChameleonButton::keyPressEvent(QKeyEvent *event)
{
    const QPointer<ChameleonButton> alive(this);
    emit keyDown(event->key(), event->modifiers());
    if (alive && !event->text().isEmpty())
        emit keyPressed(event->text());
    if (!alive)
        return;
    switch (event->key()) {
    case Qt::Key_Space:
        if (!event->isAutoRepeat() && !isDown()) {
            emit mouseDown(Qt::LeftButton, event->modifiers(), kKeyPressPoint);
            if (!alive)
                return;
        }
        QPushButton::keyPressEvent(event);
        break;
    // The arrows step through the dialog as Tab and Shift+Tab do, whatever
    // the writing direction.
    case Qt::Key_Right:
    case Qt::Key_Down:
        focusNextPrevChild(true);
        event->accept();
        break;
    case Qt::Key_Left:
    case Qt::Key_Up:
        focusNextPrevChild(false);
        event->accept();
        break;
    default:
        QPushButton::keyPressEvent(event);
        break;
    }
}

void ChameleonButton::keyReleaseEvent(QKeyEvent *event)
{
    const QPointer<ChameleonButton> alive(this);
    const bool spaceUp = event->key() == Qt::Key_Space && !event->isAutoRepeat() && isDown();
    emit keyUp(event->key(), event->modifiers());
    if (alive && spaceUp)
        emit mouseUp(Qt::LeftButton, event->modifiers(), kKeyPressPoint);
    if (!alive)
        return;
    QPushButton::keyReleaseEvent(event);
}

} // namespace marvik::gui
