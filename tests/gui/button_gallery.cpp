// SPDX-License-Identifier: GPL-3.0-or-later
// Draws every dialog button style in each look on a light and a dark
// palette, on the dialogs' blue, and at 200 % scale, and below them real
// buttons with their window shapes, into one picture:
//   QT_QPA_PLATFORM=offscreen button_gallery buttons.png
#include "gui/widgets/ButtonFace.h"
#include "gui/widgets/ChameleonButton.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QPalette>

using namespace marvik;
using gui::ButtonLook;
using gui::ButtonStyle;

namespace {

const char *const kStyleNames[] = {"1 Classic", "2 Soft", "3 Flat", "4 Pill", "5 Outlined", "6 Chiselled", "7 Lifted"};
const char *const kColumns[] = {"Normal", "Hot", "Pressed", "Focused", "Disabled"};
constexpr int kLabelWidth = 84;
constexpr int kCellWidth = 96;
constexpr int kCellHeight = 36;
constexpr int kTitleHeight = 24;

struct Theme
{
    QString title;
    QColor window, text, button, buttonText, accent;
};

QSize panelSize()
{
    return QSize(kLabelWidth + 5 * kCellWidth + 8, kTitleHeight + 16 + 7 * kCellHeight + 8);
}

void paintPanel(QPainter &p, const Theme &theme)
{
    p.fillRect(QRect(QPoint(0, 0), panelSize()), theme.window);
    QFont titleFont = QApplication::font();
    titleFont.setBold(true);
    p.setFont(titleFont);
    p.setPen(theme.text);
    p.drawText(QRect(6, 0, panelSize().width(), kTitleHeight), Qt::AlignVCenter, theme.title);
    p.setFont(QApplication::font());
    for (int c = 0; c < 5; ++c)
        p.drawText(QRect(kLabelWidth + c * kCellWidth, kTitleHeight, kCellWidth, 16), Qt::AlignCenter,
            QString::fromLatin1(kColumns[c]));
    const QString captions[] = {u"&OK"_qs, u"&Cancel"_qs, u"&Yes"_qs, u"&No"_qs, u"Sa&ve"_qs};
    for (int row = 0; row < 7; ++row) {
        const int y = kTitleHeight + 16 + row * kCellHeight;
        p.setPen(theme.text);
        p.drawText(QRect(6, y, kLabelWidth, kCellHeight), Qt::AlignVCenter, QString::fromLatin1(kStyleNames[row]));
        for (int c = 0; c < 5; ++c) {
            gui::FaceRequest request;
            request.style = static_cast<ButtonStyle>(row + 1);
            request.look = c == 1 || c == 3 ? ButtonLook::Hot : c == 2 ? ButtonLook::Pressed : ButtonLook::Normal;
            request.enabled = c != 4;
            request.focusRect = c == 3;
            request.colours = widgets::buttonColours(widgets::ColorScheme::OwnColours,
                {theme.button, theme.buttonText, theme.button, theme.buttonText, theme.accent, request.enabled});
            request.caption = captions[c];
            request.font = QApplication::font();
            const QSize hint = gui::buttonSizeHint(request.style, QFontMetricsF(request.font), request.caption);
            const QRectF cell(kLabelWidth + c * kCellWidth + 4, y + (kCellHeight - hint.height()) / 2.0, kCellWidth - 8,
                hint.height());
            paintButtonFace(p, cell, request);
        }
    }
}

QImage panel(const Theme &theme, qreal scale)
{
    QImage image(panelSize() * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    QPainter p(&image);
    paintPanel(p, theme);
    p.end();
    image.setDevicePixelRatio(1);
    return image;
}

/// Real buttons on a window of the theme's colours, grabbed as the screen
/// shows them: the window shapes cut the corners here.
QImage realButtons(const Theme &theme)
{
    QWidget window;
    QPalette palette = window.palette();
    palette.setColor(QPalette::Window, theme.window);
    palette.setColor(QPalette::Button, theme.button);
    palette.setColor(QPalette::ButtonText, theme.buttonText);
    window.setPalette(palette);
    window.setAutoFillBackground(true);
    window.resize(panelSize().width(), 40);
    for (int type = 1; type <= 7; ++type) {
        auto *button = new gui::ChameleonButton(u"&Type %1"_qs.arg(type), &window);
        button->setButtonType(type);
        button->setGeometry(6 + (type - 1) * 80, 6, 74, 28);
    }
    window.show();
    QApplication::processEvents();
    // Placed pixel for pixel: at a scale factor the grab has more pixels.
    QImage image = window.grab().toImage();
    image.setDevicePixelRatio(1);
    return image;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    if (argc < 2) {
        qWarning("usage: button_gallery OUT.png");
        return 2;
    }
    const QPalette light = QApplication::palette();
    const Theme lightTheme {u"Light palette"_qs, light.color(QPalette::Window), light.color(QPalette::WindowText),
        light.color(QPalette::Button), light.color(QPalette::ButtonText), light.color(QPalette::Highlight)};
    const Theme darkTheme {u"Dark palette"_qs, QColor(45, 45, 48), QColor(230, 230, 230), QColor(60, 60, 64),
        QColor(235, 235, 235), QColor(42, 130, 218)};
    Theme blueTheme = lightTheme;
    blueTheme.title = u"Dialog blue (BackColor 170, 197, 255)"_qs;
    blueTheme.button = QColor(170, 197, 255);

    const QImage a = panel(lightTheme, 1);
    const QImage b = panel(darkTheme, 1);
    const QImage c = panel(blueTheme, 1);
    Theme lightBig = lightTheme;
    lightBig.title += u" at 200 %"_qs;
    Theme darkBig = darkTheme;
    darkBig.title += u" at 200 %"_qs;
    const QImage d = panel(lightBig, 2);
    const QImage e = panel(darkBig, 2);

    const QImage f = realButtons(lightTheme);
    const QImage g = realButtons(darkTheme);

    QImage out(d.width() + e.width(), a.height() + d.height() + f.height(), QImage::Format_ARGB32_Premultiplied);
    out.fill(Qt::white);
    QPainter p(&out);
    p.drawImage(0, 0, a);
    p.drawImage(a.width(), 0, b);
    p.drawImage(a.width() + b.width(), 0, c);
    p.drawImage(0, a.height(), d);
    p.drawImage(d.width(), a.height(), e);
    p.drawImage(0, a.height() + d.height(), f);
    p.drawImage(f.width(), a.height() + d.height(), g);
    p.end();
    return out.save(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
}
