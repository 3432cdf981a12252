// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSize>
#include <QStringList>
#include <QTcpServer>
#include <QUrlQuery>

#include "core/lookup/SourceSettings.h"

#include <functional>
#include <optional>

/// A small HTTP/1.1 server on 127.0.0.1 that plays the callbooks and the
/// picture host for the tests: fixed answers per request target, answered
/// in order when a target has several, with delays, dropped connections,
/// missing lengths and trickling bodies on demand; over TLS when asked
/// (a self-signed certificate for 127.0.0.1 that trustCertificate() makes
/// this process accept).
class CallbookServer : public QTcpServer
{
    Q_OBJECT

public:
    struct Answer
    {
        QByteArray body;
        QByteArray contentType = "text/html";
        int status = 200;
        int delayMs = 0;
        bool drop = false;     ///< close the connection without answering
        bool noLength = false; ///< no Content-Length: the body ends with the connection
        int trickleMs = 0;     ///< send the body a byte at a time, this far apart
        QList<QPair<QByteArray, QByteArray>> headers;
    };

    /// A request as it arrived.
    struct Request
    {
        QByteArray method;
        QString target; ///< path and query, as sent
        QString path;
        QUrlQuery query;
        QByteArray body;
    };
    /// Decides the answer to a request; nothing: the fixed answers decide.
    using Handler = std::function<std::optional<Answer>(const Request &)>;


    enum class Transport { Plain, Tls };

    explicit CallbookServer(QObject *parent = nullptr, Transport transport = Transport::Plain);

    /// Makes this process's network requests accept the TLS server's
    /// certificate.
    static void trustCertificate();

    /// The file bytes of a plain blue picture in `format` ("jpeg", "png",
    /// "bmp", "gif"); a GIF of several `frames` is animated.
    static QByteArray picture(const char *format, QSize size = QSize(200, 100), int frames = 1);

    /// http://127.0.0.1:<port> (https with TLS)
    QString base() const;
    /// Every callbook, the picture host ("/pics/") and both map views on this server.
    marvik::lookup::SourceSettings sourceSettings() const;
    /// Answers for a request target ("/db/W1AW"); one after the other, the
    /// last one repeated.
    void answer(const QString &target, const QList<Answer> &answers);
    void answer(const QString &target, const Answer &a) { answer(target, QList<Answer>{a}); }

    /// Consulted before the fixed answers, for servers that keep state
    /// (sessions, counters).
    void setHandler(Handler handler) { m_handler = std::move(handler); }

    /// Every request in full, in the order they arrived.
    QList<Request> fullRequests() const { return m_fullRequests; }
    /// Request targets in the order they arrived.
    QStringList requests() const { return m_requests; }
    /// The Cookie header of each request, in the same order.
    QList<QByteArray> cookies() const { return m_cookies; }
    int hits(const QString &target) const { return int(m_requests.count(target)); }

signals:
    /// The whole answer for `target` has gone out.
    void answered(const QString &target);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    void serve(QTcpSocket *socket);
    void trickle(QTcpSocket *socket, const QByteArray &rest, int intervalMs);

    Transport m_transport;

    Handler m_handler;
    QList<Request> m_fullRequests;
    QHash<QString, QList<Answer>> m_answers;
    QHash<QString, int> m_served;
    QStringList m_requests;
    QList<QByteArray> m_cookies;
};
