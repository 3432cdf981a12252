// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/lists/ListNamesDialog.h"

#include "core/i18n/Texts.h"

#include <QFormLayout>
#include <QHBoxLayout>
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
    auto *close = new QPushButton(texts[i18n::TextId::ButtonClose], this);
    close->setObjectName(QStringLiteral("cmdClose"));
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(close);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);
    setMinimumWidth(280);
}

QStringList ListNamesDialog::names() const
{
    QStringList out;
    for (const QLineEdit *box : m_boxes)
        out.append(box->text());
    return out;
}

} // namespace marvik::gui
