// SPDX-License-Identifier: GPL-3.0-or-later
// The grid's cells under a desktop font larger than the form was made for:
// a callsign and a bearing are drawn smaller rather than cut.
#include "core/lists/CallRecord.h"
#include "gui/lists/ThumbnailDelegate.h"

#include <QApplication>
#include <QFontMetrics>
#include <QStyleOptionViewItem>
#include <QTableWidget>
#include <QTest>

using namespace marvik;

class TestGridDelegate : public QObject
{
    Q_OBJECT

private slots:
    void fitText_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("outcome"); // same, smaller or floor
        QTest::newRow("callsign that fits") << int(lists::Column::Callsign) << u"G4XYZ"_qs << 400 << u"same"_qs;
        QTest::newRow("callsign too wide") << int(lists::Column::Callsign) << u"DL1ABC/P"_qs << 0 << u"smaller"_qs;
        QTest::newRow("bearing too wide") << int(lists::Column::Azimuth) << u"218\u00B0"_qs << 0 << u"smaller"_qs;
        QTest::newRow("short bearing, same size as the others") << int(lists::Column::Azimuth) << u"7\u00B0"_qs << 0
                                                               << u"smaller"_qs;
        QTest::newRow("far too wide: seven tenths at the least") << int(lists::Column::Callsign)
                                                                 << u"VERYLONGCALLSIGN/MM"_qs << -1 << u"floor"_qs;
        QTest::newRow("a name is cut as before") << int(lists::Column::FullName) << u"Robert Smith"_qs << 10
                                                 << u"same"_qs;
    }
    void fitText()
    {
        QFETCH(int, column);
        QFETCH(QString, text);
        QFETCH(int, width);
        QFETCH(QString, outcome);
        QTableWidget table(1, lists::kColumnCount);
        QFont big = table.font();
        big.setPointSizeF(16);
        table.setFont(big);
        QStyleOptionViewItem opt;
        opt.widget = &table;
        opt.font = big;
        opt.fontMetrics = QFontMetrics(big);
        opt.text = text;
        opt.index = table.model()->index(0, column);
        const int full = QFontMetrics(big).horizontalAdvance(column == int(lists::Column::Azimuth) ? u"888\u00B0"_qs : text);
        // 0: eight tenths of the room the text needs; -1: a third of it.
        const int cell = width > 0 ? width : width == 0 ? full * 8 / 10 : full / 3;
        opt.rect = QRect(0, 0, cell, 20);
        gui::ThumbnailDelegate::fitText(opt);
        if (outcome == u"same") {
            QCOMPARE(opt.font.pointSizeF(), big.pointSizeF());
            return;
        }
        QVERIFY(opt.font.pointSizeF() < big.pointSizeF());
        QVERIFY(opt.font.pointSizeF() >= big.pointSizeF() * 0.69);
        QCOMPARE(opt.fontMetrics.height(), QFontMetrics(opt.font).height());
        if (outcome == u"smaller")
            QVERIFY(QFontMetrics(opt.font).horizontalAdvance(column == int(lists::Column::Azimuth) ? u"888\u00B0"_qs : text)
                    <= cell);
        else
            QVERIFY(opt.font.pointSizeF() <= big.pointSizeF() * 0.71);
    }
};

QTEST_MAIN(TestGridDelegate)
#include "tst_griddelegate.moc"
