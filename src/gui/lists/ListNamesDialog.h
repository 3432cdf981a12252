// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QStringList>

class QLineEdit;

namespace marvik::i18n {
class CurrentTexts;
}

namespace marvik::gui {

/// `Form8`: the names of the five lists, one box each (`txtListName0`..4).
class ListNamesDialog : public QDialog
{
    Q_OBJECT

public:
    ListNamesDialog(const QStringList &names, const i18n::CurrentTexts &texts, QWidget *parent = nullptr);

    /// The five names as the boxes hold them now.
    QStringList names() const;
    /// Cancel or Escape ended it; any other close keeps the boxes' names.
    bool cancelled() const { return m_cancelled; }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void cancel();

    QList<QLineEdit *> m_boxes;
    bool m_cancelled = false;
};

} // namespace marvik::gui
