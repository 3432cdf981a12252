// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/widgets/AccessKey.h"

namespace marvik::widgets {

namespace {

// One walk over the caption serves both the key and the shown text, so the
// underlined letter is always the key that clicks the button.
struct Scan
{
    QChar key;
    CaptionText shown;
};

Scan scan(const QString &caption)
{
    Scan result;
    const qsizetype length = caption.size();
    // A one-character caption has no key, not even "&"; it is shown as it is.
    if (length < 2) {
        result.shown.text = caption;
        return result;
    }
    QString &text = result.shown.text;
    text.reserve(length);
    for (qsizetype i = 0; i < length; ++i) {
        const QChar c = caption.at(i);
        if (c != u'&' || i + 1 == length) {
            text.append(c);
            continue;
        }
        const QChar next = caption.at(i + 1);
        ++i;
        if (next == u'&') {
            text.append(next);
            continue;
        }
        if (result.key.isNull()) {
            result.key = next;
            result.shown.underline = text.size();
        }
        text.append(next);
    }
    return result;
}

} // namespace

QChar accessKey(const QString &caption)
{
    return scan(caption).key;
}

CaptionText captionText(const QString &caption)
{
    return scan(caption).shown;
}

QString mnemonicText(const QString &caption)
{
    const CaptionText shown = captionText(caption);
    QString out;
    out.reserve(shown.text.size() + 8);
    for (qsizetype i = 0; i < shown.text.size(); ++i) {
        if (i == shown.underline)
            out.append(u'&');
        const QChar c = shown.text.at(i);
        out.append(c);
        if (c == u'&')
            out.append(u'&');
    }
    return out;
}

} // namespace marvik::widgets
