// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/app/TextCodec.h"
#include "core/app/TextFile.h"
#include "core/i18n/LanguageFile.h"
#include "core/i18n/OwnTexts.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFont>
#include <QFontInfo>
#include <QFontMetrics>
#include <QHash>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace marvik::i18n;
using marvik::app::DataFolder;
using marvik::test::readBytes;
using marvik::test::writeBytes;
using Outcome = LanguageLoad::Outcome;

namespace {

const QString kTag = QString::fromUtf16(marvik::app::kVersionText);
const QString kOtherVersion = kTag + u'0';
const QString kShippedLanguages = QStringLiteral(MARVIK_SHIPPED_DATA "/Languages");

// A complete file whose value n is "v<n>", behind the given version line.
QStringList numberedFile(const QString &versionLine, int values = kLanguageFileValues)
{
    QStringList lines {versionLine};
    for (int i = 0; i < values; ++i)
        lines << QStringLiteral("Key.%1 = v%1").arg(i);
    return lines;
}

Texts numberedTexts(const Texts &over)
{
    Texts t = over;
    for (int i = 0; i < kLanguageFileValues; ++i)
        t[TextId(i)] = QStringLiteral("v%1").arg(i);
    return t;
}

QByteArray windows1252(const QString &text)
{
    QByteArray out;
    if (!marvik::app::toWindows1252(text, out))
        qFatal("test text does not fit Windows-1252");
    return out;
}

// The first 57 texts in the state of `texts`, the language names English.
Texts withEnglishNames(Texts texts)
{
    const Texts english = Texts::english();
    for (TextId id : {TextId::LanguageEnglish, TextId::LanguageSpanish, TextId::LanguageGerman, TextId::LanguageFrench,
             TextId::LanguageDutch})
        texts[id] = english[id];
    return texts;
}

// Marvik's own texts in `language`, over the English set.
Texts withOwnTexts(int language)
{
    Texts texts = Texts::english();
    applyOwnTexts(texts, language);
    return texts;
}

void addLanguageRows(bool withEnglish)
{
    QTest::addColumn<int>("language");
    if (withEnglish)
        QTest::newRow("English") << 0;
    QTest::newRow("Spanish") << 1;
    QTest::newRow("German") << 2;
    QTest::newRow("French") << 3;
    QTest::newRow("Dutch") << 4;
}

} // namespace

class TestLanguages : public QObject
{
    Q_OBJECT

private slots:
    void versionLine_data();
    void versionLine();
    void lineValue_data();
    void lineValue();
    void fileText_data();
    void fileText();
    void messagesComeInTheChosenLanguage_data();
    void messagesComeInTheChosenLanguage();
    void failedLoadKeepsTheTexts();
    void fileOnDisk_data();
    void fileOnDisk();
    void shippedFiles_data();
    void shippedFiles();
    void shippedFilesAreWindows1252WithCrLf();
    void seeding();
    void paddedTexts_data();
    void paddedTexts();
    void ownTranslations_data();
    void ownTranslations();
    void accessKeysDoNotClash_data();
    void accessKeysDoNotClash();
    void captionsFitTheirPlaces_data();
    void captionsFitTheirPlaces();
    void ownTextsFollowTheLanguage_data();
    void ownTextsFollowTheLanguage();
};

void TestLanguages::versionLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("current");
    QString oneBlank = kTag;
    oneBlank.replace(QStringLiteral("  "), QStringLiteral(" "));
    QString lowerCase = kTag;
    lowerCase[0] = lowerCase[0].toLower();
    QTest::newRow("tag alone") << kTag << true;
    QTest::newRow("title before the tag") << u"Marvik language file: Deutsch - "_qs + kTag << true;
    QTest::newRow("tag glued to a word") << u"MarvikMarvik"_qs + kTag.sliced(6) << true;
    QTest::newRow("blank after the tag") << kTag + u' ' << false;
    QTest::newRow("tab after the tag") << kTag + u'\t' << false;
    QTest::newRow("one blank, not two") << oneBlank << false;
    QTest::newRow("product word again after the tag") << kTag + u" Marvik"_qs << false;
    QTest::newRow("longer version") << kTag + u'0' << false;
    QTest::newRow("shorter version") << kTag.chopped(1) << false;
    QTest::newRow("lower case") << lowerCase << false;
    QTest::newRow("empty line") << QString() << false;
    QTest::newRow("a value line") << u"Menu.Database = Database"_qs << false;
}

void TestLanguages::versionLine()
{
    QFETCH(QString, line);
    QFETCH(bool, current);
    QCOMPARE(isCurrentVersionLine(line), current);
    // The same line at the head of a complete file decides the load.
    const LanguageLoad load = readLanguageText(numberedFile(line).join(u"\r\n"_qs), 0, Texts::english());
    QCOMPARE(load.outcome, current ? Outcome::Loaded : Outcome::WrongVersion);
}

void TestLanguages::lineValue_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("value");
    QTest::newRow("key = value") << u"Menu.Help = Hilfe"_qs << u"Hilfe"_qs;
    QTest::newRow("blanks around, kept inside")
        << u"Status.AlreadyInList =   Schon in der Liste   "_qs << u"Schon in der Liste"_qs;
    QTest::newRow("tabs around") << u"Menu.Help =\tAyuda\t"_qs << u"Ayuda"_qs;
    QTest::newRow("two =: after the second") << u"a = b = c d"_qs << u"c d"_qs;
    QTest::newRow("= in the key") << u"Status.NotFound(xxx=callsign) = xxx not found"_qs << u"xxx not found"_qs;
    QTest::newRow("no =: whole line trimmed") << u"  Sort by callsign "_qs << u"Sort by callsign"_qs;
    QTest::newRow("nothing after =") << u"Menu.Help =   "_qs << QString();
    QTest::newRow("empty line") << QString() << QString();
    QTest::newRow("= first") << u"=Map"_qs << u"Map"_qs;
}

void TestLanguages::lineValue()
{
    QFETCH(QString, line);
    QFETCH(QString, value);
    QCOMPARE(marvik::i18n::lineValue(line), value);
}

void TestLanguages::fileText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("outcome");
    const QStringList complete = numberedFile(kTag);
    QTest::newRow("CR LF") << complete.join(u"\r\n"_qs) + u"\r\n"_qs << int(Outcome::Loaded);
    QTest::newRow("LF") << complete.join(u'\n') + u'\n' << int(Outcome::Loaded);
    QTest::newRow("CR") << complete.join(u'\r') << int(Outcome::Loaded);
    QTest::newRow("no final line end") << complete.join(u"\r\n"_qs) << int(Outcome::Loaded);
    QTest::newRow("lines past the last value")
        << (complete + QStringList {u"Extra = x"_qs, QString()}).join(u"\r\n"_qs) << int(Outcome::Loaded);
    QTest::newRow("one value short") << numberedFile(kTag, kLanguageFileValues - 1).join(u"\r\n"_qs) + u"\r\n"_qs
                                     << int(Outcome::MissingOrCorrupt);
    QTest::newRow("version line only") << kTag + u"\r\n"_qs << int(Outcome::MissingOrCorrupt);
    QTest::newRow("empty") << QString() << int(Outcome::MissingOrCorrupt);
    QTest::newRow("short and of another version")
        << numberedFile(kOtherVersion, 3).join(u"\r\n"_qs) << int(Outcome::WrongVersion);
    QTest::newRow("a blank line before the version")
        << (QStringList {QString()} + complete).join(u"\r\n"_qs) << int(Outcome::WrongVersion);
}

void TestLanguages::fileText()
{
    QFETCH(QString, text);
    QFETCH(int, outcome);
    Texts current = Texts::english();
    current[TextId::HeadingCallsign] = u"Rufz."_qs; // left from the language shown before
    const LanguageLoad load = readLanguageText(text, 1, current);
    QCOMPARE(int(load.outcome), outcome);
    if (load.loaded()) {
        // The file's 57 values, and Marvik's own texts in Spanish.
        Texts expected = numberedTexts(current);
        applyOwnTexts(expected, 1);
        QCOMPARE(load.texts, expected);
        QCOMPARE(load.texts[TextId::HeadingCallsign], u"Indicativo"_qs);
        QVERIFY(load.message.isEmpty());
    } else {
        QCOMPARE(load.texts, withEnglishNames(current));
        QVERIFY(!load.message.isEmpty());
        QVERIFY(!load.detail.isEmpty());
    }
}

void TestLanguages::messagesComeInTheChosenLanguage_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("wrongVersion");
    QTest::addColumn<QString>("missing");
    const QString enWrong = u"Wrong language file version."_qs;
    const QString enMissing = u"Language file not found or corrupt"_qs;
    QTest::newRow("English") << 0 << u"Marvik_English.Language"_qs << enWrong << enMissing;
    QTest::newRow("Spanish") << 1 << u"Marvik_Spanish.Language"_qs << enWrong << enMissing;
    QTest::newRow("German") << 2 << u"Marvik_German.Language"_qs << enWrong << enMissing;
    QTest::newRow("French") << 3 << u"Marvik_French.Language"_qs << u"Mauvaise version de fichier langage."_qs
                            << u"Fichier langage non trouv\u00e9 ou corrompu."_qs;
    QTest::newRow("Dutch") << 4 << u"Marvik_Dutch.Language"_qs << u"Foute taalbestand versie."_qs
                           << u"Taalbestand ontbreekt of corrupt."_qs;
    QTest::newRow("out of range: English") << 7 << u"Marvik_English.Language"_qs << enWrong << enMissing;
}

void TestLanguages::messagesComeInTheChosenLanguage()
{
    QFETCH(int, language);
    QFETCH(QString, fileName);
    QFETCH(QString, wrongVersion);
    QFETCH(QString, missing);
    QTemporaryDir dir;
    const DataFolder data(dir.path());
    QCOMPARE(languageFilePath(data, language), data.languagesDir() + u'/' + fileName);

    LanguageLoad load = loadLanguage(data, language, Texts::english());
    QCOMPARE(load.outcome, Outcome::MissingOrCorrupt);
    QCOMPARE(load.message, missing);

    QVERIFY(QDir().mkpath(data.languagesDir()));
    QVERIFY(writeBytes(languageFilePath(data, language), windows1252(numberedFile(kOtherVersion).join(u"\r\n"_qs))));
    load = loadLanguage(data, language, Texts::english());
    QCOMPARE(load.outcome, Outcome::WrongVersion);
    QCOMPARE(load.message, wrongVersion);
}

void TestLanguages::failedLoadKeepsTheTexts()
{
    // Whatever language was shown stays, but for the language names: they
    // go back to English before the file is even opened.
    const LanguageLoad german
        = loadLanguageFile(kShippedLanguages + u"/Marvik_German.Language"_qs, 2, Texts::english());
    QVERIFY(german.loaded());
    const LanguageLoad failed = readLanguageText(u"no version line"_qs, 3, german.texts);
    QCOMPARE(failed.outcome, Outcome::WrongVersion);
    QCOMPARE(failed.texts[TextId::MenuDatabase], u"Datenbank"_qs);
    QCOMPARE(failed.texts[TextId::HeadingFirstName], u"Vorname"_qs);
    QCOMPARE(failed.texts[TextId::LanguageGerman], u"German"_qs);
    QCOMPARE(failed.texts, withEnglishNames(german.texts));
}

void TestLanguages::fileOnDisk_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("lastValue");
    QStringList lines = numberedFile(kTag);
    lines.last() = u"Capture.CopyToClipboard = In Zwischenablage kopieren \u00fc\u20ac"_qs;
    const QString text = lines.join(u"\r\n"_qs) + u"\r\n"_qs;
    const QString expected = u"In Zwischenablage kopieren \u00fc\u20ac"_qs;
    QTest::newRow("Windows-1252") << windows1252(text) << expected;
    QTest::newRow("UTF-8 behind a byte-order mark") << QByteArray("\xEF\xBB\xBF") + text.toUtf8() << expected;
    // Without the mark a UTF-8 file reads as Windows-1252: the version line
    // still matches, each letter beyond ASCII comes out as two or three.
    QTest::newRow("UTF-8 without a mark")
        << text.toUtf8() << u"In Zwischenablage kopieren \u00c3\u00bc\u00e2\u201a\u00ac"_qs;
}

void TestLanguages::fileOnDisk()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, lastValue);
    QTemporaryDir dir;
    const QString path = dir.filePath(u"Marvik_German.Language"_qs);
    QVERIFY(writeBytes(path, bytes));
    const LanguageLoad load = loadLanguageFile(path, 2, Texts::english());
    QVERIFY(load.loaded());
    QCOMPARE(load.texts[TextId::CaptureCopy], lastValue);
}

void TestLanguages::shippedFiles_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("database");
    QTest::addColumn<QString>("get");
    QTest::addColumn<QString>("notFound");
    QTest::addColumn<QString>("ownName");
    QTest::addColumn<QString>("listWord");
    QTest::addColumn<QString>("firstName");
    QTest::newRow("English") << 0 << u"Database"_qs << u"Get"_qs << u"xxx not found"_qs << u"English"_qs << u"List"_qs
                             << u"First name"_qs;
    QTest::newRow("Spanish") << 1 << u"Base de datos"_qs << u"Buscar"_qs << u"xxx no encontrado"_qs
                             << u"Espa\u00f1ol"_qs << u"Lista"_qs << u"Nombre"_qs;
    QTest::newRow("German") << 2 << u"Datenbank"_qs << u"Suchen"_qs << u"xxx nicht gefunden"_qs << u"Deutsch"_qs
                            << u"Liste"_qs << u"Vorname"_qs;
    QTest::newRow("French") << 3 << u"Base de donn\u00e9es"_qs << u"Voir"_qs << u"xxx introuvable"_qs
                            << u"Fran\u00e7ais"_qs << u"Liste"_qs << u"Pr\u00e9nom"_qs;
    QTest::newRow("Dutch") << 4 << u"Database"_qs << u"Zoek"_qs << u"xxx niet gevonden"_qs << u"Nederlands"_qs
                           << u"Lijst"_qs << u"Voornaam"_qs;
}

void TestLanguages::shippedFiles()
{
    QFETCH(int, language);
    QFETCH(QString, database);
    QFETCH(QString, get);
    QFETCH(QString, notFound);
    QFETCH(QString, ownName);
    QFETCH(QString, listWord);
    QFETCH(QString, firstName);
    const Texts english = Texts::english();
    const QString path = kShippedLanguages + u'/' + languageInfo(language).fileName;
    const LanguageLoad load = loadLanguageFile(path, language, english);
    QVERIFY2(load.loaded(), qPrintable(load.detail));
    const Texts &t = load.texts;

    // Spot checks that the values sit in their places.
    QCOMPARE(t[TextId::MenuDatabase], database);
    QCOMPARE(t[TextId::ButtonGet], get);
    QCOMPARE(t[TextId::NotFound], notFound);
    QCOMPARE(t[TextId(int(TextId::LanguageEnglish) + language)], ownName);
    QCOMPARE(t[TextId::ListWord], listWord);
    QCOMPARE(t[TextId::HeadingFirstName], firstName);

    const QStringList placeholders {u"xxx"_qs, u"???"_qs};
    for (int i = 0; i < kLanguageFileValues; ++i) {
        const TextId id = TextId(i);
        QVERIFY2(!t[id].isEmpty(), qPrintable(u"value %1 is empty"_qs.arg(i)));
        if (language == 0)
            QCOMPARE(t[id], english[id]);
        for (const QString &p : placeholders) {
            QVERIFY2(t[id].count(p) == english[id].count(p),
                qPrintable(u"value %1 \"%2\" lost or gained %3"_qs.arg(i).arg(t[id], p)));
        }
    }
    // The texts after the file's 57 are the program's own, in the file's
    // language.
    Texts own = english;
    for (const OwnText &o : ownTranslation(language))
        own[o.id] = QString::fromUtf16(o.text);
    for (int i = kLanguageFileValues; i < kTextCount; ++i)
        QCOMPARE(t[TextId(i)], own[TextId(i)]);
    // Choosing the same language again gives the same texts.
    QCOMPARE(loadLanguageFile(path, language, t).texts, t);
}

void TestLanguages::shippedFilesAreWindows1252WithCrLf()
{
    // Every file has the same keys in the same order, so a translator can
    // lay two side by side.
    QStringList englishKeys;
    for (int language = 0; language < kLanguageCount; ++language) {
        const QString name = languageInfo(language).fileName;
        const QByteArray bytes = readBytes(kShippedLanguages + u'/' + name);
        QVERIFY2(!bytes.startsWith("\xEF\xBB\xBF"), qPrintable(name));
        QList<QByteArray> lines = bytes.split('\n');
        QVERIFY2(lines.takeLast().isEmpty(), qPrintable(name + u": no line end after the last value"_qs));
        QCOMPARE(lines.size(), 1 + kLanguageFileValues);
        QStringList keys;
        for (const QByteArray &line : lines) {
            QVERIFY2(
                line.endsWith('\r') && line.count('\r') == 1, qPrintable(name + u": "_qs + QString::fromLatin1(line)));
            const QString text = marvik::app::fromWindows1252(line.chopped(1));
            // The five bytes the code page leaves undefined come back as C1
            // controls: none may be in a file meant for people.
            for (const QChar c : text)
                QVERIFY2(c.unicode() >= 0x20 && (c.unicode() < 0x7F || c.unicode() > 0x9F), qPrintable(name));
            keys << text.left(text.lastIndexOf(u'=')).trimmed();
        }
        QVERIFY(isCurrentVersionLine(marvik::app::fromWindows1252(lines.first().chopped(1))));
        keys.removeFirst();
        QVERIFY2(!keys.contains(QString()), qPrintable(name));
        if (language == 0)
            englishKeys = keys;
        QCOMPARE(keys, englishKeys);
    }
}

void TestLanguages::seeding()
{
    QTemporaryDir share;
    QTemporaryDir home;
    const QString shipped = share.filePath(u"Languages"_qs);
    QVERIFY(QDir().mkpath(shipped));
    for (int language = 0; language < kLanguageCount; ++language) {
        const QString name = languageInfo(language).fileName;
        QVERIFY(QFile::copy(kShippedLanguages + u'/' + name, shipped + u'/' + name));
    }
    const QString german = u"/Marvik_German.Language"_qs;
    const QString french = u"/Marvik_French.Language"_qs;
    const QString dutch = u"/Marvik_Dutch.Language"_qs;

    // A fresh data folder gets every file.
    const DataFolder data(home.filePath(u"Marvik"_qs));
    QVERIFY(data.ensureCreated(share.path()));
    for (int language = 0; language < kLanguageCount; ++language) {
        QCOMPARE(
            readBytes(languageFilePath(data, language)), readBytes(shipped + u'/' + languageInfo(language).fileName));
    }

    // The user's own words under the right version line stay; a file of
    // another version is replaced and kept aside; a missing one comes back.
    const QByteArray mine = windows1252(numberedFile(u"Meine Sprachdatei "_qs + kTag).join(u"\r\n"_qs));
    const QByteArray older = windows1252(numberedFile(kOtherVersion).join(u"\r\n"_qs));
    QVERIFY(writeBytes(data.languagesDir() + german, mine));
    QVERIFY(writeBytes(data.languagesDir() + french, older));
    QVERIFY(QFile::remove(data.languagesDir() + dutch));
    QVERIFY(data.ensureCreated(share.path()));
    QCOMPARE(readBytes(data.languagesDir() + german), mine);
    QCOMPARE(readBytes(data.languagesDir() + french), readBytes(shipped + french));
    QCOMPARE(readBytes(data.languagesDir() + french + u".old"_qs), older);
    QCOMPARE(readBytes(data.languagesDir() + dutch), readBytes(shipped + dutch));
    QVERIFY(loadLanguage(data, 3, Texts::english()).loaded());

    // A shipped file that is itself of another version never replaces a
    // user's file.
    QVERIFY(writeBytes(shipped + german, older));
    QVERIFY(writeBytes(data.languagesDir() + german, older + "mine"));
    QVERIFY(data.ensureCreated(share.path()));
    QCOMPARE(readBytes(data.languagesDir() + german), older + "mine");
}

void TestLanguages::paddedTexts_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("shown");
    QTest::newRow("LoggedIn") << int(TextId::LoggedIn) << u"  (Logged in)"_qs;
    QTest::newRow("LoginNeeded") << int(TextId::LoginNeeded) << u"  (Login required)"_qs;
    QTest::newRow("LoginNotNeeded") << int(TextId::LoginNotNeeded) << u"  (Login not required)"_qs;
    QTest::newRow("MenuExpand") << int(TextId::MenuExpand) << u"  Expand  "_qs;
    QTest::newRow("MenuCollapse") << int(TextId::MenuCollapse) << u"  Collapse  "_qs;
    QTest::newRow("FromMe") << int(TextId::FromMe) << u" From Me "_qs;
    QTest::newRow("any other") << int(TextId::MenuSetup) << u"Setup"_qs;
}

void TestLanguages::paddedTexts()
{
    QFETCH(int, id);
    QFETCH(QString, shown);
    QCOMPARE(Texts::english().padded(TextId(id)), shown);
}

void TestLanguages::ownTranslations_data()
{
    addLanguageRows(false);
}

void TestLanguages::ownTranslations()
{
    QFETCH(int, language);
    const Texts english = Texts::english();
    QHash<int, QString> translated;
    for (const OwnText &o : ownTranslation(language)) {
        const int i = int(o.id);
        QVERIFY2(i >= kLanguageFileValues && i < kTextCount, qPrintable(u"id %1 is not one of Marvik's own"_qs.arg(i)));
        QVERIFY2(!translated.contains(i), qPrintable(u"id %1 translated twice"_qs.arg(i)));
        translated.insert(i, QString::fromUtf16(o.text));
    }
    // What the program fills in or acts on must survive the translation:
    // the placeholders, the access key, the line breaks, the "…" that
    // promises a dialog, and any numbered marker.
    const QStringList kept {u"xxx"_qs, u"???"_qs, u"&"_qs, u"\n"_qs};
    const QRegularExpression marker(u"%\\d"_qs);
    for (int i = kLanguageFileValues; i < kTextCount; ++i) {
        const QString &en = english[TextId(i)];
        QVERIFY2(translated.contains(i), qPrintable(u"no translation of \"%1\""_qs.arg(en)));
        const QString &text = translated[i];
        const QByteArray what = (u"\""_qs + text + u"\" for \""_qs + en + u'"').toUtf8();
        QVERIFY2(!text.isEmpty(), what.constData());
        QVERIFY2(text == text.trimmed(), what.constData());
        for (const QString &k : kept)
            QVERIFY2(text.count(k) == en.count(k),
                QByteArray(what + " has another number of " + k.toUtf8()).constData());
        QVERIFY2(text.endsWith(u'\u2026') == en.endsWith(u'\u2026'), what.constData());
        QVERIFY2(text.count(marker) == en.count(marker), what.constData());
        const qsizetype key = text.indexOf(u'&');
        if (key >= 0)
            QVERIFY2(key + 1 < text.size() && text[key + 1].isLetterOrNumber(), what.constData());
    }
}

void TestLanguages::accessKeysDoNotClash_data()
{
    addLanguageRows(true);
}

void TestLanguages::accessKeysDoNotClash()
{
    QFETCH(int, language);
    const Texts texts = withOwnTexts(language);
    // The captions with an access key that share a window.
    const QList<QList<TextId>> windows {
        {TextId::ButtonTryAgain, TextId::ButtonCopyElsewhere, TextId::ButtonLeaveFile},
        {TextId::ButtonYes, TextId::ButtonNo},
        {TextId::ButtonTest, TextId::ButtonUp, TextId::ButtonDown, TextId::ButtonClearCache},
        {TextId::ExportFile, TextId::ExportBrowse, TextId::ExportAdi, TextId::ExportAdx, TextId::ExportBand,
            TextId::ExportMode, TextId::ExportButton},
    };
    for (const QList<TextId> &window : windows) {
        QHash<QChar, QString> keys;
        for (const TextId id : window) {
            const QString &caption = texts[id];
            const qsizetype at = caption.indexOf(u'&');
            QVERIFY2(at >= 0 && at + 1 < caption.size(), qPrintable(caption));
            const QChar key = caption[at + 1].toLower();
            QVERIFY2(!keys.contains(key), qPrintable(caption + u" and "_qs + keys.value(key)));
            keys.insert(key, caption);
        }
    }
}

void TestLanguages::captionsFitTheirPlaces_data()
{
    addLanguageRows(true);
}

void TestLanguages::captionsFitTheirPlaces()
{
    QFETCH(int, language);
    // The font a plain Debian desktop gives the windows.
    QFont font(u"DejaVu Sans"_qs);
    font.setPointSize(9);
    QVERIFY2(QFontInfo(font).family() == u"DejaVu Sans"_qs, "DejaVu Sans (fonts-dejavu-core) is needed for this test");
    const QFontMetrics metrics(font);
    // The room the main window gives them, in pixels: a grid heading's label
    // is its column less 5 (the columns of the expanded view are 68, 100,
    // 167, 200, 227 and 136 wide); Cancel takes the place of Get in a
    // 52-pixel button with 50 for its text; the placeholder stands in the
    // 110-pixel call box.
    const QList<std::pair<TextId, int>> places {
        {TextId::HeadingCallsign, 63},
        {TextId::HeadingFirstName, 95},
        {TextId::HeadingFullName, 162},
        {TextId::HeadingAddress, 195},
        {TextId::HeadingCity, 222},
        {TextId::HeadingCountry, 131},
        {TextId::ButtonCancel, 50},
        {TextId::CallsignPlaceholder, 100},
    };
    const Texts texts = withOwnTexts(language);
    for (const auto &[id, room] : places) {
        const int width = metrics.horizontalAdvance(texts[id]);
        QVERIFY2(width <= room, qPrintable(u"\"%1\" is %2 pixels wide, %3 fit"_qs.arg(texts[id]).arg(width).arg(room)));
    }
}

void TestLanguages::ownTextsFollowTheLanguage_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("firstName");
    QTest::newRow("Spanish") << 1 << u"Nombre"_qs;
    QTest::newRow("German") << 2 << u"Vorname"_qs;
    QTest::newRow("French") << 3 << u"Pr\u00e9nom"_qs;
    QTest::newRow("Dutch") << 4 << u"Voornaam"_qs;
}

void TestLanguages::ownTextsFollowTheLanguage()
{
    QFETCH(int, language);
    QFETCH(QString, firstName);
    const Texts english = Texts::english();
    const auto shipped = [](int l) -> QString { return kShippedLanguages + u'/' + languageInfo(l).fileName; };

    const LanguageLoad chosen = loadLanguageFile(shipped(language), language, english);
    QVERIFY(chosen.loaded());
    QCOMPARE(chosen.texts[TextId::HeadingFirstName], firstName);

    // A file that cannot be used changes none of them, whichever language
    // it was for: English that is too short, another language that is gone.
    const LanguageLoad shortEnglish = readLanguageText(numberedFile(kTag, 3).join(u"\r\n"_qs), 0, chosen.texts);
    QCOMPARE(shortEnglish.outcome, Outcome::MissingOrCorrupt);
    const int other = language % 4 + 1;
    const LanguageLoad missing = loadLanguageFile(kShippedLanguages + u"/gone.Language"_qs, other, chosen.texts);
    QCOMPARE(missing.outcome, Outcome::MissingOrCorrupt);
    for (int i = kLanguageFileValues; i < kTextCount; ++i) {
        QCOMPARE(shortEnglish.texts[TextId(i)], chosen.texts[TextId(i)]);
        QCOMPARE(missing.texts[TextId(i)], chosen.texts[TextId(i)]);
    }

    // English brings every one of them back.
    const LanguageLoad back = loadLanguageFile(shipped(0), 0, shortEnglish.texts);
    QVERIFY(back.loaded());
    QCOMPARE(back.texts[TextId::HeadingFirstName], u"First name"_qs);
    QCOMPARE(back.texts, english);
}

QTEST_MAIN(TestLanguages)
#include "tst_languages.moc"
