// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QLabel;

namespace marvik::i18n {
class CurrentTexts;
}

namespace marvik::gui {

class ChameleonButton;

/// `Form5`: a newer Marvik is out; Yes opens the download page in the
/// web browser, No closes the question and nothing else happens. The Yes
/// button's face darkens while the mouse is over it.
class NewVersionDialog : public QDialog
{
    Q_OBJECT

public:
    /// `version`: the new version as the update page names it;
    /// `downloadUrl`: the page Yes opens.
    NewVersionDialog(const QString &version, const QString &downloadUrl, const i18n::CurrentTexts &texts,
                     QWidget *parent = nullptr);

protected:
    void showEvent(QShowEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    void relabel();
    void restoreFaces();
    void yes();

    const i18n::CurrentTexts &m_texts;
    QString m_version;
    QString m_downloadUrl;
    QLabel *m_label1;
    QLabel *m_image1;
    ChameleonButton *m_cmdYes;
    ChameleonButton *m_cmdNo;
    bool m_beeped = false;
};

} // namespace marvik::gui
