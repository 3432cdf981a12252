// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog button as a user and a dialog meet it: keys, mouse, the
// property store, the shape and the looks it paints.
#include "gui/widgets/ChameleonButton.h"

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QDialog>
#include <QLineEdit>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>

using marvik::gui::ButtonLook;
using marvik::gui::ChameleonButton;

namespace {

/// Counts one kind of event reaching a widget.
class EventCounter : public QObject
{
public:
    EventCounter(QWidget *target, QEvent::Type type)
        : m_type(type)
    {
        target->installEventFilter(this);
    }
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == m_type;
        return false;
    }

private:
    QEvent::Type m_type;
};

/// A shown, active window: a text box first in the tab order, then buttons
/// captioned "Button &0", "Button &1" ...
struct Window
{
    explicit Window(int count = 1)
    {
        widget.resize(400, 120);
        edit = new QLineEdit(&widget);
        edit->setGeometry(10, 80, 100, 24);
        for (int i = 0; i < count; ++i) {
            buttons.append(new ChameleonButton(u"Button &%1"_qs.arg(i), &widget));
            buttons.last()->setGeometry(10 + 110 * i, 20, 100, 30);
        }
    }
    bool show()
    {
        widget.show();
        widget.activateWindow();
        edit->setFocus();
        if (!QTest::qWaitForWindowActive(&widget))
            return false;
        // The pointer rests on the bare window, away from every button.
        QTest::mouseMove(&widget, QPoint(390, 115));
        return true;
    }
    ChameleonButton *button(int i = 0) const { return buttons.at(i); }

    QWidget widget;
    QLineEdit *edit = nullptr;
    QList<ChameleonButton *> buttons;
};

QImage grabbed(QWidget *w)
{
    return w->grab().toImage();
}

} // namespace

class TestChameleonButton : public QObject
{
    Q_OBJECT

private slots:
    void propertyStore();
    void repaintsOnEveryProperty_data();
    void repaintsOnEveryProperty();
    void keys_data();
    void keys();
    void spacePressesAndReleaseClicks();
    void enterClicksTheDefaultButton();
    void mouse_data();
    void mouse();
    void hoverIsReportedToTheDialog();
    void shapeFollowsStyleAndSize_data();
    void shapeFollowsStyleAndSize();
    void looks_data();
    void looks();
    void stylesDifferFromEachOther();
    void accessibleAsAPushButton();
};

void TestChameleonButton::propertyStore()
{
    QWidget dialog;
    QPalette palette = dialog.palette();
    palette.setColor(QPalette::Button, QColor(10, 20, 30));
    dialog.setPalette(palette);
    dialog.setFont(QFont(u"Liberation Serif"_qs, 15));
    auto *b = new ChameleonButton(&dialog);

    QStringList names;
    const QMetaObject *meta = b->metaObject();
    for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i)
        names << QString::fromLatin1(meta->property(i).name());
    QCOMPARE(names,
        (QStringList {u"BackColor"_qs, u"ForeColor"_qs, u"ButtonType"_qs, u"Caption"_qs, u"Enabled"_qs, u"Font"_qs,
            u"ColorScheme"_qs, u"ShowFocusRect"_qs, u"hWnd"_qs}));
    QVERIFY(!meta->property(meta->propertyCount() - 1).isWritable());

    // Defaults follow the dialog, also when its theme changes later.
    QCOMPARE(b->backColor(), QColor(10, 20, 30));
    QCOMPARE(b->font().pointSize(), 15);
    palette.setColor(QPalette::Button, QColor(1, 2, 3));
    dialog.setPalette(palette);
    QCOMPARE(b->backColor(), QColor(1, 2, 3));
    const QVariantMap defaults = b->properties();

    b->setBackColor(QColor(170, 197, 255));
    b->setForeColor(QColor(0, 0, 128));
    b->setButtonType(5);
    b->setCaption(u"&Yes"_qs);
    b->setEnabled(false);
    b->setFont(QFont(u"Liberation Sans"_qs, 13));
    b->setColorScheme(3);
    b->setShowFocusRect(false);
    const QVariantMap stored = b->properties();
    auto *copy = new ChameleonButton(&dialog);
    copy->setProperties(stored);
    QCOMPARE(copy->properties(), stored);
    QCOMPARE(copy->accessKey(), QChar(u'Y'));

    // Missing keys are the defaults: back to following the dialog.
    copy->setProperties({});
    QCOMPARE(copy->properties(), defaults);
    QCOMPARE(copy->font().pointSize(), 15);
    QCOMPARE(copy->backColor(), QColor(1, 2, 3));
    copy->setButtonType(8);
    QCOMPARE(copy->buttonType(), 2);
}

void TestChameleonButton::repaintsOnEveryProperty_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("BackColor") << QVariant(QColor(Qt::red));
    QTest::newRow("ForeColor") << QVariant(QColor(Qt::red));
    QTest::newRow("ButtonType") << QVariant(4);
    QTest::newRow("Caption") << QVariant(u"&Other"_qs);
    QTest::newRow("Enabled") << QVariant(false);
    QTest::newRow("Font") << QVariant(QFont(u"Liberation Mono"_qs, 20));
    QTest::newRow("ColorScheme") << QVariant(2);
    QTest::newRow("ShowFocusRect") << QVariant(false);
}

void TestChameleonButton::repaintsOnEveryProperty()
{
    QFETCH(QVariant, value);
    Window window;
    QVERIFY(window.show());
    EventCounter paints(window.button(), QEvent::Paint);
    QTest::qWait(50);
    const int before = paints.count;
    QVERIFY(window.button()->setProperty(QTest::currentDataTag(), value));
    QTRY_VERIFY(paints.count > before);
}

void TestChameleonButton::keys_data()
{
    QTest::addColumn<int>("from"); // -1: the text box
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<int>("clicks"); // of button 1
    QTest::addColumn<int>("focus"); // -1: the text box

    const Qt::KeyboardModifiers alt(Qt::AltModifier);
    QTest::newRow("Alt+key from the text box") << -1 << true << int(Qt::Key_1) << alt << 1 << -1;
    QTest::newRow("key without Alt") << -1 << true << int(Qt::Key_1) << Qt::KeyboardModifiers() << 0 << -1;
    QTest::newRow("Alt+a letter that is no key") << -1 << true << int(Qt::Key_B) << alt << 0 << -1;
    QTest::newRow("Alt+key, disabled") << -1 << false << int(Qt::Key_1) << alt << 0 << -1;
    QTest::newRow("Right") << 1 << true << int(Qt::Key_Right) << Qt::KeyboardModifiers() << 0 << 2;
    QTest::newRow("Down") << 1 << true << int(Qt::Key_Down) << Qt::KeyboardModifiers() << 0 << 2;
    QTest::newRow("Left") << 1 << true << int(Qt::Key_Left) << Qt::KeyboardModifiers() << 0 << 0;
    QTest::newRow("Up") << 1 << true << int(Qt::Key_Up) << Qt::KeyboardModifiers() << 0 << 0;
    // As Tab does, Right from the last button wraps round to the text box.
    QTest::newRow("Right from the last") << 2 << true << int(Qt::Key_Right) << Qt::KeyboardModifiers() << 0 << -1;
}

void TestChameleonButton::keys()
{
    QFETCH(int, from);
    QFETCH(bool, enabled);
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(int, clicks);
    QFETCH(int, focus);

    Window window(3);
    window.button(1)->setEnabled(enabled);
    QVERIFY(window.show());
    QWidget *start = from < 0 ? static_cast<QWidget *>(window.edit) : window.button(from);
    start->setFocus();
    QSignalSpy clicked(window.button(1), &QAbstractButton::clicked);
    QTest::keyClick(start, Qt::Key(key), modifiers);
    // The access key clicks after a short pressed look.
    if (clicks == 0)
        QTest::qWait(200);
    QTRY_COMPARE(clicked.count(), clicks);
    QTRY_COMPARE(QApplication::focusWidget(), focus < 0 ? static_cast<QWidget *>(window.edit) : window.button(focus));
}

void TestChameleonButton::spacePressesAndReleaseClicks()
{
    Window window;
    ChameleonButton *b = window.button();
    QVERIFY(window.show());
    b->setFocus();
    QSignalSpy clicked(b, &QAbstractButton::clicked);
    QSignalSpy down(b, &ChameleonButton::mouseDown);
    QSignalSpy up(b, &ChameleonButton::mouseUp);

    QTest::keyPress(b, Qt::Key_Space);
    QCOMPARE(b->look(), ButtonLook::Pressed);
    QCOMPARE(clicked.count(), 0);
    // Space acts as a left press at (1, 1) of the button.
    QCOMPARE(down.count(), 1);
    QCOMPARE(down.at(0).at(0).value<Qt::MouseButton>(), Qt::LeftButton);
    QCOMPARE(down.at(0).at(2).toPointF(), QPointF(1, 1));
    QTest::keyRelease(b, Qt::Key_Space);
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(up.count(), 1);
    QCOMPARE(b->look(), ButtonLook::Hot);
}

void TestChameleonButton::enterClicksTheDefaultButton()
{
    QDialog dialog;
    auto *edit = new QLineEdit(&dialog);
    auto *ok = new ChameleonButton(u"&OK"_qs, &dialog);
    auto *cancel = new ChameleonButton(u"&Cancel"_qs, &dialog);
    ok->move(0, 40);
    cancel->move(100, 40);
    ok->setDefault(true);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QSignalSpy okClicked(ok, &QAbstractButton::clicked);
    QSignalSpy cancelClicked(cancel, &QAbstractButton::clicked);
    // Enter in the text box goes to the default button; on another button
    // it clicks that one, as in any dialog.
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_Return);
    QTest::keyClick(edit, Qt::Key_Enter);
    QCOMPARE(okClicked.count(), 2);
    cancel->setFocus();
    QTest::keyClick(cancel, Qt::Key_Return);
    QCOMPARE(cancelClicked.count(), 1);
    QCOMPARE(okClicked.count(), 2);
}

void TestChameleonButton::mouse_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<Qt::MouseButton>("mouseButton");
    QTest::addColumn<QPoint>("press");
    QTest::addColumn<QPoint>("release");
    QTest::addColumn<bool>("showsPressed");
    QTest::addColumn<int>("clicks");

    QTest::newRow("inside") << 2 << Qt::LeftButton << QPoint(50, 15) << QPoint(60, 20) << true << 1;
    QTest::newRow("released outside") << 2 << Qt::LeftButton << QPoint(50, 15) << QPoint(150, 15) << true << 0;
    QTest::newRow("right button") << 2 << Qt::RightButton << QPoint(50, 15) << QPoint(50, 15) << false << 0;
    QTest::newRow("classic corner") << 1 << Qt::LeftButton << QPoint(1, 1) << QPoint(1, 1) << true << 1;
    QTest::newRow("pill corner") << 4 << Qt::LeftButton << QPoint(1, 1) << QPoint(1, 1) << false << 0;
    QTest::newRow("chiselled corner") << 6 << Qt::LeftButton << QPoint(98, 28) << QPoint(98, 28) << false << 0;
}

void TestChameleonButton::mouse()
{
    QFETCH(int, type);
    QFETCH(Qt::MouseButton, mouseButton);
    QFETCH(QPoint, press);
    QFETCH(QPoint, release);
    QFETCH(bool, showsPressed);
    QFETCH(int, clicks);

    Window window;
    ChameleonButton *b = window.button();
    b->setButtonType(type);
    QVERIFY(window.show());
    QSignalSpy clicked(b, &QAbstractButton::clicked);
    QSignalSpy down(b, &ChameleonButton::mouseDown);
    QSignalSpy up(b, &ChameleonButton::mouseUp);

    QTest::mousePress(b, mouseButton, {}, press);
    QCOMPARE(b->look() == ButtonLook::Pressed, showsPressed);
    QTest::mouseRelease(b, mouseButton, {}, release);
    QCOMPARE(clicked.count(), clicks);
    QVERIFY(!b->isDown());
    // Every press and release is reported, whatever it does to the button.
    QCOMPARE(down.count(), 1);
    QCOMPARE(down.at(0).at(0).value<Qt::MouseButton>(), mouseButton);
    QCOMPARE(down.at(0).at(2).toPointF(), QPointF(press));
    QCOMPARE(up.count(), 1);
    QCOMPARE(up.at(0).at(2).toPointF(), QPointF(release));
}

void TestChameleonButton::hoverIsReportedToTheDialog()
{
    // A dialog tints the button under the mouse and untints it when the
    // mouse moves over the dialog itself: moves over the button must reach
    // the button's report and not the dialog.
    Window window;
    window.widget.setMouseTracking(true);
    ChameleonButton *b = window.button();
    QVERIFY(window.show());
    EventCounter dialogMoves(&window.widget, QEvent::MouseMove);
    QSignalSpy moved(b, &ChameleonButton::mouseMoved);

    QTest::mouseMove(b, QPoint(50, 15));
    QTRY_VERIFY(!moved.isEmpty());
    QCOMPARE(moved.last().at(0).value<Qt::MouseButtons>(), Qt::MouseButtons());
    QCOMPARE(moved.last().at(2).toPointF(), QPointF(50, 15));
    QCOMPARE(b->look(), ButtonLook::Hot);
    QCOMPARE(dialogMoves.count, 0);

    QTest::mouseMove(&window.widget, QPoint(300, 100));
    QTRY_VERIFY(dialogMoves.count > 0);
    QCOMPARE(b->look(), ButtonLook::Normal);
}

void TestChameleonButton::shapeFollowsStyleAndSize_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("shaped");
    const bool shaped[] = {false, true, false, true, true, true, true};
    for (int type = 1; type <= 7; ++type)
        QTest::addRow("type %d", type) << type << shaped[type - 1];
}

void TestChameleonButton::shapeFollowsStyleAndSize()
{
    QFETCH(int, type);
    QFETCH(bool, shaped);
    Window window; // shown, so that a resize reaches the button at once
    ChameleonButton *b = window.button();
    QVERIFY(window.show());
    b->setButtonType(type);
    QCOMPARE(!b->mask().isEmpty(), shaped);
    for (const QSize size : {QSize(100, 30), QSize(220, 64)}) {
        b->resize(size);
        if (!shaped)
            continue;
        const QRegion mask = b->mask();
        QCOMPARE(mask.boundingRect(), QRect(QPoint(0, 0), size));
        const int right = size.width() - 1;
        const int bottom = size.height() - 1;
        for (const QPoint corner : {QPoint(0, 0), QPoint(right, 0), QPoint(0, bottom), QPoint(right, bottom)})
            QVERIFY2(!mask.contains(corner), qPrintable(u"%1,%2"_qs.arg(corner.x()).arg(corner.y())));
        QVERIFY(mask.contains(QPoint(size.width() / 2, 0)) && mask.contains(QPoint(0, size.height() / 2)));
    }
    // A change of style reshapes at once, without waiting for a resize.
    b->setButtonType(shaped ? 1 : 4);
    QCOMPARE(b->mask().isEmpty(), shaped);
}

void TestChameleonButton::looks_data()
{
    QTest::addColumn<int>("type");
    for (int type = 1; type <= 7; ++type)
        QTest::addRow("type %d", type) << type;
}

void TestChameleonButton::looks()
{
    QFETCH(int, type);
    Window window;
    ChameleonButton *b = window.button();
    b->setButtonType(type);
    b->setBackColor(QColor(200, 200, 200));
    b->setForeColor(QColor(220, 0, 0));
    b->setShowFocusRect(false);
    QVERIFY(window.show());

    QCOMPARE(b->look(), ButtonLook::Normal);
    const QImage normal = grabbed(b);
    b->setFocus();
    QTRY_COMPARE(b->look(), ButtonLook::Hot);
    const QImage hot = grabbed(b);
    b->setShowFocusRect(true);
    const QImage focusRect = grabbed(b);
    b->setDown(true);
    const QImage pressed = grabbed(b);
    b->setDown(false);
    window.edit->setFocus();
    b->setEnabled(false);
    const QImage disabled = grabbed(b);
    QVERIFY(normal != hot && hot != pressed && normal != pressed);
    QVERIFY(focusRect != hot);
    QVERIFY(disabled != normal);

    // The caption is there, in ForeColor.
    int captionPixels = 0;
    for (int y = 0; y < normal.height(); ++y) {
        for (int x = 0; x < normal.width(); ++x) {
            const QColor c = normal.pixelColor(x, y);
            captionPixels += c.red() > 150 && c.green() < 80 && c.blue() < 80;
        }
    }
    QVERIFY2(captionPixels > 10, qPrintable(QString::number(captionPixels)));

    // The palette scheme draws from the palette, whatever BackColor says.
    b->setEnabled(true);
    b->setColorScheme(2);
    b->setBackColor(Qt::red);
    const QImage paletteRed = grabbed(b);
    b->setBackColor(Qt::blue);
    QCOMPARE(grabbed(b), paletteRed);
    b->setColorScheme(1);
    QVERIFY(grabbed(b) != paletteRed);
}

void TestChameleonButton::stylesDifferFromEachOther()
{
    ChameleonButton b(u"&Same"_qs);
    b.resize(100, 30);
    QList<QImage> faces;
    for (int type = 1; type <= 7; ++type) {
        b.setButtonType(type);
        faces.append(grabbed(&b));
        for (int other = 1; other < type; ++other)
            QVERIFY2(faces.last() != faces[other - 1], qPrintable(u"types %1 and %2"_qs.arg(other).arg(type)));
    }
}

void TestChameleonButton::accessibleAsAPushButton()
{
    Window window;
    ChameleonButton *b = window.button();
    b->setCaption(u"Fish && &Chips"_qs);
    QVERIFY(window.show());
    QAccessibleInterface *face = QAccessible::queryAccessibleInterface(b);
    QVERIFY(face && face->actionInterface());
    QCOMPARE(face->role(), QAccessible::Button);
    QCOMPARE(face->text(QAccessible::Name), u"Fish & Chips"_qs);
    QCOMPARE(face->actionInterface()->keyBindingsForAction(QAccessibleActionInterface::pressAction()),
        QStringList {QKeySequence(Qt::ALT | Qt::Key_C).toString()});
}

QTEST_MAIN(TestChameleonButton)
#include "tst_chameleonbutton.moc"
