// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace marvik::lookup {

/// Decodes the bytes of a fetched page by the character set it declares: a
/// byte-order mark, then the charset of the HTTP Content-Type header, then a
/// <meta> declaration near the start of the page. ISO-8859-1 and ASCII are
/// read as Windows-1252 (as browsers do); anything undeclared or unknown is
/// Windows-1252 as well, the code page the callbook pages were read in.
QString decodePage(QByteArrayView bytes, QByteArrayView contentType = {});

/// The charset label decodePage() settles on, in lower case ("utf-8",
/// "windows-1252", or another label the converters know).
QByteArray pageCharset(QByteArrayView bytes, QByteArrayView contentType = {});

/// The text a browser's innerText gives for a page's body: blocks on lines of
/// their own, paragraphs set apart by an empty line, table cells separated by
/// tabs and rows by line breaks, white space collapsed as it is rendered, and
/// nothing of what is not rendered (head, scripts, styles, hidden elements).
/// Line breaks are CR LF; a no-break space stays U+00A0.
QString htmlDecode(QStringView html);

} // namespace marvik::lookup
