// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <stdexcept>

namespace marvik::lookup {

/// A reader cut a value with an impossible start or length: the page did not
/// have the shape the reader counts on. The caller ends the lookup with a
/// status; nothing is read from such a page after the failure.
class ReaderError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The text primitives the page readers are written in. Positions are
/// 1-based, 0 means "not found", exactly as the Windows program counted, so
/// each reader's constants can stay as they were.
namespace pagetext {

/// The two characters that end a line of decoded page text.
inline constexpr char16_t kCrLf[] = u"\r\n";

/// Position of the first `what` at or after `from` in `text`, 0 if none.
/// An empty `what` is found at `from`. A `from` below 1 throws ReaderError.
int find(QStringView text, QStringView what, qint64 from = 1);

/// Position of the last `what` lying wholly within the first `upTo`
/// characters of `text` (-1: the whole text), 0 if none. `upTo` of 0 or below
/// -1 throws ReaderError; past the end of the text finds nothing.
int findBack(QStringView text, QStringView what, qint64 upTo = -1);

/// `length` characters of `text` from position `start`; fewer when the text
/// ends sooner, none when `start` lies past its end. A `start` below 1 or a
/// negative `length` throws ReaderError.
QString cut(QStringView text, qint64 start, qint64 length);

/// Removes the blanks (U+0020 only) at both ends, as the readers' Trim did:
/// tabs and line breaks stay.
QString trimBlanks(QStringView text);

} // namespace pagetext
} // namespace marvik::lookup
