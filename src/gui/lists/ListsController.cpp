// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lists/ListsController.h"

#include "core/app/Session.h"
#include "core/i18n/Texts.h"
#include "core/lists/ListEditing.h"
#include "gui/app/Commands.h"
#include "gui/app/MainCommands.h"
#include "gui/app/Messages.h"
#include "gui/app/Selection.h"
#include "gui/lists/ListNamesDialog.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QTimer>

namespace marvik::gui {

using i18n::TextId;
using lists::Column;

ListsController::ListsController(lists::ListStore &lists, app::Session &session, Selection &selection,
                                 const i18n::CurrentTexts &texts, Commands &commands, QWidget *dialogParent,
                                 QObject *parent)
    : QObject(parent)
    , m_lists(lists)
    , m_session(session)
    , m_selection(selection)
    , m_texts(texts)
    , m_commands(commands)
    , m_parent(dialogParent)
{
    setObjectName(QStringLiteral("listsController"));
    const auto hasRow = [this] { return m_selection.currentRow() >= 0; };
    for (int k = 1; k <= lists::kListCount; ++k) {
        connect(commands.action(indexed("mnuAddTo", k)), &QAction::triggered, this, [this, k] { addTo(k); });
        connect(commands.action(indexed("mnuAddAllTo", k)), &QAction::triggered, this, [this, k] { addAllTo(k); });
        commands.provide(indexed("mnuAddTo", k), hasRow);
        commands.provide(indexed("mnuAddAllTo", k));
    }
    connect(commands.action(QStringLiteral("mnu3")), &QAction::triggered, this, &ListsController::deleteRow);
    connect(commands.action(QStringLiteral("mnuClear")), &QAction::triggered, this, &ListsController::clearList);
    connect(commands.action(QStringLiteral("mnuName")), &QAction::triggered, this, &ListsController::changeFirstName);
    connect(commands.action(QStringLiteral("mnuNames")), &QAction::triggered, this, &ListsController::changeListNames);
    commands.provide(QStringLiteral("mnu3"), [=, this] { return hasRow() && !currentListBusy(); });
    commands.provide(QStringLiteral("mnuClear"), [this] { return !currentListBusy(); });
    commands.provide(QStringLiteral("mnuName"), hasRow);
    commands.provide(QStringLiteral("mnuNames"));

    connect(&lists, &lists::ListStore::damageFound, this, &ListsController::collectDamage);
    connect(&lists, &lists::ListStore::writeFailed, this, &ListsController::tellWriteFailure);
    connect(&lists, &lists::ListStore::saveRefused, this, &ListsController::tellNotSaved);
}

void ListsController::switchTo(int list)
{
    if (m_session.isStarting() || list < 1 || list > lists::kListCount)
        return;
    m_selection.setCurrentList(list);
    m_lists.reload(list);
    reportDamage();
    emit focusCallBox();
}

void ListsController::sortBy(int index)
{
    if (m_session.isStarting())
        return;
    emit focusCallBox();
    const int list = m_selection.currentList();
    m_session.settings().sortMode = qint16(index);
    // A copy: the option leaves the sort mode at 0 or 1, whatever the sort does.
    qint16 selector = qint16(index);
    m_lists.sort(list, selector);
    emit scrollToTop(list);
}

void ListsController::addTo(int list)
{
    const std::optional<lists::CallRecord> source = m_selection.record();
    if (!source || !m_lists.model(list))
        return;
    if (!lists::copyRecordTo(*source, *m_lists.model(list), m_lists.loadContext())) {
        // The list is named as the menu item showed it: the chooser line cut
        // before its "(", blanks and all.
        messages::information(m_parent, (*source)[Column::Callsign] + QStringLiteral(" already in ")
                                             + lists::nameBeforeParen(m_lists.chooserLine(list)));
        return;
    }
    m_lists.changed(list);
    emit focusCallBox();
}

void ListsController::addAllTo(int list)
{
    if (!m_lists.model(list))
        return;
    lists::copyAllTo(*m_lists.model(m_selection.currentList()), *m_lists.model(list), m_lists.loadContext());
    m_lists.changed(list);
    emit focusCallBox();
}

bool ListsController::currentListBusy() const
{
    return m_busy && m_busy(m_selection.currentList());
}

void ListsController::deleteRow()
{
    const int row = m_selection.currentRow();
    if (row < 0 || currentListBusy())
        return;
    const int list = m_selection.currentList();
    const QString call = m_lists.model(list)->record(row)[Column::Callsign];
    keepForUndo(list, call);
    lists::deleteRow(*m_lists.model(list), row);
    m_lists.changed(list);
    emit note(m_texts.fill(TextId::RowDeletedNote, call));
    emit focusCallBox();
}

void ListsController::keepForUndo(int list, const QString &what)
{
    const lists::CallListModel &model = *m_lists.model(list);
    m_undo = {list, {}, what};
    m_undo.rows.reserve(model.rowCount());
    for (int r = 0; r < model.rowCount(); ++r)
        m_undo.rows.append(model.record(r));
}

void ListsController::undo()
{
    if (m_undo.list == 0 || m_lists.isReading())
        return;
    Undo undo = std::exchange(m_undo, {});
    m_lists.model(undo.list)->setRecords(undo.rows);
    m_lists.changed(undo.list);
    emit note(m_texts.fill(TextId::UndoneNote, undo.what));
}

void ListsController::clearList()
{
    if (currentListBusy())
        return;
    const int list = m_selection.currentList();
    const QString name = lists::nameBeforeParen(m_lists.chooserLine(list));
    if (!messages::question(m_parent, m_texts.fill(TextId::ClearListPrompt, name)))
        return;
    keepForUndo(list, name.trimmed());
    // The file keeps its rows until the next save.
    m_lists.model(list)->clear();
    m_lists.countChanged(list);
    emit note(m_texts.fill(TextId::ListClearedNote, name.trimmed()));
}

void ListsController::changeFirstName()
{
    const std::optional<lists::CallRecord> record = m_selection.record();
    if (!record)
        return;
    const QString call = (*record)[Column::Callsign];
    const std::optional<QString> answer =
        messages::input(m_parent, m_texts.fill(TextId::RenamePrompt, call), (*record)[Column::FirstName]);
    if (!answer || answer->isEmpty())
        return;
    for (int n = 1; n <= lists::kListCount; ++n) {
        if (lists::renameFirstName(*m_lists.model(n), call, *answer) > 0)
            m_lists.save(n);
    }
}

void ListsController::changeListNames()
{
    QStringList names;
    for (const QString &name : m_session.settings().listNames)
        names.append(name);
    ListNamesDialog dialog(names, m_texts, m_parent);
    // Close, Enter or the window's own close button give the boxes' names;
    // Cancel and Escape leave them as they were.
    if (dialog.exec() == QDialog::Rejected && dialog.cancelled())
        return;
    const QStringList changed = dialog.names();
    for (int n = 1; n <= lists::kListCount; ++n) {
        // A list is never left without a name: an emptied box gives the
        // name a list without one gets at start-up.
        QString name = changed.value(n - 1);
        if (name.trimmed().isEmpty())
            name = lists::defaultListName(m_texts[TextId::ListWord], n);
        m_session.settings().listNames[std::size_t(n - 1)] = name;
        m_lists.countChanged(n);
    }
}

void ListsController::collectDamage(const lists::DamageReport &report)
{
    if (report.guarded) {
        m_guarded.append(report);
    } else {
        QString line = m_texts.fill(TextId::ListDamaged, QDir::toNativeSeparators(report.path),
                                    QString::number(report.badLine));
        if (!report.keptAs.isEmpty())
            line += u' ' + m_texts.fill(TextId::ListKeptAs, QDir::toNativeSeparators(report.keptAs));
        m_damage.append(line);
    }
    // Lists arrive from their reader after the window shows; each report
    // waits for the event that brought it to end.
    QTimer::singleShot(0, this, &ListsController::reportDamage);
}

void ListsController::reportDamage()
{
    if (m_session.isStarting())
        return;
    if (!m_damage.isEmpty()) {
        const QString text =
            m_texts[TextId::ListDamageTitle] + QStringLiteral("\n\n") + m_damage.join(QStringLiteral("\n\n"));
        m_damage.clear();
        messages::exclamation(m_parent, text);
    }
    while (!m_guarded.isEmpty())
        askAboutGuarded(m_guarded.takeFirst());
}

void ListsController::askAboutGuarded(lists::DamageReport report)
{
    enum Choice { TryAgain, CopyElsewhere, Leave };
    for (;;) {
        const QString path = QDir::toNativeSeparators(report.path);
        QString text;
        QStringList buttons{m_texts[TextId::ButtonTryAgain]};
        if (!report.opened) {
            text = m_texts.fill(TextId::ListUnreadable, path, report.error) + QStringLiteral("\n\n")
                   + m_texts[TextId::ListUnreadableGuard];
        } else {
            text = m_texts.fill(TextId::ListDamaged, path, QString::number(report.badLine)) + QStringLiteral("\n\n")
                   + m_texts.fill(TextId::ListNoCopy, report.copyError);
            buttons << m_texts[TextId::ButtonCopyElsewhere];
        }
        buttons << m_texts[TextId::ButtonLeaveFile];
        int choice = messages::choose(m_parent, text, buttons, int(buttons.size()) - 1);
        if (!report.opened && choice == 1)
            choice = Leave;
        if (choice == Leave)
            return;
        if (choice == TryAgain) {
            if (m_lists.retryGuarded(report.list, &report)) {
                if (!report.keptAs.isEmpty())
                    messages::information(m_parent, m_texts.fill(TextId::ListWritableAgain, path,
                                                                 QDir::toNativeSeparators(report.keptAs)));
                return;
            }
            continue;
        }
        const QString title = m_texts.fill(TextId::CopyElsewhereTitle, QFileInfo(report.path).fileName());
        const QString target = m_askPath ? m_askPath(title, QFileInfo(report.path).fileName())
                                         : QFileDialog::getSaveFileName(m_parent, title, QFileInfo(report.path).fileName());
        if (target.isEmpty())
            continue;
        QString why;
        if (m_lists.keepCopyAt(report.list, target, &why)) {
            messages::information(m_parent, m_texts.fill(TextId::ListWritableAgain, path, QDir::toNativeSeparators(target)));
            return;
        }
        report.copyError = why;
    }
}

void ListsController::tellNotSaved(int list)
{
    emit note(m_texts.fill(TextId::ListNotSaved, lists::nameBeforeParen(m_lists.chooserLine(list)).trimmed()));
}

void ListsController::tellWriteFailure(const QString &path, const QString &why)
{
    messages::exclamation(m_parent, m_texts.fill(TextId::FileWriteFailed, QDir::toNativeSeparators(path), why));
}

} // namespace marvik::gui
