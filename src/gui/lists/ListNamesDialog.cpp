// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lists/ListNamesDialog.h"

#include "core/i18n/Texts.h"
#include "gui/dialogs/DialogButtons.h"
#include "gui/widgets/ChameleonButton.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace marvik::gui {

ListNamesDialog::ListNamesDialog(const QStringList &names, const i18n::CurrentTexts &texts, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("Form8"));
    setWindowTitle(texts[i18n::TextId::MenuNames]);
    auto *form = new QFormLayout;
    for (int i = 0; i < 5; ++i) {
        auto *box = new QLineEdit(names.value(i), this);
        box->setObjectName(QStringLiteral("txtListName%1").arg(i));
        form->addRow(QString::number(i + 1), box);
        m_boxes.append(box);
    }
    ChameleonButton *close = dialogButton(QStringLiteral("cmdClose"), this);
    close->setCaption(texts[i18n::TextId::ButtonClose]);
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    // Cancel (and Escape) leaves every name as it was.
    ChameleonButton *cancel = dialogButton(QStringLiteral("cmdCancel"), this);
    cancel->setCaption(texts[i18n::TextId::ButtonCancel]);
    connect(cancel, &QPushButton::clicked, this, &ListNamesDialog::cancel);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(close);
    buttons->addWidget(cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);
    setMinimumWidth(280);
}

void ListNamesDialog::cancel()
{
    m_cancelled = true;
    reject();
}

void ListNamesDialog::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        cancel();
        return;
    }
    QDialog::keyPressEvent(event);
}

QStringList ListNamesDialog::names() const
{
    QStringList out;
    for (const QLineEdit *box : m_boxes)
        out.append(box->text());
    return out;
}

} // namespace marvik::gui
