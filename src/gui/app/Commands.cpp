// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/app/Commands.h"

#include "core/i18n/Texts.h"

#include <QAction>

namespace marvik::gui {

Commands::Commands(const i18n::CurrentTexts &texts, QObject *parent)
    : QObject(parent)
    , m_texts(texts)
{
    connect(&texts, &i18n::CurrentTexts::changed, this, &Commands::relabel);
}

QAction *Commands::add(const QString &name, std::optional<i18n::TextId> text, bool checkable)
{
    Q_ASSERT(!m_entries.contains(name));
    auto *action = new QAction(this);
    action->setObjectName(name);
    action->setCheckable(checkable);
    action->setEnabled(false);
    if (text)
        action->setText(menuText(m_texts[*text]));
    m_entries.insert(name, Entry{action, text, false, {}});
    return action;
}

QAction *Commands::action(const QString &name) const
{
    const auto it = m_entries.constFind(name);
    return it == m_entries.constEnd() ? nullptr : it->action;
}

void Commands::provide(const QString &name, Rule rule)
{
    auto it = m_entries.find(name);
    if (it == m_entries.end())
        return;
    it->provided = true;
    it->rule = std::move(rule);
    it->action->setEnabled(!it->rule || it->rule());
}

bool Commands::isProvided(const QString &name) const
{
    return m_entries.value(name).provided;
}

void Commands::refresh()
{
    for (Entry &e : m_entries)
        e.action->setEnabled(e.provided && (!e.rule || e.rule()));
}

void Commands::relabel()
{
    for (Entry &e : m_entries) {
        if (e.text)
            e.action->setText(menuText(m_texts[*e.text]));
    }
}

QString Commands::menuText(const QString &text)
{
    return QString(text).replace(u'&', QStringLiteral("&&"));
}

} // namespace marvik::gui
