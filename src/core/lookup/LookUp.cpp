// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/LookUp.h"

#include "core/app/Callsign.h"
#include "core/lookup/HtmlText.h"
#include "core/lookup/NamedDownloads.h"
#include "core/app/Log.h"

#include <QUrl>

namespace marvik::lookup {

namespace {

} // namespace

LookUp::LookUp(QNetworkAccessManager *network, const SourceSettings &settings, const QString &ownCallsign,
               QObject *parent)
    : QObject(parent)
    , m_downloads(new NamedDownloads(network, this))
    , m_settings(settings)
    , m_ownCallsign(ownCallsign)
{
    m_reader.setQrzCqDomain(settings.domain(Source::QrzCq));
    connect(m_downloads, &NamedDownloads::finished, this, &LookUp::onFinished);
    connect(m_downloads, &NamedDownloads::failed, this, &LookUp::requestFailed);
}

LookUp::~LookUp() = default;

void LookUp::setDataBase(int dataBase)
{
    m_dataBase = dataBase;
    m_reader.setDataBase(dataBase);
}

void LookUp::setSettings(const SourceSettings &settings)
{
    m_settings = settings;
    m_reader.setQrzCqDomain(settings.domain(Source::QrzCq));
}

void LookUp::setTransferTimeout(int milliseconds)
{
    m_downloads->setTransferTimeout(milliseconds);
}

QStringList LookUp::pendingRequests() const
{
    return m_downloads->pendingNames();
}

void LookUp::request(const QString &name, const QString &address, qint64 sizeLimit)
{
    const QUrl url(address, QUrl::TolerantMode);
    if (!url.isValid() || (url.scheme() != u"http" && url.scheme() != u"https")) {
        qCWarning(lcLookup) << "not a web address, nothing requested:" << address;
        return;
    }
    m_downloads->start(name, url, sizeLimit);
}

QString LookUp::callPageAddress(Source source, const QString &callSign) const
{
    // Whatever the user typed, the call stays one path segment or query
    // value: "/", "?", "#" and blanks are percent-encoded.
    return m_settings.host(source) + sourceInfo(source).callPagePath + callsign::forAddress(callsign::plainZero(callSign));
}

void LookUp::GetSite()
{
    m_reader.setText({});
    const std::optional<Source> source = onlineSourceFromDataBase(m_dataBase);
    if (!source)
        return;
    request(requestLabel(m_settings, *source) + u'1', m_settings.host(*source) + sourceInfo(*source).sitePath,
            kPageSizeLimit);
}

void LookUp::GetPage(const QString &callSign)
{
    m_reader.setText({});
    m_callSign = callSign.chopped(callSign.isEmpty() ? 0 : 1).toUpper();
    const std::optional<Source> source = onlineSourceFromDataBase(m_dataBase);
    if (!source)
        return;
    request(callSign, callPageAddress(*source, m_callSign), kPageSizeLimit);
}

void LookUp::GetLatLon(const QString &callSign)
{
    setDataBase(dataBaseOf(m_currentSource));
    const std::optional<Source> source = onlineSourceFromDataBase(m_dataBase);
    if (!source)
        return;
    const QString call = callSign.chopped(callSign.isEmpty() ? 0 : 1).toUpper();
    request(QStringLiteral("LatLon4"), callPageAddress(*source, call), kPageSizeLimit);
}

void LookUp::GetPicture(const QString &url, const QString &name)
{
    request(name, url, kPictureSizeLimit);
}

void LookUp::CheckUpdates()
{
    if (m_settings.updatesUrl().isEmpty())
        return;
    request(QStringLiteral("Updates3"), m_settings.updatesUrl(), kPageSizeLimit);
}

bool LookUp::loggedIn() const
{
    const QString &text = m_reader.text();
    switch (onlineSourceFromDataBase(m_dataBase).value_or(Source::QrzCd)) {
    case Source::EHam: return pagetext::find(text, u"Log Out", 1) > 0;
    // An empty own callsign is "found" at once, as the Windows program's
    // search found an empty text.
    case Source::Qrz: return pagetext::find(text, m_ownCallsign, 1) > 0;
    // QRZCQ and HamCall were tested against an empty text and so never
    // report a log-in; Callook needs none. Kept as the program behaved.
    case Source::QrzCq: return pagetext::find(QString(), u"logout", 1) > 0;
    case Source::HamCall: return pagetext::find(QString(), u"Log Out", 1) > 0;
    default: return false;
    }
}

void LookUp::onFinished(const QString &name, const QByteArray &bytes, const QByteArray &contentType)
{
    m_bytes = bytes;
    if (name.isEmpty())
        return;
    const QChar kind = name.back();
    const QString subject = name.chopped(1);
    try {
        if (kind == u'1' || kind == u'2') {
            m_reader.setText(htmlDecode(decodePage(bytes, contentType)));
            if (pagetext::find(m_reader.text(), subject, 1) > 0) {
                const bool in = loggedIn();
                if (kind == u'1')
                    emit GotSite(subject, in);
                else
                    emit GotPage(subject, in);
            } else if (kind == u'1') {
                emit SiteNotFound(subject);
            } else {
                emit PageNotFound(subject);
            }
        } else if (kind == u'3') {
            m_reader.setText(htmlDecode(decodePage(bytes, contentType)));
            emit UpdateFound(m_reader.text());
        } else if (kind == u'4') {
            m_reader.setText(htmlDecode(decodePage(bytes, contentType)));
            m_lastLatitude = m_reader.latitude();
            m_lastLongitude = m_reader.longitude();
            if (m_lastLatitude != 0)
                emit LatLon(m_lastLatitude, m_lastLongitude);
        } else if (kind == u'5') {
            emit PictureReady(subject);
        }
    } catch (const ReaderError &error) {
        // The completion handler swallows reader failures: no event, no message.
        qCDebug(lcLookup) << "reading" << name << "failed:" << error.what();
    }
}

QString LookUp::cName(const QString &callSign)
{
    ReaderEvent &event = m_lastNameEvent;
    event = ReaderEvent::None;
    QString name;
    try {
        name = m_reader.name(callSign, event);
    } catch (const ReaderError &) {
        // The event was raised before the failing cut: report it, then let
        // the caller's error handling have the failure.
        if (event == ReaderEvent::CallNotFound)
            emit CallNotFound(callSign);
        throw;
    }
    if (event == ReaderEvent::CallNotFound)
        emit CallNotFound(callSign);
    else if (event == ReaderEvent::LoginRequired)
        emit LoginRequired(callSign);
    return name;
}

QString LookUp::Add1() { return m_reader.address1(); }
QString LookUp::Add2() { return m_reader.address2(); }
QString LookUp::Ctry() { return m_reader.country(); }
double LookUp::Latitude() { return m_reader.latitude(); }
double LookUp::Longitude() { return m_reader.longitude(); }
QString LookUp::Class() { return m_reader.licenceClass(); }
QString LookUp::PrevCall() { return m_reader.previousCall(); }
QString LookUp::DateOfBirth() { return m_reader.dateOfBirth(); }
QString LookUp::WebAddress() { return m_reader.gridSquare(); }
QString LookUp::WebPage() { return m_reader.webPage(); }

} // namespace marvik::lookup
