// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/logs/RefreshProgress.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

namespace marvik::gui {

RefreshProgress::RefreshProgress(QWidget *parent)
    : QWidget(parent)
    , m_label(new QLabel(this))
    , m_bar(new QProgressBar(this))
    , m_cancel(new QPushButton(this))
{
    setObjectName(QStringLiteral("refreshProgress"));
    m_label->setObjectName(QStringLiteral("lblRefresh"));
    m_bar->setObjectName(QStringLiteral("refreshBar"));
    m_bar->setTextVisible(false);
    m_bar->setMaximumWidth(80);
    m_bar->setMaximumHeight(12);
    m_cancel->setObjectName(QStringLiteral("cmdRefreshCancel"));
    // Only a click cancels: the keyboard stays with the callsign box, and
    // Escape belongs to a single lookup.
    m_cancel->setFocusPolicy(Qt::NoFocus);
    connect(m_cancel, &QPushButton::clicked, this, &RefreshProgress::cancelClicked);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    row->addWidget(m_label);
    row->addWidget(m_bar);
    row->addWidget(m_cancel);
}

void RefreshProgress::setProgress(int n, int m, const QString &text)
{
    m_bar->setRange(0, std::max(1, m));
    // The bar shows the calls settled, not the one under way.
    m_bar->setValue(std::clamp(n - 1, 0, std::max(1, m)));
    m_label->setText(text);
}

void RefreshProgress::setCancelText(const QString &text)
{
    m_cancel->setText(text);
}

QString RefreshProgress::text() const
{
    return m_label->text();
}

} // namespace marvik::gui
