// SPDX-License-Identifier: GPL-3.0-or-later
// A stand-in for EasyPal's main window, for the tests that drive it. It is
// an ordinary managed top-level window, as a Wine program's is, and writes
// what happens to it to a log file, one line at a time:
//   window <id>             its X window, once shown
//   state normal|minimised  each change of its window state
//   active                  each time it becomes the active window
//   key <name>              each key it receives
//   clipboard <base64>      the clipboard text (UTF-8) when F7 arrives
//   formats <types>         the clipboard's types then, blank-separated
//   bmp <w>x<h>             the size of its image/bmp picture, when it offers one
//   centre <x> <y>          where it is on the screen when F7 arrives
// Usage: fake_easypal --log FILE [--title TITLE] [--minimise] [--colour NAME]
#include <QApplication>
#include <QClipboard>
#include <QCommandLineParser>
#include <QEvent>
#include <QFile>
#include <QImage>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMimeData>
#include <QPainter>
#include <QTimer>
#include <QWidget>

namespace {

class FakeEasyPal : public QWidget
{
public:
    FakeEasyPal(const QString &logPath, const QColor &colour)
        : m_log(logPath)
        , m_colour(colour)
    {
        if (!m_log.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
            qFatal("cannot write the log %s", qPrintable(logPath));
    }

    void log(const QByteArray &line) { m_log.write(line + '\n'); }

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), m_colour); }

    void changeEvent(QEvent *event) override
    {
        if (event->type() == QEvent::WindowStateChange)
            log(isMinimized() ? "state minimised" : "state normal");
        else if (event->type() == QEvent::ActivationChange && isActiveWindow())
            log("active");
        QWidget::changeEvent(event);
    }

    void keyPressEvent(QKeyEvent *event) override
    {
        log("key " + QKeySequence(event->key()).toString().toUtf8());
        if (event->key() == Qt::Key_F7) {
            // EasyPal takes the clipboard into its transmit window on F7.
            const QMimeData *mime = QApplication::clipboard()->mimeData();
            log("clipboard " + QApplication::clipboard()->text().toUtf8().toBase64());
            log("formats " + (mime ? mime->formats().join(u' ').toUtf8() : QByteArray()));
            // A picture reaches a Windows program under Wine as image/bmp.
            if (mime && mime->hasFormat(QStringLiteral("image/bmp"))) {
                const QImage bmp = QImage::fromData(mime->data(QStringLiteral("image/bmp")), "BMP");
                log("bmp " + QByteArray::number(bmp.width()) + 'x' + QByteArray::number(bmp.height()));
            }
            const QPoint centre = mapToGlobal(rect().center());
            log("centre " + QByteArray::number(centre.x()) + ' ' + QByteArray::number(centre.y()));
        }
    }

private:
    QFile m_log;
    QColor m_colour;
};

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption logOption(QStringLiteral("log"), QStringLiteral("log file"), QStringLiteral("FILE"));
    const QCommandLineOption titleOption(
        QStringLiteral("title"), QStringLiteral("window title"), QStringLiteral("TITLE"), QStringLiteral("EasyPal"));
    const QCommandLineOption minimiseOption(QStringLiteral("minimise"), QStringLiteral("minimise once shown"));
    const QCommandLineOption colourOption(
        QStringLiteral("colour"), QStringLiteral("fill colour"), QStringLiteral("NAME"), QStringLiteral("magenta"));
    parser.addOptions({logOption, titleOption, minimiseOption, colourOption});
    parser.process(app);
    if (!parser.isSet(logOption))
        qFatal("fake_easypal needs --log FILE");

    FakeEasyPal window(parser.value(logOption), QColor::fromString(parser.value(colourOption)));
    window.setWindowTitle(parser.value(titleOption));
    window.resize(320, 240);
    window.show();
    window.log("window " + QByteArray::number(window.winId()));
    if (parser.isSet(minimiseOption)) {
        // Once the window manager has put the window up, as a user would.
        QTimer::singleShot(300, &window, [&window] { window.showMinimized(); });
    }
    return app.exec();
}
