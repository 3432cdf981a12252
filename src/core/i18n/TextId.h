// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace marvik::i18n {

/// Every text the program shows, by name. The first 57 are the values of a
/// language file, in the file's order (docs/texts.md has the table); the
/// ones after `LanguageFileCount` are Marvik's own and no language file
/// carries them. "xxx" in a text stands for a callsign or a list name,
/// "???" for a source's name or a reason.
enum class TextId : int {
    // Ten menu captions of the main window.
    MenuDatabase,
    MenuExpand,
    MenuSetup,
    MenuAdd,
    MenuLatLon,
    MenuDefaultDatabase,
    MenuNames,
    MenuOnTop,
    MenuLanguage,
    MenuHelp,
    // The two sort options.
    SortByCallsign,
    SortByDateTime,
    // Five more menu captions.
    MenuAbout,
    MenuShowPicture,
    MenuAddNew,
    MenuDelete,
    MenuClear,
    // Two further captions of the main window's controls.
    ButtonGet,
    ButtonMap,
    // The five language names.
    LanguageEnglish,
    LanguageSpanish,
    LanguageGerman,
    LanguageFrench,
    LanguageDutch,
    // Messages and labels.
    ListWord,
    MenuCollapse,
    MenuAddAll,
    MenuPasteList,
    MenuCopyList,
    MenuPrintList,
    ClearListPrompt,
    RenamePrompt,
    AlreadyInList,
    NotFound,
    LoginRequired,
    LoggedIn,
    LoginNeeded,
    LoginNotNeeded,
    MenuName,
    MenuAddCall,
    MenuUpdate,
    MenuManUpdate,
    MenuStreetView,
    MenuSatelliteView,
    GridLocator,
    StreetViewCaption,
    SatelliteViewCaption,
    FromMe,
    CorruptImage1,
    CorruptImage2,
    GetLatLon,
    AddCallToList,
    SaveChanges,
    Updated,
    CapturePaste,
    CaptureSave,
    CaptureCopy,

    LanguageFileCount, ///< the number of values in a language file: 57

    // Marvik's own texts: main window.
    CallsignPlaceholder = LanguageFileCount,
    HeadingCallsign,
    HeadingFirstName,
    HeadingFullName,
    HeadingAddress,
    HeadingCity,
    HeadingCountry,
    MenuLogin,
    AnotherInstance,
    AboutText,
    HelpTitle,
    HelpMissing,
    PictureProgress,
    ButtonCancel,
    WebUnavailable,
    LookingUp,
    // Status line.
    NoOnlineSource,
    PageUnreadable,
    NetworkFailure,
    NoPicture,
    // Lists and files.
    ButtonClose,
    ListDamageTitle,
    ListDamaged,
    ListKeptAs,
    ListUnreadable,
    FileWriteFailed,
    // Start-up.
    LockOtherHost,
    FolderUnusable,
    FolderReadOnly,
    ConfigKept,
    ConfigUnreadable,
    // Sharing with EasyPal.
    PasteByHand,
    // Map window.
    MenuMaps,
    MapStationOutside,
    MapMeOutside,
    MapShowWorld,
    MapUnreadable,
    MapHint,
    // Sharing with EasyPal: the row mark and the capture window.
    MenuMarkForPaste,
    CaptureSizeMenu,
    CaptureSizeShown,

    Count
};

inline constexpr int kLanguageFileValues = int(TextId::LanguageFileCount);
inline constexpr int kTextCount = int(TextId::Count);
static_assert(kLanguageFileValues == 57, "a language file carries 57 values");

} // namespace marvik::i18n
