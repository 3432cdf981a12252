// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds arbitrary bytes to the language-file reader: no input may crash it, a
// file that is refused changes nothing but the language names, and the values
// of a loaded file, written out again as a language file, read back the same.
#include "core/app/Config.h"
#include "core/app/TextCodec.h"
#include "core/i18n/LanguageFile.h"
#include "core/i18n/OwnTexts.h"

#include <QStringList>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace marvik;
    using namespace marvik::i18n;
    static const Texts english = Texts::english();
    Texts current = english;
    current[TextId::MenuDatabase] = QStringLiteral("before");
    current[TextId::LanguageGerman] = QStringLiteral("Deutsch");
    const int language = size ? data[0] % (kLanguageCount + 1) : 0;
    const QString text = app::decodeTextFile(QByteArrayView(data, qsizetype(size)));
    const LanguageLoad load = readLanguageText(text, language, current);

    // Marvik's own texts: those of the language when its file loaded,
    // untouched when it was refused.
    Texts own = current;
    if (load.loaded())
        applyOwnTexts(own, language);
    for (int i = kLanguageFileValues; i < kTextCount; ++i) {
        if (load.texts[TextId(i)] != own[TextId(i)])
            std::abort();
    }
    if (!load.loaded()) {
        if (load.message.isEmpty() || load.texts[TextId::MenuDatabase] != QLatin1String("before")
            || load.texts[TextId::LanguageGerman] != english[TextId::LanguageGerman])
            std::abort();
        return 0;
    }

    QStringList lines {QString::fromUtf16(app::kVersionText)};
    for (int i = 0; i < kLanguageFileValues; ++i) {
        const QString &value = load.texts[TextId(i)];
        if (value != value.trimmed() || value.contains(u'\r') || value.contains(u'\n') || value.contains(u'='))
            std::abort();
        lines << QStringLiteral("Key = ") + value;
    }
    const QByteArray bytes = app::encodeTextFile(lines.join(QStringLiteral("\r\n")));
    const LanguageLoad again = readLanguageText(app::decodeTextFile(bytes), language, english);
    if (!again.loaded())
        std::abort();
    for (int i = 0; i < kLanguageFileValues; ++i) {
        if (again.texts[TextId(i)] != load.texts[TextId(i)])
            std::abort();
    }
    return 0;
}
