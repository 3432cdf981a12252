// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lists/ListStore.h"

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <QStringList>

#include <functional>


namespace marvik::app {
class Session;
}
namespace marvik::i18n {
class CurrentTexts;
}

namespace marvik::gui {

class Commands;
class Selection;

/// The list commands: switching lists, the sort options, copying a row or
/// all rows to another list, deleting, clearing, renaming a first name
/// everywhere and the list names; and telling the user about list files
/// that could not be read or written.
class ListsController : public QObject
{
    Q_OBJECT

public:
    ListsController(lists::ListStore &lists, app::Session &session, Selection &selection,
                    const i18n::CurrentTexts &texts, Commands &commands, QWidget *dialogParent,
                    QObject *parent = nullptr);

    /// The list chooser picked list 1..5.
    void switchTo(int list);
    /// A sort option was clicked.
    void sortBy(int index);
    /// Damage found while starting is told once the window shows.
    void reportDamage();

    /// Whether list 1..5 is in the middle of work that must not lose rows
    /// under it (a whole-list update): its rows cannot be deleted or
    /// cleared meanwhile.
    using BusyList = std::function<bool(int list)>;
    void setBusyList(BusyList busy) { m_busy = std::move(busy); }
    /// Asks where to keep a copy of a list file (a file dialog; tests
    /// answer it themselves). Empty: the user cancelled.
    using AskPath = std::function<QString(const QString &title, const QString &suggested)>;
    void setAskPath(AskPath ask) { m_askPath = std::move(ask); }
    /// Ctrl+Z in a list: the rows before the last delete or clear come back.
    void undo();

signals:
    /// A quiet note for the window's foot.
    void note(const QString &text);
    /// Give the keyboard focus back to the callsign box.
    void focusCallBox();
    void scrollToTop(int list);

private:
    void addTo(int list);
    void addAllTo(int list);
    void deleteRow();
    void clearList();
    void changeFirstName();
    /// Keeps list n's rows as they are, for undo.
    void keepForUndo(int list, const QString &what);
    void changeListNames();
    void collectDamage(const lists::DamageReport &report);
    /// A list that must not be written: told plainly, and the user chooses.
    void askAboutGuarded(lists::DamageReport report);
    void tellNotSaved(int list);
    void tellWriteFailure(const QString &path, const QString &why);
    bool currentListBusy() const;

    lists::ListStore &m_lists;
    app::Session &m_session;
    Selection &m_selection;
    const i18n::CurrentTexts &m_texts;
    Commands &m_commands;
    QPointer<QWidget> m_parent;
    QStringList m_damage;
    QList<lists::DamageReport> m_guarded;
    /// The rows a list held before its last delete or clear (one step).
    struct Undo
    {
        int list = 0;
        QList<lists::CallRecord> rows;
        QString what;
    };
    Undo m_undo;
    BusyList m_busy;
    AskPath m_askPath;
};

} // namespace marvik::gui
