// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/LookUp.h"

#include "core/app/Callsign.h"
#include "core/lookup/NamedDownloads.h"
#include "core/lookup/PageDecoder.h"
#include "core/app/Log.h"

#include <QUrl>

namespace marvik::lookup {

namespace {

/// Kinds whose bytes are a page to be read: site, call page, update check,
/// position.
bool isPageKind(QChar kind)
{
    return kind == u'1' || kind == u'2' || kind == u'3' || kind == u'4';
}

} // namespace

LookUp::LookUp(QNetworkAccessManager *network, const SourceSettings &settings, const QString &ownCallsign,
               QObject *parent)
    : QObject(parent)
    , m_downloads(new NamedDownloads(network, this))
    , m_decoder(new PageDecoder(this))
    , m_pageDeadline(kDefaultPageDeadlineMs)
    , m_pictureDeadline(kDefaultPictureDeadlineMs)
    , m_settings(settings)
    , m_ownCallsign(ownCallsign)
{
    m_reader.setQrzCqDomain(settings.domain(Source::QrzCq));
    connect(m_downloads, &NamedDownloads::finished, this, &LookUp::onDownloaded);
    connect(m_downloads, &NamedDownloads::failed, this, &LookUp::onDownloadFailed);
    connect(m_decoder, &PageDecoder::decoded, this, [this](quint64 job, const QString &text) { onPageRead(job, text, {}); });
    connect(m_decoder, &PageDecoder::failed, this, [this](quint64 job, const QString &reason) { onPageRead(job, {}, reason); });
}

LookUp::~LookUp()
{
    // Before the members the handlers use: neither reports anything on the
    // way out, and the decoder waits for its threads.
    delete m_downloads;
    delete m_decoder;
}

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

void LookUp::setDeadlines(int pageMs, int pictureMs)
{
    m_pageDeadline = pageMs;
    m_pictureDeadline = pictureMs;
}

void LookUp::setDecodeDeadline(int milliseconds)
{
    m_decoder->setDeadline(milliseconds);
}

QStringList LookUp::pendingRequests() const
{
    return m_pending;
}

void LookUp::request(const QString &name, const QString &address, qint64 sizeLimit, int deadlineMs)
{
    const QUrl url(address, QUrl::TolerantMode);
    if (!url.isValid() || (url.scheme() != u"http" && url.scheme() != u"https")) {
        qCWarning(lcLookup) << "not a web address, nothing requested:" << address;
        return;
    }
    // Only the newest answer for a name arrives: an earlier one still being
    // read, or waiting for its turn, goes unseen.
    for (qsizetype i = m_arrivals.size(); i-- > 0;) {
        if (m_arrivals.at(i).name == name) {
            m_decoder->cancel(m_arrivals.at(i).job);
            m_arrivals.removeAt(i);
        }
    }
    m_downloads->start(name, url, sizeLimit, QNetworkRequest::AlwaysNetwork, deadlineMs);
    if (!m_pending.contains(name))
        m_pending.append(name);
    // Arrivals behind a dropped one may have their turn now, though not
    // before this call returns: events never come from inside a request.
    QMetaObject::invokeMethod(this, &LookUp::deliver, Qt::QueuedConnection);
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
            kPageSizeLimit, m_pageDeadline);
}

void LookUp::GetPage(const QString &callSign)
{
    m_reader.setText({});
    m_callSign = callSign.chopped(callSign.isEmpty() ? 0 : 1).toUpper();
    const std::optional<Source> source = onlineSourceFromDataBase(m_dataBase);
    if (!source)
        return;
    request(callSign, callPageAddress(*source, m_callSign), kPageSizeLimit, m_pageDeadline);
}

void LookUp::GetLatLon(const QString &callSign)
{
    setDataBase(dataBaseOf(m_currentSource));
    const std::optional<Source> source = onlineSourceFromDataBase(m_dataBase);
    if (!source)
        return;
    const QString call = callSign.chopped(callSign.isEmpty() ? 0 : 1).toUpper();
    request(QStringLiteral("LatLon4"), callPageAddress(*source, call), kPageSizeLimit, m_pageDeadline);
}

void LookUp::GetPicture(const QString &url, const QString &name)
{
    request(name, url, kPictureSizeLimit, m_pictureDeadline);
}

void LookUp::CheckUpdates()
{
    if (m_settings.updatesUrl().isEmpty())
        return;
    request(QStringLiteral("Updates3"), m_settings.updatesUrl(), kPageSizeLimit, m_pageDeadline);
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

void LookUp::onDownloaded(const QString &name, const QByteArray &bytes, const QByteArray &contentType)
{
    Arrival arrival;
    arrival.name = name;
    arrival.completed = true;
    arrival.bytes = bytes;
    if (!name.isEmpty() && isPageKind(name.back()))
        arrival.job = m_decoder->decode(bytes, contentType);
    else
        arrival.ready = true;
    m_arrivals.append(arrival);
    deliver();
}

void LookUp::onDownloadFailed(const QString &name, const QString &reason)
{
    Arrival arrival;
    arrival.name = name;
    arrival.ready = true;
    arrival.failure = reason;
    m_arrivals.append(arrival);
    deliver();
}

void LookUp::onPageRead(quint64 job, const QString &text, const QString &failure)
{
    for (Arrival &arrival : m_arrivals) {
        if (arrival.job == job) {
            arrival.ready = true;
            arrival.text = text;
            arrival.failure = failure;
            break;
        }
    }
    deliver();
}

void LookUp::deliver()
{
    // Taken off the list before its events, so a handler may request the
    // same name again, or the next arrivals may go out from a nested event
    // loop, without upsetting the order.
    while (!m_arrivals.isEmpty() && m_arrivals.first().ready)
        raise(m_arrivals.takeFirst());
}

void LookUp::raise(const Arrival &arrival)
{
    const QString &name = arrival.name;
    m_pending.removeOne(name);
    if (arrival.completed)
        m_bytes = arrival.bytes;
    if (!arrival.failure.isEmpty()) {
        emit requestFailed(name, arrival.failure);
        return;
    }
    if (name.isEmpty())
        return;
    const QChar kind = name.back();
    const QString subject = name.chopped(1);
    try {
        if (kind == u'1' || kind == u'2') {
            m_reader.setText(arrival.text);
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
            m_reader.setText(arrival.text);
            emit UpdateFound(m_reader.text());
        } else if (kind == u'4') {
            m_reader.setText(arrival.text);
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
