// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/share/PasteToEasyPal.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <memory>

class QWidget;

namespace marvik::app {
class Session;
}
namespace marvik::i18n {
class CurrentTexts;
}
namespace marvik::lists {
class ListStore;
}
namespace marvik::lookup {
class CookieJar;
}

namespace marvik::gui {

class CaptureWindow;
class Commands;
class Selection;
class StatusLine;

/// The sharing part: rows marked for paste ("Mark for paste", Space), the
/// list text pasted into EasyPal (`mnu4`), copied (`mnu5`) and printed
/// (`mnu6`), and the street and satellite views (`mnuStView`) in the
/// capture window, whose picture goes to EasyPal the same way.
class ShareController : public QObject
{
    Q_OBJECT

public:
    ShareController(lists::ListStore &lists, app::Session &session, Selection &selection, StatusLine &status,
                    const i18n::CurrentTexts &texts, Commands &commands, lookup::CookieJar &jar,
                    QWidget *dialogParent, QObject *parent = nullptr);
    ~ShareController() override;

    /// The paste text of the current list, as it goes to the clipboard.
    QString listText() const;
    /// Whether a row of the current list is marked for paste.
    bool isMarked(int row) const;
    CaptureWindow *captureWindow() const;
    /// Shut-down: the capture window closes.
    void closeWindow();

private:
    enum class PasteFrom { List, Capture };

    void toggleMark();
    void showMarkState();
    void keepMarks(int list);
    void restoreMarks(int list);
    void pasteList();
    void copyList();
    void printList();
    void showView(int menuIndex);
    void pasteCapture();
    bool isPasting() const;
    bool startPaste(PasteFrom from);
    void pasteRunning(bool running);
    void pasteFinished(share::PasteToEasyPal::Outcome outcome);

    lists::ListStore &m_lists;
    app::Session &m_session;
    Selection &m_selection;
    StatusLine &m_status;
    const i18n::CurrentTexts &m_texts;
    Commands &m_commands;
    lookup::CookieJar &m_jar;
    QPointer<QWidget> m_parent;

    std::unique_ptr<share::TransmitterWindow> m_transmitter;
    share::PasteToEasyPal *m_paste = nullptr;
    PasteFrom m_pasteFrom = PasteFrom::List;
    QPointer<CaptureWindow> m_capture;
    /// The marked callsigns of a list while its file is read again.
    QHash<int, QStringList> m_keptMarks;
};

} // namespace marvik::gui
