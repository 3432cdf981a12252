// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/LookupResult.h"
#include "core/lookup/Sources.h"

#include <QByteArray>
#include <QMetaType>
#include <QString>

namespace marvik::lookup {

/// How a data service's answer (or the attempt to get one) ended.
enum class ServiceError {
    None,           ///< the answer holds what was asked: a record, or a session after a log-in
    NotFound,       ///< the service knows no such call
    BadLogin,       ///< the user name or the password was refused
    SessionExpired, ///< the session is gone (timed out, unknown, missing): log in again
    NoAccount,      ///< no user name or password to log in with
    QuotaExceeded,  ///< the lookups allowed for today are used up
    Updating,       ///< the service is reloading its data and answers nothing meanwhile
    Malformed,      ///< not an answer of this service's shape
    Failed,         ///< any other error the service reported
    Unreachable,    ///< no answer: network failure, HTTP error, too large, time-out
};

/// A data service's answer, read: what an answer parser gives for the bytes
/// of one answer, whatever the service.
struct ServiceAnswer
{
    ServiceError error = ServiceError::Malformed;
    QString message;    ///< the service's own words (its error or message), or why it was not read
    bool record = false; ///< a call's record came back (limited or full)
    QString callsign;    ///< the call the record is of, as the service writes it
    LookupResult result; ///< the record as a lookup result; outcome tells found or not
    QString sessionKey;  ///< the session key or id the answer carries
    int lookupsToday = -1; ///< lookups counted today (QRZ, QRZCQ); -1 when not told
    QString subscription;  ///< the subscription state or its end ("non-subscriber", a date)
    bool limited = false;  ///< a non-subscriber's record: fewer fields than a subscriber sees
};

/// A short English word for the error ("not found", "log-in refused", ...).
QString serviceErrorText(ServiceError error);
/// The event name marvik-cli prints for an answer: "GotPage" for a record,
/// "CallNotFound", "LoginRequired", "ReaderError" as for a page, else
/// "QuotaExceeded", "ServiceUpdating", "ServiceError", "RequestFailed".
QString serviceEventName(ServiceError error);
/// The lookup outcome a service error stands for.
LookupOutcome outcomeOf(ServiceError error);

/// QRZ's XML answer (a log-in's or a lookup's).
ServiceAnswer parseQrzAnswer(const QByteArray &bytes);
/// HamQTH's XML answer.
ServiceAnswer parseHamQthAnswer(const QByteArray &bytes);
/// QRZCQ's XML answer.
ServiceAnswer parseQrzCqAnswer(const QByteArray &bytes);
/// Callook's JSON answer.
ServiceAnswer parseCallookAnswer(const QByteArray &bytes);
/// The answer parser of a source's data service; Malformed for a source
/// without one.
ServiceAnswer parseServiceAnswer(Source source, const QByteArray &bytes);

} // namespace marvik::lookup

Q_DECLARE_METATYPE(marvik::lookup::ServiceAnswer)
