// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PlaceholderWindow.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Marvik"));
    marvik::gui::PlaceholderWindow window(QStringLiteral("Marvik is being built."));
    window.show();
    return QApplication::exec();
}
