// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/app/AppController.h"

#include "core/app/Config.h"
#include "core/app/DataFolder.h"
#include "core/app/Log.h"
#include "core/app/Session.h"
#include "core/app/TextCodec.h"
#include "core/i18n/LanguageFile.h"
#include "core/i18n/Texts.h"
#include "gui/app/Commands.h"
#include "gui/app/MainCommands.h"
#include "gui/app/Messages.h"

#include <QAction>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPlainTextEdit>
#include <QUrl>

#include <algorithm>

namespace marvik::gui {

using i18n::TextId;

AppController::AppController(app::Session &session, i18n::CurrentTexts &texts, Commands &commands,
                             QWidget *dialogParent, QObject *parent)
    : QObject(parent)
    , m_session(session)
    , m_texts(texts)
    , m_commands(commands)
    , m_parent(dialogParent)
{
    setObjectName(QStringLiteral("appController"));
    for (const lookup::SourceInfo &info : lookup::sourceTable()) {
        const lookup::Source source = info.source;
        const QString current = indexed("mnuSource", lookup::menuIndexOf(source));
        const QString fallback = indexed("mnuDefaultDB", lookup::menuIndexOf(source));
        connect(commands.action(current), &QAction::triggered, this, [this, source] { chooseSource(source); });
        connect(commands.action(fallback), &QAction::triggered, this, [this, source] { chooseDefault(source); });
        commands.provide(current);
        commands.provide(fallback);
    }
    connect(commands.action(QStringLiteral("mnuOnTop")), &QAction::triggered, this, &AppController::toggleOnTop);
    connect(commands.action(QStringLiteral("mnuHelp")), &QAction::triggered, this, &AppController::showHelp);
    connect(commands.action(QStringLiteral("mnuAbout")), &QAction::triggered, this, &AppController::showAbout);
    for (int i = 0; i < i18n::kLanguageCount; ++i) {
        const QString name = indexed("mnuLang", i);
        connect(commands.action(name), &QAction::triggered, this, [this, i] { chooseLanguage(i); });
        commands.provide(name);
    }
    for (const char *name : {"mnuOnTop", "mnuHelp", "mnuAbout"})
        commands.provide(QLatin1String(name));
}

AppController::~AppController()
{
    delete m_help.data();
}

QString AppController::sourceLabel() const
{
    return lookup::menuLabel(m_session.sources(), m_session.currentSource());
}

void AppController::applyDefaultSource()
{
    const lookup::Source source =
        lookup::sourceFromMenuIndex(m_session.settings().defaultDatabase).value_or(lookup::Source::EHam);
    m_session.settings().defaultDatabase = qint16(lookup::menuIndexOf(source));
    chooseSource(source);
}

void AppController::checkSourceMenus()
{
    const int current = lookup::menuIndexOf(m_session.currentSource());
    const int fallback = m_session.settings().defaultDatabase;
    for (int i = 0; i < lookup::kSourceCount; ++i) {
        m_commands.action(indexed("mnuSource", i))->setChecked(i == current);
        m_commands.action(indexed("mnuDefaultDB", i))->setChecked(i == fallback);
    }
}

void AppController::chooseSource(lookup::Source source)
{
    m_session.setCurrentSource(source);
    checkSourceMenus();
    m_commands.refresh();
    emit sourceLabelChanged(sourceLabel());
}

void AppController::chooseDefault(lookup::Source source)
{
    m_session.setDefaultSource(source);
    chooseSource(source);
}

void AppController::chooseLanguage(int language)
{
    m_session.settings().language = qint16(language);
    loadLanguage();
}

void AppController::loadLanguage()
{
    const int language = std::clamp<int>(m_session.settings().language, 0, i18n::kLanguageCount - 1);
    for (int i = 0; i < i18n::kLanguageCount; ++i)
        m_commands.action(indexed("mnuLang", i))->setChecked(i == language);
    i18n::LanguageLoad load = i18n::loadLanguage(m_session.dataFolder(), language, m_texts.texts());
    // The language names turn English before the file is opened, so even a
    // failed load shows them so; every other text stays as it was.
    m_texts.setTexts(load.texts);
    if (!load.loaded()) {
        qCWarning(lcApp) << "language file not used:" << load.detail;
        messages::exclamation(m_parent, load.message);
    }
}

void AppController::toggleOnTop()
{
    qint16 &onTop = m_session.settings().alwaysOnTop;
    onTop = onTop == 0 ? 1 : 0;
    emit alwaysOnTopChanged(onTop == 1);
}

void AppController::showHelp()
{
    const QString path = app::shareFolder() + QStringLiteral("/Help.txt");
    const QUrl url = QUrl::fromLocalFile(path);
    if (QFileInfo::exists(path) && (m_openFile ? m_openFile(url) : QDesktopServices::openUrl(url)))
        return;
    // Without a desktop viewer for text files: a reading window of our own.
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        messages::exclamation(m_parent, m_texts.fill(TextId::HelpMissing, QDir::toNativeSeparators(path)));
        return;
    }
    if (!m_help) {
        m_help = new QPlainTextEdit;
        m_help->setObjectName(QStringLiteral("frmHelp"));
        m_help->setAttribute(Qt::WA_DeleteOnClose);
        m_help->setReadOnly(true);
        m_help->setLineWrapMode(QPlainTextEdit::WidgetWidth);
        m_help->resize(m_help->fontMetrics().horizontalAdvance(QLatin1Char('x')) * 84, 520);
    }
    m_help->setWindowTitle(m_texts[TextId::HelpWindowTitle]);
    m_help->setPlainText(app::decodeTextFile(file.readAll()));
    m_help->show();
    m_help->raise();
    m_help->activateWindow();
}

void AppController::showAbout()
{
    messages::about(m_parent, QString::fromUtf16(app::kVersionText),
                    m_texts.fill(TextId::AboutDetails, QString::fromLatin1(qVersion())));
}

} // namespace marvik::gui
