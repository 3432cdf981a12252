// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/PageReader.h"
#include "core/lookup/SourceSettings.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

class QNetworkAccessManager;

namespace marvik::lookup {

class NamedDownloads;
class PageDecoder;

/// The lookup control: starts named page requests to the online callbooks,
/// keeps the decoded text of the last page, tells its host by signals what
/// arrived, and reads the lookup result out of that text on request.
///
/// Request names end in their kind: "1" site and log-in state, "2" call page,
/// "3" update check, "4" position only, "5" picture. A request made again
/// under a pending name cancels the earlier one. A failed download raises none
/// of the twelve events (the host guards each lookup with its own timer);
/// requestFailed() tells it why, for hosts that want to know sooner.
///
/// Pages are turned into text on a thread of their own, so the host's
/// event loop runs on while a large page is read; the events still come on
/// this object's thread, one request at a time in the order the downloads
/// ended. A page not read within the decode deadline ends as requestFailed()
/// ("page too complex ..."). A request made again under its name while its
/// page is being read drops that page unseen.
class LookUp : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int data_base READ dataBase WRITE setDataBase)

public:
    LookUp(QNetworkAccessManager *network, const SourceSettings &settings, const QString &ownCallsign,
           QObject *parent = nullptr);
    ~LookUp() override;

    /// The source of every request and reader: 1 eHam, 2 QRZ, 3 QRZCQ,
    /// 4 Callook, 5 HamCall; other numbers do nothing.
    int dataBase() const { return m_dataBase; }
    void setDataBase(int dataBase);

    void setSettings(const SourceSettings &settings);
    const SourceSettings &settings() const { return m_settings; }
    /// The user's callsign: a QRZ page that shows it means "logged in".
    void setOwnCallsign(const QString &callsign) { m_ownCallsign = callsign; }
    /// The main window's current source; GetLatLon uses it.
    void setCurrentSource(Source source) { m_currentSource = source; }
    Source currentSource() const { return m_currentSource; }
    void setTransferTimeout(int milliseconds);
    /// How long a page download and a picture download may take in all.
    void setDeadlines(int pageMs, int pictureMs);
    /// How long turning a page into text may take.
    void setDecodeDeadline(int milliseconds);

    /// The decoded text of the last page (CR LF line breaks).
    const QString &html() const { return m_reader.text(); }
    /// Puts a page's text in place as if it had just arrived (for readers
    /// run on a saved page).
    void setHtml(const QString &text) { m_reader.setText(text); }
    /// The bytes of the last completed download (a picture after PictureReady).
    const QByteArray &bytes() const { return m_bytes; }
    /// The callsign of the current GetPage, upper case.
    const QString &callSign() const { return m_callSign; }
    int cursor() const { return m_reader.cursor(); }
    /// The position kept by the last position-only request.
    double lastLatitude() const { return m_lastLatitude; }
    double lastLongitude() const { return m_lastLongitude; }
    /// What the last cName() call reported (none, not found, log-in needed).
    ReaderEvent lastNameEvent() const { return m_lastNameEvent; }
    /// Names of the requests in flight, oldest first.
    QStringList pendingRequests() const;

    // Requests. Results come by signals.
    /// Fetches the source's site page under its request label + "1".
    void GetSite();
    /// `callSign` is the callsign followed by the kind character "2".
    void GetPage(const QString &callSign);
    /// `callSign` ends in one kind character, which is dropped. Uses the
    /// current source (setCurrentSource), not data_base; the CD callbooks
    /// request nothing.
    void GetLatLon(const QString &callSign);
    /// `name` ends in "5".
    void GetPicture(const QString &url, const QString &name);
    void CheckUpdates();

    // Field readers on the last page; see PageReader. The readers throw
    // ReaderError when a page lacks an end mark they count on.
    QString cName(const QString &callSign);
    QString Add1();
    QString Add2();
    QString Ctry();
    double Latitude();
    double Longitude();
    QString Class();
    QString PrevCall();
    QString DateOfBirth();
    /// The grid locator, despite its name.
    QString WebAddress();
    /// The operator's web page (QRZ only).
    QString WebPage();

signals:
    // The events, in the Windows control's order.
    void GotSite(const QString &subject, bool loggedIn);
    void SiteNotFound(const QString &subject);
    void GotPage(const QString &callSign, bool loggedIn);
    void PageNotFound(const QString &callSign);
    void CallNotFound(const QString &callSign);
    void PictureReady(const QString &name);
    void NoPic(); ///< declared, never raised
    void LoginRequired(const QString &callSign);
    void UpdateFound(const QString &text);
    void UpdatesNotFound(); ///< declared, never raised
    void LatLon(double latitude, double longitude);
    void LatLonNotFound(); ///< declared, never raised

    /// Not one of the events: a request ended without an answer.
    void requestFailed(const QString &name, const QString &reason);

private:
    /// A download that ended, waiting for its events until its page is read
    /// and every download that ended before it has had its events.
    struct Arrival
    {
        QString name;
        quint64 job = 0; ///< the page being read, or 0
        bool ready = false;
        bool completed = false; ///< the download brought bytes
        QByteArray bytes;
        QString text;
        QString failure; ///< why there are no events, or empty
    };

    void request(const QString &name, const QString &address, qint64 sizeLimit, int deadlineMs);
    void onDownloaded(const QString &name, const QByteArray &bytes, const QByteArray &contentType);
    void onDownloadFailed(const QString &name, const QString &reason);
    void onPageRead(quint64 job, const QString &text, const QString &failure);
    void deliver();
    void raise(const Arrival &arrival);
    bool loggedIn() const;
    QString callPageAddress(Source source, const QString &callSign) const;

    NamedDownloads *m_downloads;
    PageDecoder *m_decoder;
    QList<Arrival> m_arrivals;
    QStringList m_pending;
    int m_pageDeadline;
    int m_pictureDeadline;
    SourceSettings m_settings;
    QString m_ownCallsign;
    PageReader m_reader;
    QByteArray m_bytes;
    QString m_callSign;
    ReaderEvent m_lastNameEvent = ReaderEvent::None;
    int m_dataBase = 0;
    Source m_currentSource = Source::Qrz;
    double m_lastLatitude = 0;
    double m_lastLongitude = 0;
};

} // namespace marvik::lookup
