// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/dialogs/AddEdit.h"

#include <QDialog>
#include <QHash>

class QGridLayout;
class QLabel;
class QLineEdit;

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

class ChameleonButton;

/// `Form7`: a callsign typed (or handed in) is looked for in all five
/// lists. A call that no list holds can be added to the current list; one
/// that some list holds shows that list's entry, and its changes go into
/// every list that holds it. The dialog only gathers and shows; whoever
/// opened it writes the lists on submitted().
class AddEditDialog : public QDialog
{
    Q_OBJECT

public:
    AddEditDialog(const lists::ListStore &lists, const app::Session &session, const i18n::CurrentTexts &texts,
                  QWidget *parent = nullptr);

    /// Puts a callsign into the box as it stands (no typing filter), as the
    /// row menu's "Update ... manually" does.
    void setCallsign(const QString &callsign);
    /// The boxes as they are.
    dialogs::EditedFields fields() const;
    /// Where the call in the box stands, as last looked for.
    const dialogs::Membership &membership() const { return m_membership; }
    /// Looks the call up in the lists again (after they changed).
    void refresh();

signals:
    /// cmdAdd: the boxes are to be written into the lists.
    void submitted();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void relabel();
    void callChanged();
    void positionChanged();
    void clearFields();
    /// Fills a box; a field too long to edit is shown cut, read-only, and kept whole.
    void fill(QLineEdit *box, const QString &text);
    /// What a box stands for: its text, or the whole field it shows cut.
    QString textOf(const QLineEdit *box) const;
    QLineEdit *addRow(const char *name, QLabel *&label);

    const lists::ListStore &m_lists;
    const app::Session &m_session;
    const i18n::CurrentTexts &m_texts;
    dialogs::Membership m_membership;

    QLineEdit *m_txtCall = nullptr;
    QLineEdit *m_txtNickname = nullptr;
    QLineEdit *m_txtName = nullptr;
    QLineEdit *m_txtAdd1 = nullptr;
    QLineEdit *m_txtAdd2 = nullptr;
    QLineEdit *m_txtCtry = nullptr;
    QLineEdit *m_txtLat = nullptr;
    QLineEdit *m_txtLon = nullptr;
    QLineEdit *m_txtAz = nullptr;
    QHash<const QLineEdit *, QString> m_longText;
    QLabel *m_lblCall = nullptr;
    QLabel *m_lblNickname = nullptr;
    QLabel *m_lblName = nullptr;
    QLabel *m_lblAdd1 = nullptr;
    QLabel *m_lblAdd2 = nullptr;
    QLabel *m_lblCtry = nullptr;
    QLabel *m_lblLat = nullptr;
    QLabel *m_lblLon = nullptr;
    QLabel *m_lblAz = nullptr;
    QLabel *m_label1 = nullptr;
    ChameleonButton *m_cmdAdd = nullptr;
    ChameleonButton *m_cmdCancel = nullptr;
    QGridLayout *m_fieldGrid = nullptr;
    int m_fieldRows = 0;
};

} // namespace marvik::gui
