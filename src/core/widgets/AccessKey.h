// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QChar>
#include <QString>

namespace marvik::widgets {

/// A button caption as it is shown: the "&" marks taken out, "&&" shown as
/// one "&", and the place of the access key's letter in the shown text.
struct CaptionText
{
    QString text;
    /// Index into `text` of the letter to underline; -1 when there is none.
    qsizetype underline = -1;
};

/// The access key of a caption, or a null QChar when it has none. A caption
/// of at least two characters names its key with an "&" that is not its last
/// character; the first such "&" counts. "&&" stands for an ampersand and
/// names no key: the search goes on after the pair.
QChar accessKey(const QString &caption);

/// The shown form of a caption, with the access key's position in it.
/// An "&" at the very end marks nothing and is shown as it is.
CaptionText captionText(const QString &caption);

/// The caption escaped for Qt's mnemonic drawing (Qt::TextShowMnemonic),
/// so that Qt underlines exactly the letter accessKey() picked.
QString mnemonicText(const QString &caption);

} // namespace marvik::widgets
