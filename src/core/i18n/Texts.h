// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/i18n/TextId.h"

#include <QObject>
#include <QString>

#include <array>

namespace marvik::i18n {

/// One full set of the program's texts, by id: the built-in English ones
/// until a language file replaces the first 57.
class Texts
{
public:
    /// The built-in English texts.
    static Texts english();

    const QString &operator[](TextId id) const { return m_values[std::size_t(id)]; }
    QString &operator[](TextId id) { return m_values[std::size_t(id)]; }

    /// A text as the program shows it: language files cannot carry blanks
    /// at a value's ends, so the program adds them where it always showed
    /// them ("  (Logged in)", "  Expand  ", " From Me "). Every other text
    /// comes back as it is.
    QString padded(TextId id) const;

    /// A text with every "xxx" replaced by `xxx` and every "???" by
    /// `questionMarks` (when given).
    QString fill(TextId id, const QString &xxx, const QString &questionMarks = {}) const;
    /// A text with its "???" replaced, its "xxx" left alone.
    QString fillSource(TextId id, const QString &questionMarks) const;

    bool operator==(const Texts &other) const = default;

private:
    std::array<QString, kTextCount> m_values;
};

/// Replaces every "xxx" of a template; the inserted text is never searched
/// again, so a list called "xxx" stays as it is.
QString fillIn(const QString &templ, const QString &xxx, const QString &questionMarks = {});

/// The joint between the values of a message that a language file spreads
/// over several lines: a line break.
inline constexpr char16_t kMessageJoint = u'\n';

/// The texts every window shows right now. Windows read them by id when
/// they are built and again on `changed`, so a window opened later starts in
/// the current language and an open one relabels itself at once.
class CurrentTexts : public QObject
{
    Q_OBJECT

public:
    explicit CurrentTexts(QObject *parent = nullptr);

    const Texts &texts() const { return m_texts; }
    const QString &operator[](TextId id) const { return m_texts[id]; }
    QString fill(TextId id, const QString &xxx, const QString &questionMarks = {}) const
    {
        return m_texts.fill(id, xxx, questionMarks);
    }
    QString fillSource(TextId id, const QString &questionMarks) const { return m_texts.fillSource(id, questionMarks); }
    QString padded(TextId id) const { return m_texts.padded(id); }
    /// Replaces the whole set and tells every window.
    void setTexts(const Texts &texts);

signals:
    void changed();

private:
    Texts m_texts = Texts::english();
};

} // namespace marvik::i18n
