// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/lookup/SourceSettings.h"
#include "core/lookup/services/CredentialStore.h"

#include <QDialog>
#include <QHash>
#include <QPointer>
#include <QSet>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QNetworkAccessManager;
class QSpinBox;

namespace marvik::i18n {
class CurrentTexts;
}
namespace marvik::lookup {
class LookupCache;
class ServiceClient;
struct ServiceAnswer;
}

namespace marvik::gui {

class ChameleonButton;

/// Setup, "Callbook accounts…": the user name and password of each data
/// service, a Test of each account against its service, whether a source is
/// read from its web page or its data service, the order of the sources
/// asked when the chosen one cannot answer, and the lookup cache's limits
/// with a command to clear it. Passwords go into the desktop keyring; when
/// none runs, the dialog says so and offers to keep them for this run only.
class AccountsDialog : public QDialog
{
    Q_OBJECT

public:
    /// `cache` may be null (no cache could be opened).
    AccountsDialog(const i18n::CurrentTexts &texts, const lookup::SourceSettings &settings,
                   lookup::CredentialStore &credentials, QNetworkAccessManager &network, lookup::LookupCache *cache,
                   QWidget *parent = nullptr);
    ~AccountsDialog() override;

    /// The settings as the dialog shows them now.
    lookup::SourceSettings settings() const;

    /// Stores the typed passwords first; closes once the keyring took them,
    /// or stays open and offers to keep them for this run when it did not.
    void accept() override;

signals:
    /// "Clear cache" emptied the cache; `removed` results went.
    void cacheCleared(int removed);

private:
    /// One data service's row.
    struct Row
    {
        lookup::Source source;
        QLineEdit *user = nullptr;
        QLineEdit *password = nullptr;
        QComboBox *via = nullptr;
        ChameleonButton *test = nullptr;
        QLabel *result = nullptr;
        QLabel *noAccount = nullptr;
    };

    void build();
    void relabel();
    void readStoredPasswords();
    void passwordRead(lookup::Source source, const QString &user, lookup::CredentialStore::Status status);
    void passwordStored(lookup::Source source, const QString &user, lookup::CredentialStore::Status status);
    void showNoKeyring();
    void test(Row &row);
    void tested(Row &row, const lookup::ServiceAnswer &answer, const lookup::ServiceClient &client);
    void moveFallback(int step);
    void clearCache();
    void showCacheCount();
    Row *row(lookup::Source source);

    const i18n::CurrentTexts &m_texts;
    lookup::SourceSettings m_settings;
    lookup::CredentialStore &m_credentials;
    QNetworkAccessManager &m_network;
    lookup::LookupCache *m_cache;
    QList<Row> m_rows;
    QHash<int, QPointer<lookup::ServiceClient>> m_clients;
    QSet<int> m_storing;
    bool m_storeFailed = false;
    bool m_fallbackTouched = false;

    QGroupBox *m_accountsBox = nullptr;
    QLabel *m_userHeading = nullptr;
    QLabel *m_passwordHeading = nullptr;
    QLabel *m_viaHeading = nullptr;
    QLabel *m_noKeyring = nullptr;
    QCheckBox *m_keepForRun = nullptr;
    QGroupBox *m_fallbackBox = nullptr;
    QLabel *m_fallbackHint = nullptr;
    QListWidget *m_fallback = nullptr;
    ChameleonButton *m_up = nullptr;
    ChameleonButton *m_down = nullptr;
    QGroupBox *m_cacheBox = nullptr;
    QLabel *m_freshLabel = nullptr;
    QSpinBox *m_freshDays = nullptr;
    QLabel *m_sizeLabel = nullptr;
    QSpinBox *m_maxEntries = nullptr;
    QLabel *m_cacheCount = nullptr;
    ChameleonButton *m_clearCache = nullptr;
    ChameleonButton *m_ok = nullptr;
    ChameleonButton *m_cancel = nullptr;
};

} // namespace marvik::gui
