// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/dialogs/SetupDialog.h"

#include "core/app/Callsign.h"
#include "core/app/Log.h"
#include "core/app/Number.h"
#include "core/app/Session.h"
#include "core/dialogs/OwnStation.h"
#include "core/i18n/Texts.h"
#include "core/lookup/LookUp.h"
#include "gui/dialogs/Beep.h"
#include "gui/dialogs/DialogButtons.h"
#include "gui/widgets/ChameleonButton.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QVBoxLayout>

namespace marvik::gui {

using i18n::TextId;

namespace {
// The dialog gives up on a lookup after this long, as the main window does.
constexpr int kTimeoutMs = 12000;
} // namespace

SetupDialog::SetupDialog(app::Session &session, const i18n::CurrentTexts &texts, QNetworkAccessManager &network,
                         lookup::CredentialStore *credentials, QWidget *parent)
    : QDialog(parent)
    , m_session(session)
    , m_texts(texts)
    , m_lookUp(new lookup::CallbookLookup(&network, credentials, nullptr, this))
    , m_timer(new QTimer(this))
{
    setObjectName(QStringLiteral("Form2"));
    m_lookUp->setObjectName(QStringLiteral("ucLookUp"));
    // Timer1 decides when to give up; the lookup's own limits lie beyond it.
    m_lookUp->setSourceTimeout(kTimeoutMs + 1000);
    m_lookUp->setDeadline(kTimeoutMs + 1000);
    m_timer->setObjectName(QStringLiteral("Timer1"));
    m_timer->setSingleShot(true);
    m_timer->setInterval(kTimeoutMs);

    const auto edit = [this](const char *name) {
        auto *box = new QLineEdit(this);
        box->setObjectName(QLatin1String(name));
        box->setMinimumWidth(fontMetrics().averageCharWidth() * 24);
        return box;
    };
    m_txtCall = edit("txtCall");
    m_txtLat = edit("txtLat");
    m_txtLon = edit("txtLon");
    m_txtLocator = edit("txtLocator");
    m_txtLocator->setMaxLength(6);
    m_lblCall = new QLabel(this);
    m_lblLat = new QLabel(this);
    m_lblLon = new QLabel(this);
    m_lblLocator = new QLabel(this);
    m_lblCall->setBuddy(m_txtCall);
    m_lblLat->setBuddy(m_txtLat);
    m_lblLon->setBuddy(m_txtLon);
    m_lblLocator->setBuddy(m_txtLocator);
    m_lblGrid = new QLabel(this);
    m_lblGrid->setObjectName(QStringLiteral("lblGrid"));
    m_label4 = new QLabel(this);
    m_label4->setObjectName(QStringLiteral("Label4"));
    // Both lines keep their height while empty, so the dialog does not jump.
    m_lblGrid->setMinimumHeight(fontMetrics().height());
    m_label4->setMinimumHeight(fontMetrics().height());
    m_cmdGetLatLon = dialogButton(QStringLiteral("cmdGetLatLon"), this);
    m_cmdClose = dialogButton(QStringLiteral("cmdClose"), this);

    auto *grid = new QGridLayout;
    grid->addWidget(m_lblCall, 0, 0);
    grid->addWidget(m_txtCall, 0, 1);
    grid->addWidget(m_lblLat, 1, 0);
    grid->addWidget(m_txtLat, 1, 1);
    grid->addWidget(m_lblLon, 2, 0);
    grid->addWidget(m_txtLon, 2, 1);
    grid->addWidget(m_lblLocator, 3, 0);
    grid->addWidget(m_txtLocator, 3, 1);
    grid->addWidget(m_lblGrid, 4, 0, 1, 2);
    grid->setColumnStretch(1, 1);
    auto *getRow = new QHBoxLayout;
    getRow->addWidget(m_cmdGetLatLon);
    getRow->addStretch();
    auto *closeRow = new QHBoxLayout;
    closeRow->addStretch();
    closeRow->addWidget(m_cmdClose);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addSpacing(4);
    layout->addLayout(getRow);
    layout->addWidget(m_label4);
    layout->addLayout(closeRow);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    setTabOrder(m_txtCall, m_txtLat);
    setTabOrder(m_txtLat, m_txtLon);
    setTabOrder(m_txtLon, m_txtLocator);
    setTabOrder(m_txtLocator, m_cmdGetLatLon);
    setTabOrder(m_cmdGetLatLon, m_cmdClose);

    // The own station as it stands; nothing changes until the user types.
    const app::Settings &settings = m_session.settings();
    m_filling = true;
    m_txtCall->setText(settings.ownCallsign);
    if (m_session.me().isSet()) {
        m_txtLat->setText(app::shortestDecimal(m_session.me().latitude));
        m_txtLon->setText(app::shortestDecimal(m_session.me().longitude));
    }
    m_filling = false;
    m_cmdGetLatLon->setEnabled(!m_txtCall->text().isEmpty());
    // No position yet: no locator of 0, 0 either.
    if (m_session.me().isSet())
        updateGridLine();
    relabel();

    connect(m_txtCall, &QLineEdit::textChanged, this, &SetupDialog::callChanged);
    connect(m_txtLat, &QLineEdit::textChanged, this, &SetupDialog::positionTyped);
    connect(m_txtLon, &QLineEdit::textChanged, this, &SetupDialog::positionTyped);
    // A position typed by hand is no longer the locator's.
    connect(m_txtLat, &QLineEdit::textEdited, m_txtLocator, &QLineEdit::clear);
    connect(m_txtLon, &QLineEdit::textEdited, m_txtLocator, &QLineEdit::clear);
    connect(m_txtLocator, &QLineEdit::textEdited, this, &SetupDialog::locatorTyped);
    // Enter in the callsign box fetches the position; in the others it is
    // done with, as the values count the moment they are typed.
    connect(m_txtCall, &QLineEdit::returnPressed, m_cmdGetLatLon, &QAbstractButton::click);
    for (QLineEdit *box : {m_txtLat, m_txtLon, m_txtLocator})
        connect(box, &QLineEdit::returnPressed, this, &QDialog::accept);
    connect(m_cmdGetLatLon, &QAbstractButton::clicked, this, &SetupDialog::getLatLon);
    connect(m_cmdClose, &QAbstractButton::clicked, this, &QDialog::accept);
    connect(m_timer, &QTimer::timeout, this, &SetupDialog::timedOut);
    // The answer is taken from the event loop, after the page's log-in state
    // has been noted below: the lookup reports it while the page is still
    // being handed round.
    connect(m_lookUp, &lookup::CallbookLookup::answered, this, &SetupDialog::answered, Qt::QueuedConnection);
    connect(m_lookUp, &lookup::CallbookLookup::failed, this,
            [this](const QString &, const QList<lookup::SourceFailure> &failures) { failed(failures); });
    connect(m_lookUp->pageLookUp(), &lookup::LookUp::GotPage, this, [this](const QString &call, bool loggedIn) {
        m_pageCall = call;
        m_pageLoggedIn = loggedIn;
    });
    connect(&m_texts, &i18n::CurrentTexts::changed, this, &SetupDialog::relabel);
}

void SetupDialog::relabel()
{
    setWindowTitle(m_texts[TextId::MenuLatLon]);
    m_lblCall->setText(m_texts[TextId::FieldCallsign]);
    m_lblLat->setText(m_texts[TextId::FieldLatitude]);
    m_lblLon->setText(m_texts[TextId::FieldLongitude]);
    m_lblLocator->setText(m_texts[TextId::SetupFromLocator]);
    m_txtLocator->setToolTip(m_texts[TextId::SetupLocatorHint]);
    m_txtLocator->setPlaceholderText(QStringLiteral("JO62qm"));
    m_cmdGetLatLon->setCaption(m_texts[TextId::GetLatLon]);
    m_cmdClose->setCaption(m_texts[TextId::ButtonClose]);
    if (!m_gridLocator.isEmpty())
        m_lblGrid->setText(m_texts[TextId::GridLocator] + QStringLiteral(":   ") + m_gridLocator);
    if (m_status)
        m_label4->setText(m_status());
}

void SetupDialog::callChanged(const QString &text)
{
    m_session.settings().ownCallsign = text;
    m_cmdGetLatLon->setEnabled(!text.isEmpty());
}

void SetupDialog::positionTyped()
{
    if (m_filling)
        return;
    // A comma typed as the decimal separator counts as a point.
    m_session.setMe({app::valCoordinate(m_txtLat->text()), app::valCoordinate(m_txtLon->text())});
    updateGridLine();
}

void SetupDialog::locatorTyped(const QString &text)
{
    maps::Position centre;
    if (maps::fromLocator(text, centre))
        showPosition(centre.latitude, centre.longitude);
}

void SetupDialog::showPosition(double latitude, double longitude)
{
    m_filling = true;
    m_txtLat->setText(app::shortestDecimal(latitude));
    m_txtLon->setText(app::shortestDecimal(longitude));
    m_filling = false;
    m_session.setMe({latitude, longitude});
    updateGridLine();
}

void SetupDialog::updateGridLine()
{
    const maps::Position me = m_session.me();
    // Outside the globe the line keeps what it showed.
    if (const std::optional<QString> line = dialogs::gridLine(m_texts[TextId::GridLocator], me.latitude, me.longitude)) {
        m_gridLocator = maps::toLocator(me.latitude, me.longitude);
        m_lblGrid->setText(*line);
    }
}

void SetupDialog::getLatLon()
{
    const lookup::Source source = m_session.currentSource();
    // The CD callbooks answer no lookups: the button does nothing with one.
    // A suffix after "-" or a blank is not part of the call.
    const QString call = callsign::forLookup(m_txtCall->text());
    if (call.isEmpty() || !lookup::isOnline(source))
        return;
    qCDebug(lcDialogs) << "own position of" << call << "from" << lookup::sourceInfo(source).key;

    m_filling = true;
    m_txtLat->clear();
    m_txtLon->clear();
    m_filling = false;
    m_txtLocator->clear();
    m_session.setMe({});
    m_gridLocator.clear();
    m_lblGrid->clear();
    setStatus({});
    // Shown empty at once, before the answer is awaited.
    repaint();

    m_lookUp->setSettings(m_session.sources());
    m_lookUp->setOwnCallsign(m_session.settings().ownCallsign);
    lookup::LookupOptions options;
    options.fallback = false;
    options.cacheWhenFailing = false;
    m_pageCall.clear();
    m_asked = call;
    m_lookUp->lookUp(call, source, options);
    m_timer->start();
}

void SetupDialog::answered(const lookup::CallbookAnswer &answer)
{
    // Too late, or for a call asked before the last click.
    if (!m_timer->isActive() || answer.callsign != m_asked)
        return;
    m_timer->stop();
    const maps::Position found{answer.result.latitude, answer.result.longitude};
    if (!found.isSet()) {
        // The call is known but its entry gives no position.
        giveUp(TextId::SetupNotFound);
        return;
    }
    // A data service that answered has taken the account; a page tells by
    // what it shows.
    const bool loggedIn = answer.via == lookup::Via::Service || (m_pageCall == answer.callsign && m_pageLoggedIn);
    const lookup::Source source = answer.source;
    setStatus([this, source, loggedIn] { return dialogs::lookupStatus(m_texts.texts(), source, loggedIn); });
    showPosition(found.latitude, found.longitude);
}

void SetupDialog::failed(const QList<lookup::SourceFailure> &failures)
{
    if (!m_timer->isActive())
        return;
    m_timer->stop();
    const lookup::FailReason reason = failures.isEmpty() ? lookup::FailReason::NotFound : failures.first().reason;
    const bool login = reason == lookup::FailReason::LoginRequired || reason == lookup::FailReason::NoAccount;
    giveUp(login ? TextId::SetupLoginRequired : TextId::SetupNotFound);
}

void SetupDialog::timedOut()
{
    m_lookUp->cancel();
    giveUp(TextId::SetupNotFound);
}

void SetupDialog::giveUp(TextId status)
{
    setStatus([this, status] { return m_texts[status]; });
    m_txtCall->setFocus();
    sound::beep();
}

void SetupDialog::setStatus(std::function<QString()> status)
{
    m_status = std::move(status);
    m_label4->setText(m_status ? m_status() : QString());
}

} // namespace marvik::gui
