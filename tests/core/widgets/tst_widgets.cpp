// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog button's rules that need no window: access keys, the shades
// worked out from a face colour, the colour schemes and reading the
// property store.
#include "core/widgets/AccessKey.h"
#include "core/widgets/ButtonProperties.h"
#include "core/widgets/ButtonShades.h"

#include <QKeySequence>
#include <QTest>

#include <cmath>

using namespace marvik::widgets;

class TestWidgets : public QObject
{
    Q_OBJECT

private slots:
    void accessKeys_data();
    void accessKeys();
    void shades_data();
    void shades();
    void schemes_data();
    void schemes();
    void propertiesRead_data();
    void propertiesRead();
};

void TestWidgets::accessKeys_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("key"); // empty: no key
    QTest::addColumn<QString>("shown");
    QTest::addColumn<int>("underline");

    QTest::newRow("empty") << ""
                           << ""
                           << "" << -1;
    QTest::newRow("one ampersand alone") << "&"
                                         << ""
                                         << "&" << -1;
    QTest::newRow("ends in ampersand") << "Save&"
                                       << ""
                                       << "Save&" << -1;
    QTest::newRow("two, ending in ampersand") << "a&"
                                              << ""
                                              << "a&" << -1;
    QTest::newRow("first letter") << "&Save"
                                  << "S"
                                  << "Save" << 0;
    QTest::newRow("inner letter") << "Sa&ve"
                                  << "v"
                                  << "Save" << 2;
    QTest::newRow("pair alone") << "&&"
                                << ""
                                << "&" << -1;
    QTest::newRow("pair then trailing mark") << "&&&"
                                             << ""
                                             << "&&" << -1;
    QTest::newRow("pair is an ampersand") << "Fish && Chips"
                                          << ""
                                          << "Fish & Chips" << -1;
    QTest::newRow("key after a pair") << "Fish &&&Chips"
                                      << "C"
                                      << "Fish &Chips" << 6;
    QTest::newRow("search goes on after pairs") << "x&&y&z"
                                                << "z"
                                                << "x&yz" << 3;
    QTest::newRow("first mark counts") << "&a&b"
                                       << "a"
                                       << "ab" << 0;
    QTest::newRow("key, then a trailing mark") << "&a&"
                                               << "a"
                                               << "a&" << 0;
    QTest::newRow("blank after the mark") << "Lat & Lon"
                                          << " "
                                          << "Lat  Lon" << 4;
    QTest::newRow("slashed zero") << "&\u00D8Z"
                                  << "\u00D8"
                                  << "\u00D8Z" << 0;
}

void TestWidgets::accessKeys()
{
    QFETCH(QString, caption);
    QFETCH(QString, key);
    QFETCH(QString, shown);
    QFETCH(int, underline);

    const QChar found = accessKey(caption);
    QCOMPARE(found.isNull() ? QString() : QString(found), key);
    QCOMPARE(captionText(caption).text, shown);
    QCOMPARE(captionText(caption).underline, qsizetype(underline));
    // The caption is drawn by Qt's mnemonic rules: the letter Qt underlines
    // must be the key that clicks the button.
    const QKeySequence ours = key.isEmpty()
        ? QKeySequence()
        : QKeySequence(QKeyCombination(Qt::AltModifier, Qt::Key(key.at(0).toUpper().unicode())));
    QCOMPARE(QKeySequence::mnemonic(mnemonicText(caption)), ours);
}

void TestWidgets::shades_data()
{
    QTest::addColumn<QColor>("face");
    QTest::newRow("white") << QColor(255, 255, 255);
    QTest::newRow("black") << QColor(0, 0, 0);
    QTest::newRow("system grey") << QColor(240, 240, 240);
    QTest::newRow("dark theme") << QColor(53, 53, 53);
    QTest::newRow("mid grey") << QColor(128, 128, 128);
    QTest::newRow("dialog blue") << QColor(170, 197, 255);
    QTest::newRow("deep red") << QColor(160, 0, 0);
}

void TestWidgets::shades()
{
    QFETCH(QColor, face);
    const ButtonShades s = shadesFor(face);
    const double f = luma(face);

    // Lit edges never darker, shaded ones never lighter than the face, and
    // strictly so wherever the face leaves room.
    QVERIFY(luma(s.darkShadow) <= luma(s.shadow) && luma(s.shadow) <= f);
    QVERIFY(f <= luma(s.light) && luma(s.light) <= luma(s.highlight));
    if (face != QColor(Qt::black))
        QVERIFY(luma(s.darkShadow) < luma(s.shadow) && luma(s.shadow) < f);
    if (face != QColor(Qt::white))
        QVERIFY(f < luma(s.light) && luma(s.light) < luma(s.highlight));
    // Hot and pressed show on any face, white and black too; pressing goes
    // further than hovering, and the outline stands out.
    QVERIFY(s.hotFace != s.face);
    QVERIFY(std::abs(luma(s.pressedFace) - f) > std::abs(luma(s.hotFace) - f));
    QVERIFY(std::abs(luma(s.outline) - f) >= 0.2);
    // A coloured face keeps its hue in every shade that still has colour.
    for (const QColor &c : {s.light, s.shadow, s.darkShadow, s.hotFace, s.pressedFace}) {
        if (face.hsvSaturation() > 0 && c.hsvSaturation() > 40)
            QVERIFY2(std::abs(c.hsvHue() - face.hsvHue()) <= 3, qPrintable(c.name()));
    }
}

void TestWidgets::schemes_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<QColor>("back");
    QTest::addColumn<QColor>("face");
    QTest::addColumn<QColor>("text"); // invalid: between face and ForeColor
    QTest::addColumn<bool>("accent");

    const QColor blue(170, 197, 255);
    const QColor navy(0, 0, 128);
    QTest::newRow("1 own colours") << 1 << true << blue << blue << navy << false;
    QTest::newRow("2 palette") << 2 << true << blue << QColor(239, 239, 239) << QColor(20, 20, 20) << false;
    QTest::newRow("3 accent") << 3 << true << blue << blue << navy << true;
    QTest::newRow("0 unknown") << 0 << true << blue << blue << navy << false;
    QTest::newRow("disabled, light") << 1 << false << QColor(240, 240, 240) << QColor(240, 240, 240) << QColor()
                                     << false;
    QTest::newRow("disabled, dark") << 1 << false << QColor(53, 53, 53) << QColor(53, 53, 53) << QColor() << false;
}

void TestWidgets::schemes()
{
    QFETCH(int, number);
    QFETCH(bool, enabled);
    QFETCH(QColor, back);
    QFETCH(QColor, face);
    QFETCH(QColor, text);
    QFETCH(bool, accent);

    const QColor accentColour(48, 140, 198);
    const QColor fore = enabled ? QColor(0, 0, 128) : luma(back) > 0.5 ? QColor(Qt::black) : QColor(Qt::white);
    const ButtonColours c = buttonColours(
        colorSchemeFrom(number), {back, fore, QColor(239, 239, 239), QColor(20, 20, 20), accentColour, enabled});
    QCOMPARE(c.shades.face, enabled ? face : disabledFace(face));
    if (text.isValid()) {
        QCOMPARE(c.text, text);
    } else {
        const double lo = std::min(luma(face), luma(fore));
        const double hi = std::max(luma(face), luma(fore));
        QVERIFY(luma(c.text) > lo + 0.2 && luma(c.text) < hi - 0.2);
    }
    // Etching brightens, so it helps a light disabled face only.
    QCOMPARE(c.etch.isValid(), !enabled && luma(face) > 0.5);
    QCOMPARE(c.shades.hotFace != shadesFor(c.shades.face).hotFace, accent);
    QCOMPARE(c.focus == accentColour, accent);
}

void TestWidgets::propertiesRead_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVariant>("reads"); // invalid: the key stays unwritten

    QTest::newRow("type 1 as text") << "BTYPE" << QVariant(u"1"_qs) << QVariant(1);
    QTest::newRow("type 0") << "BTYPE" << QVariant(0) << QVariant(2);
    QTest::newRow("type 8") << "BTYPE" << QVariant(8) << QVariant(2);
    QTest::newRow("type word") << "BTYPE" << QVariant(u"pill"_qs) << QVariant(2);
    QTest::newRow("scheme past 16 bits") << "COLTYPE" << QVariant(40000) << QVariant(1);
    QTest::newRow("disabled as 0") << "ENAB" << QVariant(u"0"_qs) << QVariant(false);
    QTest::newRow("enabled as -1") << "ENAB" << QVariant(u"-1"_qs) << QVariant(true);
    QTest::newRow("enabled, unreadable") << "ENAB" << QVariant(u"maybe"_qs) << QVariant(true);
    QTest::newRow("colour by name") << "BCOL" << QVariant(u"#aac5ff"_qs) << QVariant(QColor(170, 197, 255));
    QTest::newRow("colour unreadable") << "FCOL" << QVariant(u"teal-ish"_qs) << QVariant();
    QTest::newRow("font unreadable") << "FONT" << QVariant(42) << QVariant();
}

void TestWidgets::propertiesRead()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(QVariant, reads);

    const QVariantMap stored = ButtonProperties::fromMap({{key, value}}).toMap();
    QCOMPARE(stored.value(key), reads);
    // Every other key reads as the default.
    QVariantMap others = stored;
    QVariantMap defaults = ButtonProperties().toMap();
    others.remove(key);
    defaults.remove(key);
    QCOMPARE(others, defaults);
}

QTEST_MAIN(TestWidgets)
#include "tst_widgets.moc"
