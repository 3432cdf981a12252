// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/logs/ListRefresh.h"
#include "core/lookup/Sources.h"
#include "gui/logs/RefreshProgress.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>

class QNetworkAccessManager;

namespace marvik::app {
class Session;
}
namespace marvik::i18n {
class CurrentTexts;
}
namespace marvik::lists {
class ListStore;
}

namespace marvik::gui {

class Commands;
class Selection;
class StatusLine;

/// The list menu's log commands: importing an ADIF log into the current
/// list, exporting the list as one, and updating every call of the list
/// from the current source while the window goes on being used, with its
/// progress and its own Cancel at the window's foot.
class LogsController : public QObject
{
    Q_OBJECT

public:
    /// A file the user is asked for.
    struct FileQuestion
    {
        enum class Kind { Open, Save };
        Kind kind = Kind::Open;
        QString title;
        QString suggested; ///< a folder, or a file to start from
        QString filters;   ///< QFileDialog's form: "ADIF logs (*.adi *.adx);;All files (*)"
    };
    /// Answers a FileQuestion with a path, or nothing when the user gave
    /// none. Tests answer here instead of a file dialog.
    using FileChooser = std::function<QString(const FileQuestion &question)>;

    LogsController(lists::ListStore &lists, app::Session &session, Selection &selection, StatusLine &status,
                   const i18n::CurrentTexts &texts, Commands &commands, QNetworkAccessManager &network,
                   QWidget *dialogParent, QObject *parent = nullptr);
    ~LogsController() override;

    /// Replaces the file dialogs (QFileDialog by default).
    void setFileChooser(FileChooser chooser) { m_chooseFile = std::move(chooser); }

    /// Whether a whole-list update of list 1..5 is under way.
    bool isRefreshing(int list) const;
    /// The update under way or the last one; null before the first.
    logs::ListRefresh *refresh() const { return m_refresh; }
    RefreshProgress *progressDisplay() const { return m_progress; }

    /// Stops the update under way; the next one on that list goes on from here.
    void cancelUpdate();

signals:
    /// A row was written from an answer: its picture should be fetched as
    /// after a single lookup.
    void pictureWanted(const QString &callSign);

private:
    void importAdif();
    void exportAdif();
    void updateAll();
    void showProgress(int n, int m, const QString &call, qint64 msecsLeft);
    void updateEnded(const logs::RefreshSummary &summary);
    logs::ListRefresh::StartLookup attachLookup(logs::ListRefresh &refresh, lookup::Source source);
    void relabel();
    QString listName(int list) const;
    QString folder() const;
    void keepFolder(const QString &file);

    lists::ListStore &m_lists;
    app::Session &m_session;
    Selection &m_selection;
    StatusLine &m_status;
    const i18n::CurrentTexts &m_texts;
    Commands &m_commands;
    QNetworkAccessManager &m_network;
    QPointer<QWidget> m_parent;
    FileChooser m_chooseFile;
    QPointer<RefreshProgress> m_progress;

    // The update under way (or the last one) and what it is about.
    logs::ListRefresh *m_refresh = nullptr;
    int m_refreshList = 0;
    QString m_refreshSource;
    int m_skipDays = 0;
};

} // namespace marvik::gui
