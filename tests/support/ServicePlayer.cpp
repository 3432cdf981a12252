// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ServicePlayer.h"

#include <QFile>
#include <QRegularExpression>

using marvik::lookup::Source;
using Answer = CallbookServer::Answer;

namespace {

struct Shape
{
    const char *prefix;  ///< sample file names begin with it
    QByteArray sampleKey; ///< the key written in the samples
    const char *keyParam; ///< the lookup's session parameter
    const char *userParam;
    const char *passwordParam;
};

Shape shapeOf(Source service)
{
    switch (service) {
    case Source::Qrz: return {"qrz", "2331uf894c4bd29f3923f3bacf02c532d7bd9", "s", "username", "password"};
    case Source::QrzCq: return {"qrzcq", "c2a8f73e61d94b0f9f3e0d1b2a7c6e55", "s", "username", "password"};
    case Source::HamQth: return {"hamqth", "09b0ae90050be03c452ad235a1f2915ad684393c", "id", "u", "p"};
    default: return {"callook", {}, "", "", ""};
    }
}

Answer xml(const QByteArray &body)
{
    Answer a;
    a.body = body;
    a.contentType = "text/xml; charset=utf-8";
    return a;
}

} // namespace

ServicePlayer::ServicePlayer(CallbookServer &server)
    : m_server(server)
{
    server.setHandler([this](const CallbookServer::Request &request) { return serve(request); });
}

QByteArray ServicePlayer::sample(const QString &file)
{
    QFile f(QStringLiteral(MARVIK_TEST_DATA "/services/") + file);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

marvik::lookup::SourceSettings ServicePlayer::settings() const
{
    marvik::lookup::SourceSettings s = m_server.sourceSettings();
    for (const marvik::lookup::SourceInfo &info : marvik::lookup::sourceTable())
        s.setServiceHost(info.source, m_server.base());
    return s;
}

void ServicePlayer::setAccount(Source service, const QString &user, const QString &password)
{
    m_accounts.insert(int(service), {user, password});
}

std::optional<Answer> ServicePlayer::serve(const CallbookServer::Request &request)
{
    Source service = Source::Callook;
    QString call;
    static const QRegularExpression callookPath(QStringLiteral("^/([^/]+)/json$"));
    const QRegularExpressionMatch callook = callookPath.match(request.path);
    if (request.path == u"/xml/current/")
        service = Source::Qrz;
    else if (request.path == u"/xml")
        service = Source::QrzCq;
    else if (request.path == u"/xml.php")
        service = Source::HamQth;
    else if (callook.hasMatch()) {
        service = Source::Callook;
        call = callook.captured(1).toUpper();
    } else {
        return std::nullopt;
    }

    const Mode mode = m_modes.value(int(service), Mode::Normal);
    Answer a;
    switch (mode) {
    case Mode::Down: a.drop = true; return a;
    case Mode::Silent: a.delayMs = 10 * 60 * 1000; return a;
    case Mode::Oversized: return xml(QByteArray(3 * 1024 * 1024, 'x'));
    default: break;
    }

    const Shape shape = shapeOf(service);
    const QString prefix = QString::fromLatin1(shape.prefix);
    if (service == Source::Callook) {
        ++m_lookups[int(service)];
        if (mode == Mode::Malformed)
            return xml(sample(u"callook_w1aw.json"_qs).left(200));
        if (mode == Mode::Updating)
            return xml(sample(u"callook_updating.json"_qs));
        return xml(sample(call == u"W1AW" ? u"callook_w1aw.json"_qs : u"callook_invalid.json"_qs));
    }

    if (request.method == "POST") {
        ++m_logins[int(service)];
        const QUrlQuery form(QString::fromUtf8(request.body));
        const auto account = m_accounts.value(int(service));
        if (account.first.isEmpty()
            || form.queryItemValue(QString::fromLatin1(shape.userParam), QUrl::FullyDecoded) != account.first
            || form.queryItemValue(QString::fromLatin1(shape.passwordParam), QUrl::FullyDecoded) != account.second)
            return xml(sample(prefix + u"_badlogin.xml"));
        m_keys[int(service)] = "KEY" + QByteArray::number(++m_keyNumber);
        return xml(sample(prefix + u"_login.xml").replace(shape.sampleKey, m_keys[int(service)]));
    }

    ++m_lookups[int(service)];
    const QByteArray key = m_keys.value(int(service));
    call = request.query.queryItemValue(u"callsign"_qs, QUrl::FullyDecoded).toUpper();
    const QByteArray given = request.query.queryItemValue(QString::fromLatin1(shape.keyParam)).toUtf8();
    if (mode == Mode::ForgetsSessions || key.isEmpty() || given != key) {
        const QString expired = service == Source::Qrz ? u"qrz_timeout.xml"_qs : prefix + u"_expired.xml";
        return xml(sample(expired));
    }
    QByteArray body;
    if (mode == Mode::QuotaUsedUp && service == Source::Qrz)
        body = sample(u"qrz_quota.xml"_qs);
    else if (call != u"W1AW")
        body = sample(prefix + u"_notfound.xml").replace("W9XYZ", call.toUtf8());
    else if (mode == Mode::NonSubscriber && service == Source::Qrz)
        body = sample(u"qrz_nonsubscriber.xml"_qs);
    else
        body = sample(prefix + u"_w1aw.xml");
    body.replace(shape.sampleKey, key);
    // The samples name pictures on the services' own hosts, which a test
    // never reaches: the player hands out addresses on its own server.
    static const QRegularExpression pictureHost(QStringLiteral("(<(?:picture|image)>)https?://[^/<]+/"));
    body = QString::fromUtf8(body).replace(pictureHost, u"\\1"_qs + m_server.base() + u'/').toUtf8();
    if (mode == Mode::Malformed)
        body.truncate(body.size() / 2);
    return xml(body);
}
