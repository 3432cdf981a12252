// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lookup/AccountsDialog.h"

#include "core/i18n/Texts.h"
#include "core/lookup/services/LookupCache.h"
#include "core/lookup/services/ServiceAnswer.h"
#include "core/lookup/services/ServiceClient.h"
#include "gui/widgets/ChameleonButton.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QVBoxLayout>

namespace marvik::gui {

using i18n::TextId;
using lookup::Source;
using lookup::Via;
using Status = lookup::CredentialStore::Status;

namespace {

// The services in the order a user knows them best; Callook needs no account
// but has the page/service choice.
constexpr Source kServices[] = {Source::Qrz, Source::HamQth, Source::QrzCq, Source::Callook};

// A whole year of fresh answers at most, and room for every call a busy
// station meets.
constexpr int kMaxFreshDays = 3650;
constexpr int kMaxEntries = 1000000;

QString nameOf(const char *what, Source source)
{
    return QLatin1String(what) + lookup::sourceInfo(source).key;
}

} // namespace

AccountsDialog::AccountsDialog(const i18n::CurrentTexts &texts, const lookup::SourceSettings &settings,
                               lookup::CredentialStore &credentials, QNetworkAccessManager &network,
                               lookup::LookupCache *cache, QWidget *parent)
    : QDialog(parent)
    , m_texts(texts)
    , m_settings(settings)
    , m_credentials(credentials)
    , m_network(network)
    , m_cache(cache)
{
    setObjectName(QStringLiteral("frmAccounts"));
    build();
    relabel();
    showCacheCount();
    connect(&texts, &i18n::CurrentTexts::changed, this, &AccountsDialog::relabel);
    connect(&m_credentials, &lookup::CredentialStore::passwordRead, this,
            [this](Source source, const QString &user, const QString &, Status status, const QString &) {
                passwordRead(source, user, status);
            });
    connect(&m_credentials, &lookup::CredentialStore::passwordStored, this,
            [this](Source source, const QString &user, Status status, const QString &) {
                passwordStored(source, user, status);
            });
    readStoredPasswords();
}

AccountsDialog::~AccountsDialog() = default;

AccountsDialog::Row *AccountsDialog::row(Source source)
{
    for (Row &r : m_rows) {
        if (r.source == source)
            return &r;
    }
    return nullptr;
}

void AccountsDialog::build()
{
    auto *layout = new QVBoxLayout(this);
    // The keyring note and the answers of Test come and go; the dialog grows
    // with them rather than squeeze the rows they join. (Labels do not wrap:
    // a wrapping label misleads the layout's minimum height.)
    layout->setSizeConstraint(QLayout::SetMinimumSize);

    // Accounts, one row per service; widgets are made in reading order so
    // Tab walks each row from left to right, then down.
    m_accountsBox = new QGroupBox(this);
    auto *grid = new QGridLayout(m_accountsBox);
    m_userHeading = new QLabel(m_accountsBox);
    m_passwordHeading = new QLabel(m_accountsBox);
    m_viaHeading = new QLabel(m_accountsBox);
    grid->addWidget(m_userHeading, 0, 1);
    grid->addWidget(m_passwordHeading, 0, 2);
    grid->addWidget(m_viaHeading, 0, 3);
    int line = 1;
    for (Source source : kServices) {
        Row r;
        r.source = source;
        const bool account = lookup::sourceInfo(source).serviceNeedsAccount;
        auto *name = new QLabel(lookup::menuLabel(m_settings, source), m_accountsBox);
        grid->addWidget(name, line, 0);
        if (account) {
            r.user = new QLineEdit(m_settings.userName(source), m_accountsBox);
            r.user->setObjectName(nameOf("txtUser", source));
            r.password = new QLineEdit(m_accountsBox);
            r.password->setObjectName(nameOf("txtPassword", source));
            r.password->setEchoMode(QLineEdit::Password);
            grid->addWidget(r.user, line, 1);
            grid->addWidget(r.password, line, 2);
            name->setBuddy(r.user);
        } else {
            r.noAccount = new QLabel(m_accountsBox);
            grid->addWidget(r.noAccount, line, 1, 1, 2);
        }
        r.via = new QComboBox(m_accountsBox);
        r.via->setObjectName(nameOf("cboVia", source));
        r.via->addItem(QString(), int(Via::Page));
        r.via->addItem(QString(), int(Via::Service));
        r.via->setCurrentIndex(m_settings.via(source) == Via::Page ? 0 : 1);
        // A source with no pages to read has nothing to choose.
        r.via->setEnabled(lookup::hasPageReader(source));
        grid->addWidget(r.via, line, 3);
        if (account) {
            r.test = new ChameleonButton(m_accountsBox);
            r.test->setObjectName(nameOf("cmdTest", source));
            grid->addWidget(r.test, line, 4);
        }
        r.result = new QLabel(m_accountsBox);
        r.result->setObjectName(nameOf("lblTest", source));
        grid->addWidget(r.result, line + 1, 1, 1, 4);
        line += 2;
        m_rows.append(r);
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(2, 1);
    for (Row &r : m_rows) {
        const Source source = r.source;
        if (r.user) {
            // Until the user picks a way, the rule decides, and it turns to
            // the data service once a user name is set.
            connect(r.user, &QLineEdit::textEdited, this, [this, source](const QString &user) {
                Row *x = row(source);
                if (m_settings.savedVia(source) || !lookup::hasPageReader(source))
                    return;
                lookup::SourceSettings probe = m_settings;
                probe.setUserName(source, user.trimmed());
                x->via->setCurrentIndex(probe.via(source) == Via::Page ? 0 : 1);
            });
        }
        connect(r.via, &QComboBox::activated, this, [this, source](int index) {
            m_settings.setVia(source, Via(row(source)->via->itemData(index).toInt()));
        });
        if (r.test)
            connect(r.test, &QPushButton::clicked, this, [this, source] { test(*row(source)); });
    }
    m_noKeyring = new QLabel(m_accountsBox);
    m_noKeyring->setObjectName(QStringLiteral("lblNoKeyring"));
    m_noKeyring->hide();
    grid->addWidget(m_noKeyring, line, 0, 1, 5);
    m_keepForRun = new QCheckBox(m_accountsBox);
    m_keepForRun->setObjectName(QStringLiteral("chkKeepForRun"));
    m_keepForRun->hide();
    grid->addWidget(m_keepForRun, line + 1, 0, 1, 5);
    layout->addWidget(m_accountsBox);

    // The fallback order: the checked sources, top to bottom.
    m_fallbackBox = new QGroupBox(this);
    auto *fallback = new QGridLayout(m_fallbackBox);
    m_fallbackHint = new QLabel(m_fallbackBox);
    fallback->addWidget(m_fallbackHint, 0, 0, 1, 2);
    m_fallback = new QListWidget(m_fallbackBox);
    m_fallback->setObjectName(QStringLiteral("lstFallback"));
    const QList<Source> saved = m_settings.savedFallbackOrder();
    QList<Source> shown = saved;
    if (shown.isEmpty()) {
        for (const lookup::SourceInfo &info : lookup::sourceTable()) {
            if (info.online && m_settings.isReady(info.source))
                shown.append(info.source);
        }
    }
    for (const lookup::SourceInfo &info : lookup::sourceTable()) {
        if (info.online && !shown.contains(info.source))
            shown.append(info.source);
    }
    for (Source source : shown) {
        auto *item = new QListWidgetItem(lookup::menuLabel(m_settings, source), m_fallback);
        item->setData(Qt::UserRole, int(source));
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        const bool asked = saved.isEmpty() ? m_settings.isReady(source) : saved.contains(source);
        item->setCheckState(asked ? Qt::Checked : Qt::Unchecked);
    }
    m_fallback->setCurrentRow(0);
    // Room for every online source, no more.
    m_fallback->setFixedHeight(m_fallback->sizeHintForRow(0) * m_fallback->count() + 2 * m_fallback->frameWidth() + 4);
    fallback->addWidget(m_fallback, 1, 0, 3, 1);
    m_up = new ChameleonButton(m_fallbackBox);
    m_up->setObjectName(QStringLiteral("cmdUp"));
    m_down = new ChameleonButton(m_fallbackBox);
    m_down->setObjectName(QStringLiteral("cmdDown"));
    fallback->addWidget(m_up, 1, 1);
    fallback->addWidget(m_down, 2, 1);
    fallback->setRowStretch(3, 1);
    connect(m_up, &QPushButton::clicked, this, [this] { moveFallback(-1); });
    connect(m_down, &QPushButton::clicked, this, [this] { moveFallback(1); });
    connect(m_fallback, &QListWidget::itemChanged, this, [this] { m_fallbackTouched = true; });
    layout->addWidget(m_fallbackBox);

    // The cache.
    m_cacheBox = new QGroupBox(this);
    auto *cache = new QGridLayout(m_cacheBox);
    m_freshLabel = new QLabel(m_cacheBox);
    m_freshDays = new QSpinBox(m_cacheBox);
    m_freshDays->setObjectName(QStringLiteral("spnFreshDays"));
    m_freshDays->setRange(0, kMaxFreshDays);
    m_freshDays->setValue(m_settings.cacheFreshDays());
    m_freshLabel->setBuddy(m_freshDays);
    m_sizeLabel = new QLabel(m_cacheBox);
    m_maxEntries = new QSpinBox(m_cacheBox);
    m_maxEntries->setObjectName(QStringLiteral("spnMaxEntries"));
    m_maxEntries->setRange(0, kMaxEntries);
    m_maxEntries->setSingleStep(1000);
    m_maxEntries->setValue(m_settings.cacheMaxEntries());
    m_sizeLabel->setBuddy(m_maxEntries);
    m_cacheCount = new QLabel(m_cacheBox);
    m_cacheCount->setObjectName(QStringLiteral("lblCacheCount"));
    m_clearCache = new ChameleonButton(m_cacheBox);
    m_clearCache->setObjectName(QStringLiteral("cmdClearCache"));
    m_clearCache->setEnabled(m_cache && m_cache->isOpen());
    cache->addWidget(m_freshLabel, 0, 0);
    cache->addWidget(m_freshDays, 0, 1);
    cache->addWidget(m_sizeLabel, 1, 0);
    cache->addWidget(m_maxEntries, 1, 1);
    cache->addWidget(m_cacheCount, 2, 0);
    cache->addWidget(m_clearCache, 2, 1);
    connect(m_clearCache, &QPushButton::clicked, this, &AccountsDialog::clearCache);
    layout->addWidget(m_cacheBox);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    m_ok = new ChameleonButton(this);
    m_ok->setObjectName(QStringLiteral("cmdOK"));
    m_ok->setDefault(true);
    m_cancel = new ChameleonButton(this);
    m_cancel->setObjectName(QStringLiteral("cmdCancel"));
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);
    connect(m_ok, &QPushButton::clicked, this, &AccountsDialog::accept);
    connect(m_cancel, &QPushButton::clicked, this, &AccountsDialog::reject);
    layout->addLayout(buttons);
}

void AccountsDialog::relabel()
{
    setWindowTitle(m_texts[TextId::AccountsTitle]);
    m_accountsBox->setTitle(m_texts[TextId::AccountsTitle]);
    m_userHeading->setText(m_texts[TextId::AccountsUser]);
    m_passwordHeading->setText(m_texts[TextId::AccountsPassword]);
    m_viaHeading->setText(m_texts[TextId::AccountsVia]);
    for (Row &r : m_rows) {
        r.via->setItemText(0, m_texts[TextId::ViaPage]);
        r.via->setItemText(1, m_texts[TextId::ViaService]);
        if (r.test)
            r.test->setCaption(m_texts[TextId::ButtonTest]);
        if (r.noAccount)
            r.noAccount->setText(m_texts[TextId::NoAccountNeeded]);
    }
    m_noKeyring->setText(m_texts[TextId::NoKeyring]);
    m_keepForRun->setText(m_texts[TextId::KeepForRun]);
    m_fallbackBox->setTitle(m_texts[TextId::FallbackTitle]);
    m_fallbackHint->setText(m_texts[TextId::FallbackHint]);
    m_up->setCaption(m_texts[TextId::ButtonUp]);
    m_down->setCaption(m_texts[TextId::ButtonDown]);
    m_cacheBox->setTitle(m_texts[TextId::CacheTitle]);
    m_freshLabel->setText(m_texts[TextId::CacheFreshDays]);
    m_sizeLabel->setText(m_texts[TextId::CacheMaxEntries]);
    m_clearCache->setCaption(m_texts[TextId::ButtonClearCache]);
    m_ok->setCaption(m_texts[TextId::ButtonOk]);
    m_cancel->setCaption(m_texts[TextId::ButtonCancel]);
    showCacheCount();
}

lookup::SourceSettings AccountsDialog::settings() const
{
    lookup::SourceSettings s = m_settings;
    for (const Row &r : m_rows) {
        if (r.user)
            s.setUserName(r.source, r.user->text().trimmed());
    }
    if (m_fallbackTouched) {
        QList<Source> order;
        for (int i = 0; i < m_fallback->count(); ++i) {
            const QListWidgetItem *item = m_fallback->item(i);
            if (item->checkState() == Qt::Checked)
                order.append(Source(item->data(Qt::UserRole).toInt()));
        }
        s.setFallbackOrder(order);
    }
    s.setCacheFreshDays(m_freshDays->value());
    s.setCacheMaxEntries(m_maxEntries->value());
    return s;
}

void AccountsDialog::readStoredPasswords()
{
    bool asked = false;
    for (const Row &r : std::as_const(m_rows)) {
        if (r.user && !r.user->text().isEmpty()) {
            m_credentials.readPassword(r.source, r.user->text());
            asked = true;
        }
    }
    // With no account set up yet, one read of nothing still tells whether a
    // keyring runs, so the user learns it before typing a password.
    if (!asked)
        m_credentials.readPassword(Source::Qrz, QString());
}

void AccountsDialog::passwordRead(Source source, const QString &user, Status status)
{
    if (status == Status::NoKeyring) {
        showNoKeyring();
        return;
    }
    Row *r = row(source);
    if (status == Status::Ok && r && r->password && r->user->text() == user)
        r->password->setPlaceholderText(m_texts[TextId::PasswordStored]);
}

void AccountsDialog::showNoKeyring()
{
    m_noKeyring->show();
    m_keepForRun->show();
}

void AccountsDialog::accept()
{
    const lookup::SourceSettings s = settings();
    m_storing.clear();
    m_storeFailed = false;
    QList<QPair<Source, QString>> toStore;
    for (const Row &r : std::as_const(m_rows)) {
        if (!r.password || r.password->text().isEmpty() || s.userName(r.source).isEmpty())
            continue;
        if (m_keepForRun->isChecked())
            m_credentials.keepForThisRun(r.source, s.userName(r.source), r.password->text());
        else
            toStore.append({r.source, r.password->text()});
    }
    if (toStore.isEmpty()) {
        QDialog::accept();
        return;
    }
    for (const auto &[source, password] : std::as_const(toStore))
        m_storing.insert(int(source));
    m_ok->setEnabled(false);
    for (const auto &[source, password] : std::as_const(toStore))
        m_credentials.storePassword(source, s.userName(source), password);
}

void AccountsDialog::passwordStored(Source source, const QString &, Status status)
{
    if (!m_storing.remove(int(source)))
        return;
    if (status != Status::Ok) {
        m_storeFailed = true;
    } else if (Row *r = row(source)) {
        // In the keyring now; the field need not hold it any longer.
        r->password->clear();
        r->password->setPlaceholderText(m_texts[TextId::PasswordStored]);
    }
    if (!m_storing.isEmpty())
        return;
    m_ok->setEnabled(true);
    if (m_storeFailed) {
        showNoKeyring();
        m_keepForRun->setFocus();
        return;
    }
    QDialog::accept();
}

void AccountsDialog::test(Row &r)
{
    const Source source = r.source;
    const QString user = r.user->text().trimmed();
    QString password = r.password->text();
    if (password.isEmpty())
        password = m_credentials.knownPassword(source, user).value_or(QString());
    QPointer<lookup::ServiceClient> &client = m_clients[int(source)];
    if (!client)
        client = new lookup::ServiceClient(source, &m_network, this);
    client->setServiceHost(m_settings.serviceHost(source));
    client->setAccount(user, password);
    disconnect(client, nullptr, this, nullptr);
    lookup::ServiceClient *c = client;
    connect(c, &lookup::ServiceClient::loggedIn, this,
            [this, source, c](const lookup::ServiceAnswer &answer) { tested(*row(source), answer, *c); });
    r.result->setText(m_texts[TextId::TestLoggingIn]);
    r.test->setEnabled(false);
    c->logIn();
}

void AccountsDialog::tested(Row &r, const lookup::ServiceAnswer &answer, const lookup::ServiceClient &client)
{
    r.test->setEnabled(true);
    if (answer.error != lookup::ServiceError::None) {
        const QString why = answer.message.isEmpty() ? lookup::serviceErrorText(answer.error) : answer.message;
        r.result->setText(m_texts.fill(answer.error == lookup::ServiceError::Unreachable ? TextId::TestUnreachable
                                                                                          : TextId::TestRefused,
                                       why));
        return;
    }
    QStringList parts{m_texts[TextId::TestLoggedIn]};
    const QString subscription = answer.subscription.isEmpty() ? client.subscription() : answer.subscription;
    const int today = answer.lookupsToday >= 0 ? answer.lookupsToday : client.lookupsToday();
    if (!subscription.isEmpty())
        parts.append(m_texts.fill(TextId::TestSubscription, subscription));
    if (today >= 0)
        parts.append(m_texts.fill(TextId::TestLookupsToday, QString::number(today)));
    r.result->setText(parts.join(u' '));
}

void AccountsDialog::moveFallback(int step)
{
    const int from = m_fallback->currentRow();
    const int to = from + step;
    if (from < 0 || to < 0 || to >= m_fallback->count())
        return;
    QListWidgetItem *item = m_fallback->takeItem(from);
    m_fallback->insertItem(to, item);
    m_fallback->setCurrentRow(to);
    m_fallbackTouched = true;
}

void AccountsDialog::clearCache()
{
    if (!m_cache || !m_cache->isOpen())
        return;
    const int removed = m_cache->count();
    m_cache->clear();
    showCacheCount();
    emit cacheCleared(removed);
}

void AccountsDialog::showCacheCount()
{
    const int count = m_cache && m_cache->isOpen() ? m_cache->count() : 0;
    m_cacheCount->setText(m_texts.fill(TextId::CacheCount, QString::number(count)));
}

} // namespace marvik::gui
