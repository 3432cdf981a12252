// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QString>

#include <atomic>

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

/// Why a page gave no text.
enum class PageTextError {
    None,
    TooComplex, ///< the markup makes the parser build far more than the page holds
    OutOfTime,  ///< the deadline passed
    Cancelled,  ///< the caller no longer wanted it
};

/// The bounds one decoding works within.
struct DecodeLimits
{
    QDeadlineTimer deadline{QDeadlineTimer::Forever};
    /// Set from another thread to stop the decoding early.
    const std::atomic<bool> *cancelled = nullptr;
    /// False parses the markup exactly as it came, without the guard that
    /// keeps hostile pages linear, and slower (for comparisons in tests).
    bool guardMarkup = true;
};

/// A page's text, or why there is none.
struct DecodedPage
{
    QString text;
    PageTextError error = PageTextError::None;
    /// The guard left start tags out, so the text may differ from the
    /// markup parsed exactly as it came.
    bool tagsLeftOut = false;
};

/// The text a browser's innerText gives for a page's body: blocks on lines of
/// their own, paragraphs set apart by an empty line, table cells separated by
/// tabs and rows by line breaks, white space collapsed as it is rendered, and
/// nothing of what is not rendered (head, scripts, styles, hidden elements).
/// Line breaks are CR LF; a no-break space stays U+00A0.
/// A page too complex to read gives an empty text.
QString htmlDecode(QStringView html);
/// htmlDecode() within a deadline, stoppable from another thread. Takes time
/// in proportion to the page's size whatever its markup.
DecodedPage htmlDecode(QStringView html, const DecodeLimits &limits);
/// decodePage() and htmlDecode() in one.
DecodedPage decodePageText(QByteArrayView bytes, QByteArrayView contentType, const DecodeLimits &limits);

} // namespace marvik::lookup
