// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/i18n/TextId.h"

#include <QHash>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

class QAction;

namespace marvik::i18n {
class CurrentTexts;
}

namespace marvik::gui {

/// Every command of the main window, each one QAction registered once under
/// its objectName. The menu bar and both context menus show these same
/// actions. A command is enabled only when a part has provided it (so an
/// item whose part is not built stays disabled) and its enable rule holds.
class Commands : public QObject
{
    Q_OBJECT

public:
    using Rule = std::function<bool()>;

    explicit Commands(const i18n::CurrentTexts &texts, QObject *parent = nullptr);

    /// Registers a command. `text` empty: the caption is set by whoever shows
    /// it (source names, list names, captions with a callsign in them).
    QAction *add(const QString &name, std::optional<i18n::TextId> text, bool checkable = false);
    /// The command registered under `name`; null when there is none.
    QAction *action(const QString &name) const;

    /// A part takes over a command: from now on it is enabled whenever
    /// `rule` holds (always, without a rule).
    void provide(const QString &name, Rule rule = {});
    /// Whether a part has taken the command over.
    bool isProvided(const QString &name) const;

    /// Evaluates every enable rule again.
    void refresh();

    /// The caption of a menu item as it is shown: a literal "&" doubled, so
    /// "Lat & Lon" does not underline its blank.
    static QString menuText(const QString &text);

private:
    struct Entry
    {
        QAction *action = nullptr;
        std::optional<i18n::TextId> text;
        bool provided = false;
        Rule rule;
    };

    void relabel();

    const i18n::CurrentTexts &m_texts;
    QHash<QString, Entry> m_entries;
};

} // namespace marvik::gui
