// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/share/ShareController.h"

#include "core/app/Session.h"
#include "core/i18n/Texts.h"
#include "core/lists/ListStore.h"
#include "core/share/ListText.h"
#include "core/share/StationView.h"
#include "gui/app/Commands.h"
#include "gui/app/MainCommands.h"
#include "gui/app/Selection.h"
#include "gui/app/StatusLine.h"
#include "gui/share/CaptureWindow.h"
#include "gui/share/ListPrinter.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>

namespace marvik::gui {

using lists::Column;

ShareController::ShareController(lists::ListStore &lists, app::Session &session, Selection &selection,
                                 StatusLine &status, const i18n::CurrentTexts &texts, Commands &commands,
                                 lookup::CookieJar &jar, QWidget *dialogParent, QObject *parent)
    : QObject(parent)
    , m_lists(lists)
    , m_session(session)
    , m_selection(selection)
    , m_status(status)
    , m_texts(texts)
    , m_commands(commands)
    , m_jar(jar)
    , m_parent(dialogParent)
{
    setObjectName(QStringLiteral("shareController"));

    const auto hasRow = [this] { return m_selection.currentRow() >= 0; };
    connect(commands.action(kMarkCommand), &QAction::triggered, this, &ShareController::toggleMark);
    commands.provide(kMarkCommand, hasRow);
    connect(&selection, &Selection::currentChanged, this, &ShareController::showMarkState);

    connect(commands.action(QStringLiteral("mnu4")), &QAction::triggered, this, &ShareController::pasteList);
    connect(commands.action(QStringLiteral("mnu5")), &QAction::triggered, this, &ShareController::copyList);
    connect(commands.action(QStringLiteral("mnu6")), &QAction::triggered, this, &ShareController::printList);
    // One paste at a time: a second would find the clipboard changed under
    // the first.
    commands.provide(QStringLiteral("mnu4"), [this] { return !isPasting(); });
    commands.provide(QStringLiteral("mnu5"));
    commands.provide(QStringLiteral("mnu6"));

    for (int index = 0; index < 2; ++index) {
        const QString name = indexed("mnuStView", index);
        connect(commands.action(name), &QAction::triggered, this, [this, index] { showView(index); });
        commands.provide(name, [this] { return rowHasLongitude(m_selection); });
    }

    // Marks are no part of a list file: reading a list again (a switch to
    // it) would drop them, so they are carried over by callsign.
    const std::array<lists::CallListModel *, lists::kListCount> models = lists.models();
    for (int n = 1; n <= lists::kListCount; ++n) {
        lists::CallListModel *model = models[std::size_t(n - 1)];
        connect(model, &QAbstractItemModel::modelAboutToBeReset, this, [this, n] { keepMarks(n); });
        connect(model, &QAbstractItemModel::modelReset, this, [this, n] { restoreMarks(n); });
    }
}

ShareController::~ShareController()
{
    delete m_capture;
    // Before the backend it drives.
    delete m_paste;
}

// ---------------------------------------------------------------- marks

bool ShareController::isMarked(int row) const
{
    if (row < 0)
        return false;
    const lists::CallListModel *model = m_lists.model(m_selection.currentList());
    return model && row < model->rowCount() && model->record(row).callsignBack == lists::kMarkColour;
}

void ShareController::toggleMark()
{
    const int row = m_selection.currentRow();
    lists::CallListModel *model = m_lists.model(m_selection.currentList());
    if (row < 0 || !model)
        return;
    model->setCellBackground(row, Column::Callsign, isMarked(row) ? QColor() : lists::kMarkColour);
    showMarkState();
}

void ShareController::showMarkState()
{
    m_commands.action(kMarkCommand)->setChecked(isMarked(m_selection.currentRow()));
}

void ShareController::keepMarks(int list)
{
    QStringList marked;
    const lists::CallListModel *model = m_lists.models()[std::size_t(list - 1)];
    for (int row = 0; row < model->rowCount(); ++row) {
        if (model->cellBackground(row, Column::Callsign) == lists::kMarkColour)
            marked.append(model->field(row, Column::Callsign));
    }
    if (!marked.isEmpty())
        m_keptMarks.insert(list, marked);
}

void ShareController::restoreMarks(int list)
{
    const QStringList marked = m_keptMarks.take(list);
    if (marked.isEmpty())
        return;
    lists::CallListModel *model = m_lists.models()[std::size_t(list - 1)];
    for (int row = 0; row < model->rowCount(); ++row) {
        if (marked.contains(model->record(row)[Column::Callsign]))
            model->setCellBackground(row, Column::Callsign, lists::kMarkColour);
    }
}

// ---------------------------------------------------------------- the list text

QString ShareController::listText() const
{
    const lists::CallListModel *model = m_lists.model(m_selection.currentList());
    return share::composeListText(model ? share::listTextRows(*model) : QList<share::ListTextRow>(),
                                  share::listTextFont());
}

void ShareController::copyList()
{
    QGuiApplication::clipboard()->setText(listText());
}

void ShareController::pasteList()
{
    if (isPasting())
        return;
    QGuiApplication::clipboard()->setText(listText());
    startPaste(PasteFrom::List);
}

void ShareController::printList()
{
    printListWithDialog(listText(), m_parent);
}

// ---------------------------------------------------------------- EasyPal

bool ShareController::isPasting() const
{
    return m_paste && m_paste->isRunning();
}

bool ShareController::startPaste(PasteFrom from)
{
    if (!m_paste) {
        // The window system is asked only when a paste first needs it, not
        // at every start of Marvik.
        m_transmitter = share::createTransmitterWindow();
        m_paste = new share::PasteToEasyPal(m_transmitter.get(), this);
        connect(m_paste, &share::PasteToEasyPal::finished, this, &ShareController::pasteFinished);
    }
    if (!m_paste->start())
        return false;
    m_pasteFrom = from;
    pasteRunning(true);
    return true;
}

void ShareController::pasteRunning(bool running)
{
    m_commands.refresh();
    if (m_capture)
        m_capture->setPasteEnabled(!running);
}

void ShareController::pasteFinished(share::PasteToEasyPal::Outcome outcome)
{
    pasteRunning(false);
    const QString hint = share::PasteToEasyPal::hint(outcome, m_texts.texts());
    if (hint.isEmpty())
        return;
    if (m_pasteFrom == PasteFrom::Capture && m_capture && m_capture->isVisible())
        m_capture->showNote(hint);
    else
        m_status.note(hint);
}

// ---------------------------------------------------------------- views

CaptureWindow *ShareController::captureWindow() const
{
    return m_capture;
}

void ShareController::showView(int menuIndex)
{
    const std::optional<lists::CallRecord> record = m_selection.record();
    if (!record)
        return;
    const share::StationView view = share::stationView(*record, share::viewKindForMenu(menuIndex), m_session.sources());
    m_selection.setStationPosition(view.position);
    if (!m_capture) {
        m_capture = new CaptureWindow(m_texts, m_jar, m_session.store(), m_session.dataFolder().path());
        connect(m_capture, &CaptureWindow::pasteRequested, this, &ShareController::pasteCapture);
        m_capture->setPasteEnabled(!isPasting());
    }
    m_capture->open(view.request);
}

void ShareController::pasteCapture()
{
    startPaste(PasteFrom::Capture);
}

void ShareController::closeWindow()
{
    if (m_capture)
        m_capture->close();
}

} // namespace marvik::gui
