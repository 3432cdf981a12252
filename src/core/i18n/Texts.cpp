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
    {TextId::NetworkFailure, u"xxx not looked up: ??? could not be reached"},
    {TextId::NoPicture, u"No picture of xxx: ???"},
    {TextId::ButtonClose, u"Close"},
    {TextId::ListDamageTitle, u"A list file is damaged:"},
    {TextId::ListKeptAs, u"The whole file was kept as xxx."},
    {TextId::ListDamaged, u"xxx, line ???: fewer than eleven fields; the rest of the file was not loaded."},
    {TextId::ListUnreadable, u"xxx could not be read: ???"},
    {TextId::ListNoCopy, u"No copy of the whole file could be kept: xxx.\n\nSo that nothing the file holds is lost, "
                         u"Marvik will not write this list until a copy is kept. You can free some room and try "
                         u"again, keep a copy elsewhere, or leave the file as it is (changes to this list are then "
                         u"not saved)."},
    {TextId::ListUnreadableGuard, u"Marvik shows this list empty and will not write its file, so the file stays as "
                                  u"it is. Make the file readable, then choose Try again."},
    {TextId::ListNotSaved, u"xxx is not saved: its file was not read whole, and Marvik leaves it as it is."},
    {TextId::ListWritableAgain, u"xxx: the whole file was kept as ???. The list is saved again from now on."},
    {TextId::ButtonTryAgain, u"&Try again"},
    {TextId::ButtonCopyElsewhere, u"&Keep a copy elsewhere\u2026"},
    {TextId::ButtonLeaveFile, u"&Leave the file as it is"},
    {TextId::CopyElsewhereTitle, u"Keep a copy of xxx"},
    {TextId::RowDeletedNote, u"xxx deleted. Ctrl+Z in the list brings it back."},
    {TextId::ListClearedNote, u"xxx cleared. Ctrl+Z in the list brings the rows back."},
    {TextId::UndoneNote, u"Brought back: xxx"},
    {TextId::AboutDetails,
     u"Callsign lists, callbook look-ups, maps and views for picture exchanges with EasyPal.<br><br>"
     u"Free software under the GNU General Public License, version 3 or later; it comes with "
     u"ABSOLUTELY NO WARRANTY.<br><br>"
     u"Maps made from Natural Earth data (public domain, naturalearthdata.com). "
     u"Station data from the callbooks you choose: eHam.net, QRZ.com, QRZCQ, HamQTH, Callook and HamCall. "
     u"Built with Qt xxx."},
    {TextId::HelpWindowTitle, u"Marvik Help"},
    {TextId::FieldTooLong, u"This field is too long to edit here; it is kept as it is."},
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
    // Callbook services in the main window, and the accounts dialog.
    {TextId::MenuAccounts, u"Callbook accounts\u2026"},
    {TextId::MenuClearCache, u"Clear lookup cache"},
    {TextId::AnsweredBy, u"xxx from ???"},
    {TextId::AnsweredCached, u"xxx cached ???"},
    {TextId::AccountNeeded, u"xxx not looked up: ??? needs a working account (Setup, Callbook accounts)"},
    {TextId::QuotaUsedUp, u"xxx not looked up: today's lookups on ??? are used up"},
    {TextId::LookupCancelled, u"Lookup of xxx cancelled"},
    {TextId::CacheSetAside, u"The lookup cache was damaged. It was set aside as xxx and a new one was started."},
    {TextId::CacheCleared, u"Lookup cache cleared: xxx results removed"},
    {TextId::AccountsTitle, u"Callbook accounts"},
    {TextId::AccountsUser, u"User name"},
    {TextId::AccountsPassword, u"Password"},
    {TextId::AccountsVia, u"Read from"},
    {TextId::ViaPage, u"Web page"},
    {TextId::ViaService, u"Data service"},
    {TextId::NoAccountNeeded, u"No account needed"},
    {TextId::PasswordStored, u"(stored)"},
    {TextId::ButtonTest, u"&Test"},
    {TextId::TestLoggingIn, u"Logging in\u2026"},
    {TextId::TestLoggedIn, u"Logged in."},
    {TextId::TestSubscription, u"Subscription: xxx."},
    {TextId::TestLookupsToday, u"Lookups today: xxx."},
    {TextId::TestRefused, u"Refused: xxx"},
    {TextId::TestUnreachable, u"Could not be reached: xxx"},
    {TextId::NoKeyring, u"No keyring service is running, so Marvik cannot store passwords safely on this computer."},
    {TextId::KeepForRun, u"Keep the passwords for this run only"},
    {TextId::FallbackTitle, u"When the chosen callbook cannot answer"},
    {TextId::FallbackHint, u"Ask the ticked callbooks, from the top down:"},
    {TextId::ButtonUp, u"&Up"},
    {TextId::ButtonDown, u"&Down"},
    {TextId::CacheTitle, u"Lookup cache"},
    {TextId::CacheFreshDays, u"Cached results answer for (days):"},
    {TextId::CacheMaxEntries, u"Most results kept:"},
    {TextId::CacheCount, u"xxx results cached"},
    {TextId::ButtonClearCache, u"C&lear cache"},
    {TextId::ButtonOk, u"OK"},
    // Dialogs.
    {TextId::AddEditCaption, u"Enter callsign to add or edit"},
    {TextId::FieldCallsign, u"Callsign"},
    {TextId::FieldNickname, u"Nickname"},
    {TextId::FieldAzimuth, u"Azimuth"},
    {TextId::FieldName, u"Name"},
    {TextId::FieldAddress, u"Address"},
    {TextId::FieldCity, u"City/State"},
    {TextId::FieldCountry, u"Country"},
    {TextId::FieldLatitude, u"Latitude"},
    {TextId::FieldLongitude, u"Longitude"},
    {TextId::InLists, u"xxx is in list ???"},
    {TextId::SetupFromLocator, u"From locator"},
    {TextId::SetupLocatorHint, u"Type a six-character locator such as JO62qm: the position becomes the centre of its square."},
    {TextId::SetupNotFound, u"Not found"},
    {TextId::SetupLoginRequired, u"Login required"},
    {TextId::NewVersionQuestion, u"A new version of Marvik is out: xxx.\nDo you want to open the download page?"},
    {TextId::ButtonYes, u"&Yes"},
    {TextId::ButtonNo, u"&No"},

    // Lists and logs: ADIF import and export, refreshing a whole list.
    {TextId::MenuImportAdif, u"Import from ADIF\u2026"},
    {TextId::MenuExportAdif, u"Export to ADIF\u2026"},
    {TextId::MenuUpdateAll, u"Update all from ???"},
    {TextId::AdifLogs, u"ADIF logs"},
    {TextId::AdiFiles, u"ADIF, tagged text"},
    {TextId::AdxFiles, u"ADIF, XML"},
    {TextId::AllFiles, u"All files"},
    {TextId::ImportTitle, u"Import contacts from an ADIF log"},
    {TextId::ImportUnreadable, u"xxx could not be read: ???"},
    {TextId::ImportNoAdif, u"xxx holds no ADIF log."},
    {TextId::ImportDone, u"Imported xxx into ???."},
    {TextId::ImportContacts, u"xxx contacts with ??? different calls."},
    {TextId::ImportAdded, u"Added: xxx"},
    {TextId::ImportAlreadyThere, u"Already in the list: xxx (???" u" of them gained fields)"},
    {TextId::ImportSkipped, u"Skipped: xxx"},
    {TextId::ImportSkippedNoCall, u"line xxx: no callsign"},
    {TextId::ImportSkippedBadCall, u"line xxx: \u201c???\u201d is not a callsign"},
    {TextId::ImportMore, u"and xxx more"},
    {TextId::ImportProblems, u"The file is malformed in xxx places:"},
    {TextId::AdifBadLength, u"line xxx: the length of ??? is not a number"},
    {TextId::AdifBadName, u"line xxx: a field without a name, or with one too long"},
    {TextId::AdifCutShort, u"line xxx: the file ends inside the value of ???"},
    {TextId::AdifUnclearLength, u"line xxx: the length of ??? fits neither bytes nor characters"},
    {TextId::AdifMissingEndOfRecord, u"line xxx: the last record has no <EOR>"},
    {TextId::AdifLateHeaderEnd, u"line xxx: an <EOH> after the first record"},
    {TextId::AdifNotAdx, u"line xxx: the XML is not an ADX log (???" u")"},
    {TextId::AdifXmlError, u"line xxx: malformed XML: ???"},
    {TextId::ExportTitle, u"Export to ADIF"},
    {TextId::ExportList, u"xxx: ??? calls"},
    {TextId::ExportFile, u"&File"},
    {TextId::ExportBrowse, u"&Browse\u2026"},
    {TextId::ExportFormat, u"Form"},
    {TextId::ExportAdi, u"&ADI (tagged text)"},
    {TextId::ExportAdx, u"AD&X (XML)"},
    {TextId::ExportBand, u"Ba&nd"},
    {TextId::ExportNoBand, u"none"},
    {TextId::ExportMode, u"&Mode"},
    {TextId::ExportButton, u"&Export"},
    {TextId::ExportSaveTitle, u"Export the list to an ADIF log"},
    {TextId::ExportDone, u"xxx calls written to ???"},
    {TextId::RefreshResume, u"The last update of all calls in xxx stopped after ???. Go on from there?\n\n"
                            u"(No starts again with the first call.)"},
    {TextId::RefreshProgress, u"call xxx of ???"},
    {TextId::RefreshCallLeft, u"xxx, about ??? left"},
    {TextId::RefreshTooltip, u"Updating every call of xxx from ???"},
    {TextId::RefreshDone, u"The update of xxx from ??? is finished."},
    {TextId::RefreshQuota, u"The update of xxx stopped: ??? allows no more lookups today."},
    {TextId::RefreshFailing, u"The update of xxx stopped: too many lookups in a row failed (???" u")."},
    {TextId::RefreshWriteFailed, u"The update of xxx stopped: the list could not be saved."},
    {TextId::RefreshCancelled, u"The update of xxx stopped with ??? calls to go; the next update goes on from there."},
    {TextId::RefreshUpdated, u"Updated: xxx"},
    {TextId::RefreshNotFound, u"Not found: xxx"},
    {TextId::RefreshFailed, u"Failed: xxx"},
    {TextId::RefreshGone, u"No longer in the list: xxx"},
    {TextId::RefreshSkipped, u"Skipped, looked up within the last ??? days: xxx"},
    {TextId::RefreshNotReached, u"Not reached: xxx (the next update goes on from there)"},
    {TextId::RefreshResumed, u"This update went on from an earlier one; the counts include it."},
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
