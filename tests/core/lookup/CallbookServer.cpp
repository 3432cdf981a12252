// SPDX-License-Identifier: GPL-3.0-or-later
#include "CallbookServer.h"

#include <QPointer>
#include <QTcpSocket>
#include <QTimer>

CallbookServer::CallbookServer(QObject *parent)
    : QTcpServer(parent)
{
    listen(QHostAddress::LocalHost, 0);
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = nextPendingConnection()) {
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { serve(socket); });
        }
    });
}

QString CallbookServer::base() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(serverPort());
}

void CallbookServer::answer(const QString &target, const QList<Answer> &answers)
{
    m_answers.insert(target, answers);
    m_served.remove(target);
}

void CallbookServer::serve(QTcpSocket *socket)
{
    // Wait for the whole request head; the tests only send GETs.
    QByteArray head = socket->property("head").toByteArray() + socket->readAll();
    socket->setProperty("head", head);
    if (!head.contains("\r\n\r\n"))
        return;
    const QList<QByteArray> lines = head.left(head.indexOf("\r\n\r\n")).split('\n');
    const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
    const QString target = QString::fromLatin1(requestLine.value(1));
    QByteArray cookie;
    for (const QByteArray &line : lines) {
        if (line.toLower().startsWith("cookie:"))
            cookie = line.mid(7).trimmed();
    }
    m_requests.append(target);
    m_cookies.append(cookie);

    Answer a;
    const auto it = m_answers.constFind(target);
    if (it == m_answers.constEnd() || it->isEmpty()) {
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
    response += "\r\n" + a.body;
    QPointer<QTcpSocket> guard(socket);
    QTimer::singleShot(a.delayMs, this, [guard, response] {
        if (!guard)
            return;
        guard->write(response);
        guard->disconnectFromHost();
    });
}
