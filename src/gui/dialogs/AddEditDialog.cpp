// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/dialogs/AddEditDialog.h"

#include "core/app/Callsign.h"
#include "core/app/Session.h"
#include "core/i18n/Texts.h"
#include "core/lists/CallListModel.h"
#include "gui/dialogs/DialogButtons.h"
#include "gui/widgets/ChameleonButton.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace marvik::gui {

using i18n::TextId;

AddEditDialog::AddEditDialog(const lists::ListStore &lists, const app::Session &session,
                             const i18n::CurrentTexts &texts, QWidget *parent)
    : QDialog(parent)
    , m_lists(lists)
    , m_session(session)
    , m_texts(texts)
{
    setObjectName(QStringLiteral("Form7"));
    m_fieldGrid = new QGridLayout;
    m_fieldGrid->setColumnStretch(1, 1);

    // Top to bottom, which is also the tab order: the call and where it
    // stands, then the entry's cells in grid order, the position, and the
    // azimuth worked out from it last.
    m_txtCall = addRow("txtCall", m_lblCall);
    m_label1 = new QLabel(this);
    m_label1->setObjectName(QStringLiteral("Label1"));
    m_label1->setMinimumHeight(fontMetrics().height());
    m_fieldGrid->addWidget(m_label1, m_fieldRows++, 1);
    m_txtNickname = addRow("txtNickname", m_lblNickname);
    m_txtName = addRow("txtName", m_lblName);
    m_txtAdd1 = addRow("txtAdd1", m_lblAdd1);
    m_txtAdd2 = addRow("txtAdd2", m_lblAdd2);
    m_txtCtry = addRow("txtCtry", m_lblCtry);
    m_txtLat = addRow("txtLat", m_lblLat);
    m_txtLon = addRow("txtLon", m_lblLon);
    m_txtAz = addRow("txtAz", m_lblAz);

    m_cmdAdd = dialogButton(QStringLiteral("cmdAdd"), this);
    m_cmdCancel = dialogButton(QStringLiteral("cmdCancel"), this);
    m_cmdAdd->setDefault(true);
    m_cmdAdd->setEnabled(false);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cmdAdd);
    buttons->addWidget(m_cmdCancel);
    auto *outer = new QVBoxLayout(this);
    outer->addLayout(m_fieldGrid);
    outer->addSpacing(4);
    outer->addLayout(buttons);
    outer->setSizeConstraint(QLayout::SetFixedSize);
    QWidget *previous = m_txtCall;
    for (QWidget *next : std::initializer_list<QWidget *>{m_txtNickname, m_txtName, m_txtAdd1, m_txtAdd2, m_txtCtry,
                                                          m_txtLat, m_txtLon, m_txtAz, m_cmdAdd, m_cmdCancel}) {
        setTabOrder(previous, next);
        previous = next;
    }

    m_txtCall->installEventFilter(this);
    connect(m_txtCall, &QLineEdit::textChanged, this, &AddEditDialog::callChanged);
    connect(m_txtLat, &QLineEdit::textChanged, this, &AddEditDialog::positionChanged);
    connect(m_txtLon, &QLineEdit::textChanged, this, &AddEditDialog::positionChanged);
    connect(m_cmdAdd, &QAbstractButton::clicked, this, &AddEditDialog::submitted);
    connect(m_cmdCancel, &QAbstractButton::clicked, this, &QDialog::reject);
    connect(&m_texts, &i18n::CurrentTexts::changed, this, &AddEditDialog::relabel);
    relabel();
}

QLineEdit *AddEditDialog::addRow(const char *name, QLabel *&label)
{
    const int row = m_fieldRows++;
    auto *box = new QLineEdit(this);
    box->setObjectName(QLatin1String(name));
    box->setMinimumWidth(fontMetrics().averageCharWidth() * 32);
    label = new QLabel(this);
    label->setBuddy(box);
    m_fieldGrid->addWidget(label, row, 0);
    m_fieldGrid->addWidget(box, row, 1);
    return box;
}

void AddEditDialog::relabel()
{
    setWindowTitle(m_texts[TextId::AddEditCaption]);
    m_lblCall->setText(m_texts[TextId::FieldCallsign]);
    m_lblNickname->setText(m_texts[TextId::FieldNickname]);
    m_lblName->setText(m_texts[TextId::FieldName]);
    m_lblAdd1->setText(m_texts[TextId::FieldAddress]);
    m_lblAdd2->setText(m_texts[TextId::FieldCity]);
    m_lblCtry->setText(m_texts[TextId::FieldCountry]);
    m_lblLat->setText(m_texts[TextId::FieldLatitude]);
    m_lblLon->setText(m_texts[TextId::FieldLongitude]);
    m_lblAz->setText(m_texts[TextId::FieldAzimuth]);
    m_cmdAdd->setCaption(m_texts[m_membership.found() ? TextId::SaveChanges : TextId::AddCallToList]);
    m_cmdCancel->setCaption(m_texts[TextId::ButtonCancel]);
    m_label1->setText(m_membership.found()
                          ? m_texts.fill(TextId::InLists, m_txtCall->text(), dialogs::listNumbers(m_membership.mark))
                          : QString());
}

void AddEditDialog::setCallsign(const QString &callsign)
{
    m_txtCall->setText(callsign);
    m_txtCall->end(false);
}

bool AddEditDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_txtCall && event->type() == QEvent::KeyPress) {
        // Typed letters become capitals and a typed zero the slashed zero;
        // the character goes in where the caret is, like any other.
        const auto *key = static_cast<QKeyEvent *>(event);
        const QString typed = key->text();
        if (typed.size() == 1 && !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))) {
            const QString filtered = callsign::filterTyped(typed);
            if (filtered != typed) {
                m_txtCall->insert(filtered);
                return true;
            }
        }
    }
    return QDialog::eventFilter(watched, event);
}

void AddEditDialog::callChanged()
{
    const QString call = m_txtCall->text();
    m_cmdAdd->setEnabled(!call.isEmpty());
    m_membership = call.isEmpty() ? dialogs::Membership() : dialogs::findInLists(m_lists, call);
    if (m_membership.found()) {
        const dialogs::EditedFields f = dialogs::fieldsOf(*m_membership.shown);
        fill(m_txtName, f.name);
        fill(m_txtNickname, f.nickname);
        fill(m_txtAdd1, f.address);
        fill(m_txtAdd2, f.city);
        fill(m_txtCtry, f.country);
        fill(m_txtLat, f.latitude);
        fill(m_txtLon, f.longitude);
        positionChanged();
    } else {
        clearFields();
    }
    relabel();
}

void AddEditDialog::positionChanged()
{
    m_txtAz->setText(dialogs::azimuthBoxText(m_session.me(), m_txtLat->text(), m_txtLon->text()));
}

void AddEditDialog::fill(QLineEdit *box, const QString &text)
{
    // A field far longer than anyone types (a damaged or hostile file) is
    // shown cut and kept whole: laying out megabytes in a box would freeze
    // the dialog, and cutting it on save would lose what the row holds.
    if (text.size() > lists::CallListModel::kShownCharacters) {
        m_longText.insert(box, text);
        box->setText(text.left(lists::CallListModel::kShownCharacters) + QChar(0x2026));
        box->setReadOnly(true);
        box->setToolTip(m_texts[TextId::FieldTooLong]);
        box->setCursorPosition(0);
        return;
    }
    m_longText.remove(box);
    box->setReadOnly(false);
    box->setToolTip({});
    box->setText(text);
}

QString AddEditDialog::textOf(const QLineEdit *box) const
{
    return m_longText.value(box, box->text());
}

void AddEditDialog::clearFields()
{
    for (QLineEdit *box : {m_txtNickname, m_txtName, m_txtAdd1, m_txtAdd2, m_txtCtry, m_txtLat, m_txtLon, m_txtAz})
        fill(box, {});
    m_label1->clear();
}

void AddEditDialog::refresh()
{
    callChanged();
}

dialogs::EditedFields AddEditDialog::fields() const
{
    dialogs::EditedFields f;
    f.callsign = m_txtCall->text();
    f.nickname = textOf(m_txtNickname);
    f.azimuth = m_txtAz->text();
    f.name = textOf(m_txtName);
    f.address = textOf(m_txtAdd1);
    f.city = textOf(m_txtAdd2);
    f.country = textOf(m_txtCtry);
    f.latitude = textOf(m_txtLat);
    f.longitude = textOf(m_txtLon);
    return f;
}

} // namespace marvik::gui
