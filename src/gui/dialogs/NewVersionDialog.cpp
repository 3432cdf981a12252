// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/dialogs/NewVersionDialog.h"

#include "core/i18n/Texts.h"
#include "gui/dialogs/Beep.h"
#include "gui/dialogs/DialogButtons.h"
#include "gui/widgets/ChameleonButton.h"

#include <QApplication>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QUrl>
#include <QVBoxLayout>

namespace marvik::gui {

using i18n::TextId;

NewVersionDialog::NewVersionDialog(const QString &version, const QString &downloadUrl,
                                   const i18n::CurrentTexts &texts, QWidget *parent)
    : QDialog(parent)
    , m_texts(texts)
    , m_version(version)
    , m_downloadUrl(downloadUrl)
    , m_label1(new QLabel(this))
    , m_image1(new QLabel(this))
    , m_cmdYes(dialogButton(QStringLiteral("cmdYes"), this))
    , m_cmdNo(dialogButton(QStringLiteral("cmdNo"), this))
{
    setObjectName(QStringLiteral("Form5"));
    setWindowTitle(QStringLiteral("Marvik"));
    m_label1->setObjectName(QStringLiteral("Label1"));
    m_image1->setObjectName(QStringLiteral("Image1"));
    m_label1->setWordWrap(false);
    QIcon icon = QApplication::windowIcon();
    if (icon.isNull())
        icon = style()->standardIcon(QStyle::SP_MessageBoxQuestion);
    const int side = style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
    m_image1->setPixmap(icon.pixmap(QSize(side, side), devicePixelRatioF()));

    auto *top = new QHBoxLayout;
    top->addWidget(m_image1);
    top->addSpacing(8);
    top->addWidget(m_label1, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cmdYes);
    buttons->addWidget(m_cmdNo);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addSpacing(8);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    // The question comes unasked: Enter must not open a browser for someone
    // who was typing a call, so No has the focus, and Escape is No as well.
    setTabOrder(m_cmdYes, m_cmdNo);
    m_cmdNo->setFocus();
    // The faces follow the mouse over the whole dialog, labels included.
    setMouseTracking(true);
    m_label1->setMouseTracking(true);
    m_image1->setMouseTracking(true);
    connect(m_cmdYes, &ChameleonButton::mouseMoved, this, [this] {
        if (m_cmdYes->backColor() != kHoveredFace)
            m_cmdYes->setBackColor(kHoveredFace);
    });
    connect(m_cmdNo, &ChameleonButton::mouseMoved, this, &NewVersionDialog::restoreFaces);
    connect(m_cmdYes, &QAbstractButton::clicked, this, &NewVersionDialog::yes);
    connect(m_cmdNo, &QAbstractButton::clicked, this, &QDialog::reject);
    connect(&m_texts, &i18n::CurrentTexts::changed, this, &NewVersionDialog::relabel);
    relabel();
}

void NewVersionDialog::relabel()
{
    m_label1->setText(m_texts.fill(TextId::NewVersionQuestion, m_version));
    m_cmdYes->setCaption(m_texts[TextId::ButtonYes]);
    m_cmdNo->setCaption(m_texts[TextId::ButtonNo]);
}

void NewVersionDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (m_beeped)
        return;
    m_beeped = true;
    restoreFaces();
    sound::beep();
}

void NewVersionDialog::mouseMoveEvent(QMouseEvent *event)
{
    restoreFaces();
    QDialog::mouseMoveEvent(event);
}

void NewVersionDialog::restoreFaces()
{
    for (ChameleonButton *b : {m_cmdYes, m_cmdNo}) {
        if (b->backColor() != kDialogFace)
            b->setBackColor(kDialogFace);
    }
}

void NewVersionDialog::yes()
{
    // A page that cannot be opened is not worth a message: the dialog
    // closes all the same.
    if (!m_downloadUrl.isEmpty())
        QDesktopServices::openUrl(QUrl(m_downloadUrl));
    accept();
}

} // namespace marvik::gui
