// SPDX-License-Identifier: GPL-3.0-or-later
// The baseline of the start-up benchmark: a plain Qt Widgets window of
// Marvik's size, built with Qt Widgets alone (no web engine), with a menu
// bar and a ten-row table so it loads fonts and paints text as Marvik's
// window does. Started by bench_startup; once it has painted it prints the
// moment and its figures on one line and ends without tearing down.
#include "ProcessInfo.h"

#include <QApplication>
#include <QHeaderView>
#include <QMainWindow>
#include <QMenuBar>
#include <QTableWidget>

#include <cstdio>
#include <cstdlib>

namespace {

class FirstPaint : public QObject
{
public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !m_seen) {
            m_seen = true;
            // After the paint has reached the screen, not in the middle of it.
            QMetaObject::invokeMethod(this, &FirstPaint::report, Qt::QueuedConnection);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    void report()
    {
        using namespace marvik::bench;
        const qint64 painted = monotonicNs();
        const QString line = reportLine({
            {QStringLiteral("paint"), QString::number(painted)},
            {QStringLiteral("hwm"), QString::number(peakMemoryKiB())},
            {QStringLiteral("qt"), mappedLibraries(QStringLiteral("libQt6")).join(u',')},
        });
        std::printf("%s\n", qPrintable(line));
        std::fflush(stdout);
        std::_Exit(0);
    }

    bool m_seen = false;
};

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QMainWindow window;
    const char *menus[][4] = {{"&File", "&New list", "&Open...", "E&xit"},
                              {"&Edit", "&Copy", "&Paste", "&Delete"},
                              {"&Database", "&Get", "&Update", "&Cancel"},
                              {"&Help", "&Contents", "&Check for updates", "&About"}};
    for (const auto &menu : menus) {
        QMenu *m = window.menuBar()->addMenu(QString::fromLatin1(menu[0]));
        for (int i = 1; i < 4; ++i)
            m->addAction(QString::fromLatin1(menu[i]));
    }
    auto *table = new QTableWidget(10, 4, &window);
    table->horizontalHeader()->hide();
    table->verticalHeader()->hide();
    const char *names[] = {"Hans", "Jean", "Bob", "Maria", "Kenji", "Olga", "Pieter", "Anna", "José", "Jim"};
    for (int r = 0; r < 10; ++r) {
        table->setItem(r, 0, new QTableWidgetItem(QStringLiteral("DL%1ABC").arg(r)));
        table->setItem(r, 1, new QTableWidgetItem(QString::fromUtf8(names[r])));
        table->setItem(r, 2, new QTableWidgetItem(QStringLiteral("%1\u00B0").arg(r * 31 % 360)));
        table->setItem(r, 3, new QTableWidgetItem(QStringLiteral("M\u00FCnchen")));
    }
    window.setCentralWidget(table);
    // Marvik's window at its first start: 6000 × 7000 twips.
    window.resize(400, 466);
    FirstPaint watcher;
    window.installEventFilter(&watcher);
    window.show();
    return QApplication::exec();
}
