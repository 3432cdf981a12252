// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/CallbookServer.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <QFile>
#include <QPointer>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTimer>

namespace {

// A GIF by hand (Qt writes none): LZW codes of three bits, with a clear
// code after every two pixels so the code width never grows. Frames after
// the first alternate black and blue, 100 ms apart.
QByteArray gifBytes(QSize size, int frames)
{
    QByteArray gif("GIF89a");
    auto word = [&](int v) { gif += char(v & 0xff); gif += char(v >> 8); };
    word(size.width());
    word(size.height());
    gif += QByteArray("\xF1\x00\x00", 3); // 4-colour global table
    gif += QByteArray("\x00\x00\x00\x28\x78\xC8", 6); // black, (40,120,200)
    gif += QByteArray(6, '\0');
    for (int frame = 0; frame < frames; ++frame) {
        if (frames > 1)
            gif += QByteArray("\x21\xF9\x04\x00\x0A\x00\x00\x00", 8); // 10/100 s delay
        gif += '\x2C';
        word(0);
        word(0);
        word(size.width());
        word(size.height());
        gif += '\0';
        gif += '\x02'; // minimum code size
        QByteArray data;
        quint32 bits = 0;
        int count = 0;
        auto code = [&](int c) {
            bits |= quint32(c) << count;
            count += 3;
            while (count >= 8) {
                data += char(bits & 0xff);
                bits >>= 8;
                count -= 8;
            }
        };
        const int pixels = size.width() * size.height();
        for (int i = 0; i < pixels; ++i) {
            if (i % 2 == 0)
                code(4); // clear
            code(frame % 2 ? 0 : 1);
        }
        code(5); // end
        if (count > 0)
            data += char(bits & 0xff);
        for (qsizetype at = 0; at < data.size(); at += 255) {
            const QByteArray block = data.mid(at, 255);
            gif += char(block.size());
            gif += block;
        }
        gif += '\0';
    }
    gif += '\x3B';
    return gif;
}

QByteArray tlsFile(const char *name)
{
    QFile f(QStringLiteral(MARVIK_TEST_DATA "/tls/") + QLatin1String(name));
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

void CallbookServer::trustCertificate()
{
    QSslConfiguration conf = QSslConfiguration::defaultConfiguration();
    conf.addCaCertificates(QSslCertificate::fromData(tlsFile("localhost.pem")));
    QSslConfiguration::setDefaultConfiguration(conf);
}

QByteArray CallbookServer::picture(const char *format, QSize size, int frames)
{
    if (qstrcmp(format, "gif") == 0)
        return gifBytes(size, frames);
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(40, 120, 200));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter(&buffer, format).write(image);
    return bytes;
}


CallbookServer::CallbookServer(QObject *parent, Transport transport)
    : QTcpServer(parent)
    , m_transport(transport)
{
    listen(QHostAddress::LocalHost, 0);
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = nextPendingConnection()) {
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { serve(socket); });
        }
    });
}

void CallbookServer::incomingConnection(qintptr descriptor)
{
    if (m_transport == Transport::Plain) {
        QTcpServer::incomingConnection(descriptor);
        return;
    }
    auto *socket = new QSslSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
        delete socket;
        return;
    }
    QSslConfiguration conf = QSslConfiguration::defaultConfiguration();
    conf.setLocalCertificate(QSslCertificate(tlsFile("localhost.pem")));
    conf.setPrivateKey(QSslKey(tlsFile("localhost.key"), QSsl::Rsa));
    conf.setPeerVerifyMode(QSslSocket::VerifyNone);
    socket->setSslConfiguration(conf);
    addPendingConnection(socket);
    socket->startServerEncryption();
}

QString CallbookServer::base() const
{
    return QStringLiteral("%1://127.0.0.1:%2").arg(m_transport == Transport::Tls ? u"https" : u"http").arg(serverPort());
}

marvik::lookup::SourceSettings CallbookServer::sourceSettings() const
{
    marvik::lookup::SourceSettings s;
    // The data services too: a test never reaches a callbook on the internet.
    for (const marvik::lookup::SourceInfo &info : marvik::lookup::sourceTable()) {
        s.setHost(info.source, base());
        s.setServiceHost(info.source, base());
    }
    s.setPicturesHost(base() + QStringLiteral("/pics/"));
    s.setStreetViewHost(base());
    s.setSatelliteHost(base());
    return s;
}

void CallbookServer::answer(const QString &target, const QList<Answer> &answers)
{
    m_answers.insert(target, answers);
    m_served.remove(target);
}

void CallbookServer::serve(QTcpSocket *socket)
{
    // Wait for the whole request: the head, then as many body bytes as it
    // announces (the data services' log-ins are posted forms).
    QByteArray head = socket->property("head").toByteArray() + socket->readAll();
    socket->setProperty("head", head);
    const qsizetype headEnd = head.indexOf("\r\n\r\n");
    if (headEnd < 0 || socket->property("served").toBool())
        return;
    const QList<QByteArray> lines = head.left(headEnd).split('\n');
    qsizetype length = 0;
    QByteArray cookie;
    for (const QByteArray &line : lines) {
        if (line.toLower().startsWith("cookie:"))
            cookie = line.mid(7).trimmed();
        if (line.toLower().startsWith("content-length:"))
            length = line.mid(15).trimmed().toLongLong();
    }
    if (head.size() < headEnd + 4 + length)
        return;
    socket->setProperty("served", true);
    const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
    const QString target = QString::fromLatin1(requestLine.value(1));
    m_requests.append(target);
    m_cookies.append(cookie);
    Request request;
    request.method = requestLine.value(0);
    request.target = target;
    request.path = target.section(u'?', 0, 0);
    request.query = QUrlQuery(target.section(u'?', 1));
    request.body = head.mid(headEnd + 4, length);
    m_fullRequests.append(request);

    Answer a;
    const auto it = m_answers.constFind(target);
    if (const std::optional<Answer> handled = m_handler ? m_handler(request) : std::nullopt) {
        a = *handled;
    } else if (it == m_answers.constEnd() || it->isEmpty()) {
        a.status = 404;
        a.body = "<html><body>Not Found</body></html>";
    } else {
        const int n = m_served.value(target);
        m_served[target] = n + 1;
        a = it->at(std::min<qsizetype>(n, it->size() - 1));
    }
    if (a.drop) {
        socket->abort();
        return;
    }
    QByteArray response = "HTTP/1.1 " + QByteArray::number(a.status) + (a.status < 400 ? " OK" : " Error")
        + "\r\nContent-Type: " + a.contentType + "\r\nConnection: close\r\n";
    if (!a.noLength)
        response += "Content-Length: " + QByteArray::number(a.body.size()) + "\r\n";
    for (const auto &[name, value] : a.headers)
        response += name + ": " + value + "\r\n";
    response += "\r\n";
    QPointer<QTcpSocket> guard(socket);
    connect(socket, &QTcpSocket::disconnected, this, [this, target] { emit answered(target); });
    const QByteArray body = a.body;
    const int trickleMs = a.trickleMs;
    QTimer::singleShot(a.delayMs, this, [this, guard, response, body, trickleMs] {
        if (!guard)
            return;
        if (trickleMs > 0) {
            guard->write(response);
            trickle(guard, body, trickleMs);
            return;
        }
        guard->write(response + body);
        guard->disconnectFromHost();
    });
}

void CallbookServer::trickle(QTcpSocket *socket, const QByteArray &rest, int intervalMs)
{
    if (rest.isEmpty()) {
        socket->disconnectFromHost();
        return;
    }
    socket->write(rest.left(1));
    QPointer<QTcpSocket> guard(socket);
    QTimer::singleShot(intervalMs, this, [this, guard, rest, intervalMs] {
        if (guard && guard->state() == QAbstractSocket::ConnectedState)
            trickle(guard, rest.mid(1), intervalMs);
    });
}
