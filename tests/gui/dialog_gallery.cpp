// SPDX-License-Identifier: GPL-3.0-or-later
// Not a test: shows the add/edit dialog, the setup dialog and the
// new-version question side by side in one picture, for review on the
// desktop's palette or a dark one (--dark), at any QT_SCALE_FACTOR.
#include "core/lists/ListStore.h"
#include "support/GuiTestUtil.h"
#include "support/MarvikUnderTest.h"

#include "core/app/Config.h"
#include "gui/app/CompositionRoot.h"
#include "gui/dialogs/AddEditDialog.h"
#include "gui/dialogs/DialogsController.h"
#include "gui/dialogs/NewVersionDialog.h"
#include "gui/dialogs/SetupDialog.h"

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QSettings>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTextStream>

using namespace marvik;

namespace {

QPalette darkPalette()
{
    QPalette p;
    p.setColor(QPalette::Window, QColor(45, 45, 48));
    p.setColor(QPalette::WindowText, QColor(230, 230, 230));
    p.setColor(QPalette::Base, QColor(30, 30, 32));
    p.setColor(QPalette::AlternateBase, QColor(40, 40, 44));
    p.setColor(QPalette::Text, QColor(230, 230, 230));
    p.setColor(QPalette::PlaceholderText, QColor(140, 140, 140));
    p.setColor(QPalette::Button, QColor(60, 60, 64));
    p.setColor(QPalette::ButtonText, QColor(230, 230, 230));
    p.setColor(QPalette::Highlight, QColor(42, 130, 218));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::ToolTipBase, QColor(60, 60, 64));
    p.setColor(QPalette::ToolTipText, QColor(230, 230, 230));
    return p;
}

QPixmap shot(QWidget *w)
{
    w->show();
    for (int i = 0; i < 5; ++i)
        QApplication::processEvents();
    return w->grab();
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QStringList args = QApplication::arguments();
    if (args.size() < 2) {
        QTextStream(stderr) << "usage: dialog_gallery OUT.png [--dark]\n";
        return 2;
    }
    // Marvik's own icon, as the desktop program sets it.
    QIcon icon;
    for (int size : {32, 48, 64, 128})
        icon.addFile(QStringLiteral(MARVIK_ICONS_DIR "/marvik-%1.png").arg(size));
    QApplication::setWindowIcon(icon);
    if (args.contains(QStringLiteral("--dark"))) {
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
        QApplication::setPalette(darkPalette());
    }

    QTemporaryDir dir;
    app::Settings settings;
    settings.me = {52.52, 13.405};
    settings.ownCallsign = QStringLiteral("DL1ABC");
    settings.defaultDatabase = 1;
    app::writeConfig(dir.filePath(QStringLiteral("Marvik.cfg")), settings);
    const QByteArray row = "DL1ABC*Hansi**Hans Meyer*Hauptstr. 12*Berlin*Germany*52.52*13.405*20240102101500*\r\n";
    test::writeAll(dir.filePath(QStringLiteral("List2.dat")), row);
    test::writeAll(dir.filePath(QStringLiteral("List5.dat")), row);
    QSettings store(dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    test::pointSourcesNowhere(store);

    gui::CompositionRoot root(dir.path(), &store);
    if (!root.startUp())
        return 1;
    root.lists().finishReading();

    QList<QPixmap> shots;
    root.dialogs()->openAddEdit(QStringLiteral("DL1ABC"));
    shots << shot(root.dialogs()->addEditDialog());
    root.dialogs()->addEditDialog()->close();
    root.dialogs()->openSetup();
    gui::SetupDialog *setup = root.dialogs()->setupDialog();
    setup->findChild<QLabel *>(QStringLiteral("Label4"))->setText(QStringLiteral("QRZ  (Logged in)"));
    shots << shot(setup);
    setup->close();
    gui::NewVersionDialog question(QStringLiteral("3.13"), QString(), root.texts());
    shots << shot(&question);

    const qreal dpr = shots.first().devicePixelRatio();
    const int gap = 16;
    QSize size(gap, 0);
    for (const QPixmap &p : std::as_const(shots)) {
        const QSize logical = (QSizeF(p.size()) / dpr).toSize();
        size.rwidth() += logical.width() + gap;
        size.setHeight(std::max(size.height(), logical.height() + 2 * gap));
    }
    QImage out(size * dpr, QImage::Format_RGB32);
    out.setDevicePixelRatio(dpr);
    out.fill(QColor(128, 128, 128));
    QPainter painter(&out);
    int x = gap;
    for (const QPixmap &p : std::as_const(shots)) {
        painter.drawPixmap(x, gap, p);
        x += int(p.width() / dpr) + gap;
    }
    painter.end();
    return out.save(args.at(1)) ? 0 : 1;
}
