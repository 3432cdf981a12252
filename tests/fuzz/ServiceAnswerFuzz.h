// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/services/ServiceAnswer.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

/// Runs a data service's answer parser over arbitrary bytes. It must not
/// crash, and what it gives must hang together: a record only with no error,
/// a position on the globe, a found outcome exactly for a record, the same
/// reading twice.
inline int fuzzServiceAnswer(marvik::lookup::Source service, const uint8_t *data, size_t size)
{
    using namespace marvik::lookup;
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const ServiceAnswer a = parseServiceAnswer(service, bytes);
    if (a.record != (a.error == ServiceError::None && a.result.outcome == LookupOutcome::Found))
        std::abort();
    if (!a.record && (!a.result.name.isEmpty() || !a.callsign.isEmpty()))
        std::abort();
    if (a.error == ServiceError::None && !a.record && a.sessionKey.isEmpty())
        std::abort();
    if (!std::isfinite(a.result.latitude) || !std::isfinite(a.result.longitude)
        || std::abs(a.result.latitude) > 90 || std::abs(a.result.longitude) > 180)
        std::abort();
    if (a.lookupsToday < -1)
        std::abort();
    const ServiceAnswer again = parseServiceAnswer(service, bytes);
    if (again.error != a.error || again.result.name != a.result.name || again.sessionKey != a.sessionKey)
        std::abort();
    return 0;
}
