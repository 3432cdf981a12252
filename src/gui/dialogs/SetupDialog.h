// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/i18n/TextId.h"
#include "core/lookup/services/CallbookLookup.h"

#include <QDialog>

#include <functional>

class QLabel;
class QLineEdit;
class QNetworkAccessManager;
class QTimer;

namespace marvik::app {
class Session;
}
namespace marvik::i18n {
class CurrentTexts;
}

namespace marvik::gui {

class ChameleonButton;

/// `Form2`: the user's own station. The callsign and the position typed
/// here are the program's own at once (every list's azimuths follow); the
/// position can also come from a six-character locator or from the main
/// window's current source, through the dialog's own lookup. The grid
/// locator line shows where the position lies.
class SetupDialog : public QDialog
{
    Q_OBJECT

public:
    /// `credentials` may be null: a data service that needs an account then
    /// cannot answer.
    SetupDialog(app::Session &session, const i18n::CurrentTexts &texts, QNetworkAccessManager &network,
                lookup::CredentialStore *credentials, QWidget *parent = nullptr);

    /// The dialog's own lookup (`ucLookUp`).
    lookup::CallbookLookup *lookUp() const { return m_lookUp; }

private:
    void relabel();
    void callChanged(const QString &text);
    void positionTyped();
    void locatorTyped(const QString &text);
    /// Puts a position into both boxes and makes it the own station's.
    void showPosition(double latitude, double longitude);
    void updateGridLine();
    void getLatLon();
    void answered(const lookup::CallbookAnswer &answer);
    void failed(const QList<lookup::SourceFailure> &failures);
    void timedOut();
    /// Ends a lookup that found no position: the status, the focus back to
    /// the callsign, a beep.
    void giveUp(i18n::TextId status);
    void setStatus(std::function<QString()> status);

    app::Session &m_session;
    const i18n::CurrentTexts &m_texts;
    lookup::CallbookLookup *m_lookUp;
    QTimer *m_timer;
    QLineEdit *m_txtCall;
    QLineEdit *m_txtLat;
    QLineEdit *m_txtLon;
    QLineEdit *m_txtLocator;
    QLabel *m_lblCall;
    QLabel *m_lblLat;
    QLabel *m_lblLon;
    QLabel *m_lblLocator;
    QLabel *m_lblGrid;
    QLabel *m_label4;
    ChameleonButton *m_cmdGetLatLon;
    ChameleonButton *m_cmdClose;
    /// The locator the grid line shows; empty while it shows nothing.
    QString m_gridLocator;
    std::function<QString()> m_status;
    /// The call the lookup under way asks for.
    QString m_asked;
    /// What the last call page said about the log-in, for the status.
    QString m_pageCall;
    bool m_pageLoggedIn = false;
    bool m_filling = false;
};

} // namespace marvik::gui
