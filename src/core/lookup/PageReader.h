// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/PageText.h"
#include "core/lookup/Sources.h"

#include <QString>

namespace marvik::lookup {

/// What the name reader found out about the page besides the name.
enum class ReaderEvent { None, CallNotFound, LoginRequired };

/// Cuts a lookup result out of a callbook page's decoded text, field by
/// field, by each source's marker words and fixed character counts. The
/// counts are the ones the Windows program used, off-by-ones included: the
/// lists and the user's habits were built on exactly this output.
///
/// Call name() first, then address1(), address2(), country() in this order:
/// they go on from the parse cursor, which survives a new page. A reader whose
/// page lacks an end mark it counts on throws ReaderError.
class PageReader
{
public:
    /// Sets the page text; the parse cursor keeps its place.
    void setText(const QString &text) { m_text = text; }
    const QString &text() const { return m_text; }

    /// The source: 1 eHam, 2 QRZ, 3 QRZCQ, 4 Callook, 5 HamCall; any other
    /// number makes every reader return nothing.
    void setDataBase(int dataBase) { m_source = onlineSourceFromDataBase(dataBase); }
    std::optional<Source> source() const { return m_source; }

    /// QRZCQ's pages are recognised by the service's own domain name.
    void setQrzCqDomain(const QString &domain) { m_qrzCqDomain = domain; }

    int cursor() const { return m_cursor; }
    void setCursor(int cursor) { m_cursor = cursor; }

    /// The operator's name; positions the cursor and tells whether the call
    /// was found (`event`, set before anything is thrown).
    QString name(const QString &callSign, ReaderEvent &event);
    QString address1();
    QString address2();
    QString country();
    double latitude();
    double longitude();
    QString licenceClass();
    /// Always empty: the previous call is only ever typed in by hand.
    QString previousCall();
    QString dateOfBirth();
    /// The Maidenhead grid square as printed (the readers' "WebAddress").
    QString gridSquare();
    /// The operator's web page (QRZ only).
    QString webPage();

private:
    QString nextLine(int shortenBy);
    double coordinate(QStringView marker, int longitudeShift);
    QString markedValue(QStringView marker, QStringView endMark, int searchShift, int valueShift, int lengthShift);

    QString nameEHam(const QString &callSign, ReaderEvent &event);
    QString nameQrz(ReaderEvent &event);
    QString nameQrzCq(ReaderEvent &event);
    QString nameCallook(ReaderEvent &event);
    QString nameHamCall(ReaderEvent &event);

    QString m_text;
    int m_cursor = 0;
    std::optional<Source> m_source;
    QString m_qrzCqDomain = QStringLiteral("QRZCQ.com");
};

} // namespace marvik::lookup
