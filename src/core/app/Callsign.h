// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Every clean-up a callsign goes through on its way from the keyboard, the
/// clipboard or a list into a request, a file name or a comparison.
namespace marvik::callsign {

/// The slashed zero many operators type for a zero.
inline constexpr char16_t kSlashedZero = 0xD8;

/// Every slashed zero ("Ø") as a plain "0".
QString plainZero(QString call);

/// A typed call as a lookup asks for it: slashed zeros to "0", upper case,
/// a leading "DE " dropped, cut before the first "-" or blank ("W1AW-5" and
/// "W1AW /P" give "W1AW").
QString forLookup(const QString &typed);

/// The same clean-up with the slashed zero kept: the picture host files a
/// picture under the last character of the call as it was typed.
QString asTyped(const QString &typed);

/// The F8 paste rule: upper case, slashed zeros to "0", a leading "DE "
/// dropped, then cut at the first character below "0" or above "z".
QString fromClipboard(const QString &clipboard);

/// The add/edit dialog's typing filter, one character at a time: a..z to
/// upper case, "0" to the slashed zero.
QString filterTyped(const QString &typed);

/// A callsign as a file name in Images/ (without the extension). Plain calls
/// stay as they are, so the names match the Windows program's; anything a
/// file system would take as a separator, a device or nothing at all is
/// written as "%" and two hex digits, "%" itself included, so two different
/// calls never share a file and no name leaves its folder.
QString fileName(const QString &call);
/// Whether fileName() gives `call` back as it is.
bool isOwnFileName(QStringView call);

/// A callsign inside a web address: every ASCII character but letters,
/// digits and "-._~" percent-encoded, "/" too, so a typed call can never
/// change the address's shape. Letters beyond ASCII stay for the request to
/// encode.
QString forAddress(const QString &call);

} // namespace marvik::callsign
