// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/i18n/Texts.h"

#include <QStringList>

#include <algorithm>

namespace marvik::i18n {

namespace {

struct Builtin
{
    TextId id;
    const char16_t *text;
};

// Every id has its English text here; english() checks that none is missing.
// The first 57 are exactly the values of the English language file: trimmed,
// since a language file cannot carry blanks at a value's ends (padded() puts
// back the ones the program shows).
constexpr Builtin kEnglish[] = {
    {TextId::MenuDatabase, u"Database"},
    {TextId::MenuExpand, u"Expand"},
    {TextId::MenuSetup, u"Setup"},
    {TextId::MenuAdd, u"Manually add or edit data"},
    // Shown with its ampersand: menus take "&&" for a literal one.
    {TextId::MenuLatLon, u"Lat & Lon"},
    {TextId::MenuDefaultDatabase, u"Default database"},
    {TextId::MenuNames, u"Change list names"},
    {TextId::MenuOnTop, u"Always on top"},
    {TextId::MenuLanguage, u"Language"},
    {TextId::MenuHelp, u"Help"},
    {TextId::SortByCallsign, u"Sort by callsign"},
    {TextId::SortByDateTime, u"Sort by date/time"},
    {TextId::MenuAbout, u"About"},
    {TextId::MenuShowPicture, u"Show image"},
    {TextId::MenuAddNew, u"Manually add new callsign"},
    {TextId::MenuDelete, u"Delete"},
    {TextId::MenuClear, u"Delete all entries in list"},
    {TextId::ButtonGet, u"Get"},
    {TextId::ButtonMap, u"Map"},
    {TextId::LanguageEnglish, u"English"},
    {TextId::LanguageSpanish, u"Spanish"},
    {TextId::LanguageGerman, u"German"},
    {TextId::LanguageFrench, u"French"},
    {TextId::LanguageDutch, u"Dutch"},
    {TextId::ListWord, u"List"},
    {TextId::MenuCollapse, u"Collapse"},
    {TextId::MenuAddAll, u"Add all to"},
    {TextId::MenuPasteList, u"Paste list text to EasyPal Tx window"},
    {TextId::MenuCopyList, u"Copy list to clipboard"},
    {TextId::MenuPrintList, u"Print list"},
    {TextId::ClearListPrompt, u"Delete all entries in xxx?"},
    {TextId::RenamePrompt, u"New first name for xxx in every list:"},
    {TextId::AlreadyInList, u"Already in list"},
    {TextId::NotFound, u"xxx not found"},
    {TextId::LoginRequired, u"Details require a log-in to QRZ.com"},
    {TextId::LoggedIn, u"(Logged in)"},
    {TextId::LoginNeeded, u"(Login required)"},
    {TextId::LoginNotNeeded, u"(Login not required)"},
    {TextId::MenuName, u"Change first name of xxx"},
    {TextId::MenuAddCall, u"Add xxx to"},
    {TextId::MenuUpdate, u"Update xxx from ???"},
    {TextId::MenuManUpdate, u"Update xxx manually"},
    {TextId::MenuStreetView, u"Google Street View of xxx (if available)"},
    {TextId::MenuSatelliteView, u"Google satellite view of xxx"},
    {TextId::GridLocator, u"Grid locator"},
    {TextId::StreetViewCaption, u"Street view of xxx"},
    {TextId::SatelliteViewCaption, u"Satellite view of xxx"},
    {TextId::FromMe, u"From Me"},
    {TextId::CorruptImage1, u"The image may be corrupt"},
    {TextId::CorruptImage2, u"and can not be displayed."},
    {TextId::GetLatLon, u"Get Lat and Lon from QRZ"},
    {TextId::AddCallToList, u"Add call to list"},
    {TextId::SaveChanges, u"Save changes"},
    {TextId::Updated, u"xxx updated"},
    {TextId::CapturePaste, u"Paste to EasyPal TX"},
    {TextId::CaptureSave, u"Save image"},
    {TextId::CaptureCopy, u"Copy to Clipboard"},

    {TextId::CallsignPlaceholder, u"Callsign"},
    {TextId::HeadingCallsign, u"Callsign"},
    {TextId::HeadingFirstName, u"First name"},
    {TextId::HeadingFullName, u"Full name"},
    {TextId::HeadingAddress, u"Address"},
    {TextId::HeadingCity, u"City"},
    {TextId::HeadingCountry, u"Country"},
    {TextId::MenuLogin, u"Log in to ???\u2026"},
    {TextId::AnotherInstance, u"Another instance of Marvik is running"},
    {TextId::AboutText, u"xxx"},
    {TextId::HelpTitle, u"Marvik Help"},
    {TextId::HelpMissing, u"The help text xxx could not be opened."},
    {TextId::PictureProgress, u"Downloading the operator's picture"},
    {TextId::ButtonCancel, u"Cancel"},
    {TextId::WebUnavailable, u"The web view is not available: xxx"},
    {TextId::LookingUp, u"Looking up xxx on ???\u2026"},
    {TextId::NoOnlineSource, u"No online source selected"},
    {TextId::PageUnreadable, u"The page of xxx on ??? could not be read"},
    {TextId::NetworkFailure, u"xxx not found: ???"},
    {TextId::NoPicture, u"No picture of xxx: ???"},
    {TextId::ButtonClose, u"Close"},
    {TextId::ListDamageTitle, u"A list file is damaged:"},
    {TextId::ListKeptAs, u"The whole file was kept as xxx."},
    {TextId::ListDamaged, u"xxx, line ???: fewer than eleven fields; the rest of the file was not loaded."},
    {TextId::ListUnreadable, u"xxx could not be read: ???"},
    {TextId::FileWriteFailed, u"xxx could not be written:\n???"},
    {TextId::LockOtherHost, u"The data folder is locked by Marvik on the computer \u201cxxx\u201d (process ???" u"). "
                            u"If Marvik is not running there with this folder, you can take the lock over.\n\n"
                            u"Take it over and start Marvik?"},
    {TextId::FolderUnusable, u"The data folder xxx cannot be used: ???"},
    {TextId::FolderReadOnly, u"The data folder xxx cannot be written to. Marvik will run, but changes to your "
                             u"lists and settings cannot be saved until it can."},
    {TextId::ConfigKept, u"xxx was not a Marvik settings file. A copy was kept as ???; Marvik starts with its "
                         u"default settings and writes a new file when it closes."},
    {TextId::ConfigUnreadable, u"xxx could not be read: ???. Marvik starts with its default settings."},
    {TextId::PasteByHand, u"Marvik could not reach EasyPal's window: press F7 in EasyPal to paste what is on the clipboard."},
    {TextId::MenuMaps, u"Maps"},
    {TextId::MapStationOutside, u"xxx lies outside this map."},
    {TextId::MapMeOutside, u"Your own station lies outside this map."},
    {TextId::MapShowWorld, u"Show the world map"},
    {TextId::MapUnreadable, u"The map xxx could not be read."},
    {TextId::MapHint, u"Drag to move the map, turn the wheel to zoom, press 0 for its own size, double-click to close."},
    {TextId::MenuMarkForPaste, u"Mark for paste"},
    {TextId::CaptureSizeMenu, u"Picture size"},
    {TextId::CaptureSizeShown, u"As shown"},
};

} // namespace

Texts Texts::english()
{
    Texts t;
    std::array<bool, kTextCount> filled{};
    for (const Builtin &b : kEnglish) {
        t[b.id] = QString::fromUtf16(b.text);
        filled[std::size_t(b.id)] = true;
    }
    Q_ASSERT(std::all_of(filled.begin(), filled.end(), [](bool f) { return f; }));
    return t;
}

QString Texts::padded(TextId id) const
{
    const QString &text = (*this)[id];
    switch (id) {
    case TextId::LoggedIn:
    case TextId::LoginNeeded:
    case TextId::LoginNotNeeded:
        // A suffix of the source's name: "QRZ.com  (Logged in)".
        return QStringLiteral("  ") + text;
    case TextId::MenuExpand:
    case TextId::MenuCollapse:
        return QStringLiteral("  ") + text + QStringLiteral("  ");
    case TextId::FromMe:
        return u' ' + text + u' ';
    default:
        return text;
    }
}

QString Texts::fill(TextId id, const QString &xxx, const QString &questionMarks) const
{
    return fillIn((*this)[id], xxx, questionMarks);
}

QString Texts::fillSource(TextId id, const QString &questionMarks) const
{
    return QString((*this)[id]).replace(QStringLiteral("???"), questionMarks);
}

QString fillIn(const QString &templ, const QString &xxx, const QString &questionMarks)
{
    // Split first, then join: a replacement that itself holds "xxx" or "???"
    // must not be replaced again.
    QString out;
    const QStringList parts = templ.split(QStringLiteral("xxx"));
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (i)
            out += xxx;
        QString part = parts[i];
        out += questionMarks.isNull() ? part : part.replace(QStringLiteral("???"), questionMarks);
    }
    return out;
}

CurrentTexts::CurrentTexts(QObject *parent)
    : QObject(parent)
{
}

void CurrentTexts::setTexts(const Texts &texts)
{
    m_texts = texts;
    emit changed();
}

} // namespace marvik::i18n
