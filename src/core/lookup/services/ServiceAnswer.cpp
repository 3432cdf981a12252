// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lookup/services/ServiceAnswer.h"

namespace marvik::lookup {

QString serviceErrorText(ServiceError error)
{
    switch (error) {
    case ServiceError::None: return QStringLiteral("found");
    case ServiceError::NotFound: return QStringLiteral("not found");
    case ServiceError::BadLogin: return QStringLiteral("log-in refused");
    case ServiceError::SessionExpired: return QStringLiteral("session expired");
    case ServiceError::NoAccount: return QStringLiteral("no account set up");
    case ServiceError::QuotaExceeded: return QStringLiteral("lookups for today used up");
    case ServiceError::Updating: return QStringLiteral("service updating");
    case ServiceError::Malformed: return QStringLiteral("answer not readable");
    case ServiceError::Failed: return QStringLiteral("service error");
    case ServiceError::Unreachable: return QStringLiteral("no answer");
    }
    return {};
}

QString serviceEventName(ServiceError error)
{
    switch (error) {
    case ServiceError::None: return QStringLiteral("GotPage");
    case ServiceError::NotFound: return QStringLiteral("CallNotFound");
    case ServiceError::BadLogin:
    case ServiceError::SessionExpired:
    case ServiceError::NoAccount: return QStringLiteral("LoginRequired");
    case ServiceError::Malformed: return QStringLiteral("ReaderError");
    case ServiceError::QuotaExceeded: return QStringLiteral("QuotaExceeded");
    case ServiceError::Updating: return QStringLiteral("ServiceUpdating");
    case ServiceError::Failed: return QStringLiteral("ServiceError");
    case ServiceError::Unreachable: return QStringLiteral("RequestFailed");
    }
    return {};
}

LookupOutcome outcomeOf(ServiceError error)
{
    switch (error) {
    case ServiceError::None: return LookupOutcome::Found;
    case ServiceError::NotFound: return LookupOutcome::CallNotFound;
    case ServiceError::BadLogin:
    case ServiceError::SessionExpired:
    case ServiceError::NoAccount: return LookupOutcome::LoginRequired;
    default: return LookupOutcome::ReaderError;
    }
}

ServiceAnswer parseServiceAnswer(Source source, const QByteArray &bytes)
{
    switch (source) {
    case Source::Qrz: return parseQrzAnswer(bytes);
    case Source::QrzCq: return parseQrzCqAnswer(bytes);
    case Source::HamQth: return parseHamQthAnswer(bytes);
    case Source::Callook: return parseCallookAnswer(bytes);
    default: break;
    }
    ServiceAnswer a;
    a.result.outcome = LookupOutcome::ReaderError;
    a.message = QStringLiteral("%1 has no data service").arg(sourceInfo(source).caption);
    return a;
}

} // namespace marvik::lookup
