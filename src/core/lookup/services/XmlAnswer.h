// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/services/ServiceAnswer.h"

#include <QHash>
#include <QString>

namespace marvik::lookup::xmlanswer {

/// The two parts the XML services answer with: the session part (key,
/// counters, error) and the call's record, each as element name (lower
/// case) to text.
struct Sections
{
    bool read = false; ///< well-formed, with the expected outermost element
    QString error;     ///< why not
    bool hasSession = false;
    bool hasRecord = false;
    QHash<QString, QString> session;
    QHash<QString, QString> record;
};

/// Reads an answer whose outermost element is `root` and whose parts are its
/// children `sessionName` and `recordName` (all compared without case or
/// namespace). Only the first of each part counts.
Sections read(const QByteArray &bytes, QStringView root, QStringView sessionName, QStringView recordName);

/// What an error text of a service means: the services tell their errors in
/// words only ("Not found: W1XYZ", "Session Timeout", "Wrong user name or
/// password").
ServiceError classify(const QString &message);

/// The first non-empty value among `names`.
QString value(const QHash<QString, QString> &fields, std::initializer_list<QStringView> names);

/// A coordinate as the services write it; 0 when it is none.
double coordinate(const QString &text);

/// Two parts joined by `separator`, either of which may be empty.
QString joined(const QString &first, QStringView separator, const QString &second);

/// True for a six-character Maidenhead locator (fields A..R, subsquares A..X).
bool isLocator(QStringView text);

/// Fills the answer's record and outcome from a finished result: position
/// from a valid locator when none was given.
void setRecord(ServiceAnswer &answer, LookupResult result);

} // namespace marvik::lookup::xmlanswer
