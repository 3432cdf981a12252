// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/logs/AdifLog.h"

#include <QDialog>

#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QRadioButton;

namespace marvik::i18n {
class CurrentTexts;
}

namespace marvik::gui {

class ChameleonButton;

/// What the export dialog asks for.
struct ExportChoices
{
    QString file;
    logs::AdifFormat format = logs::AdifFormat::Adi;
    QString band; ///< empty: no BAND field
    QString mode = QStringLiteral("SSTV");
};

/// `frmAdifExport`: the file, the form (ADI or ADX), the band and the mode
/// with which a list is written as a log. Enter exports, Escape cancels.
class ExportDialog : public QDialog
{
    Q_OBJECT

public:
    /// Asks for a file to write, starting from the one given; empty when
    /// the user gave none.
    using Browse = std::function<QString(const QString &suggested)>;

    ExportDialog(const i18n::CurrentTexts &texts, const QString &listLine, const ExportChoices &initial, Browse browse,
                 QWidget *parent = nullptr);

    ExportChoices choices() const;

private:
    void relabel();
    void browse();
    void formatChosen();
    void fileEdited();
    void updateButtons();

    const i18n::CurrentTexts &m_texts;
    QString m_listLine;
    Browse m_browse;
    QLabel *m_list;
    QLabel *m_fileLabel;
    QLineEdit *m_file;
    ChameleonButton *m_cmdBrowse;
    QLabel *m_formatLabel;
    QRadioButton *m_adi;
    QRadioButton *m_adx;
    QLabel *m_bandLabel;
    QComboBox *m_band;
    QLabel *m_modeLabel;
    QComboBox *m_mode;
    ChameleonButton *m_cmdExport;
    ChameleonButton *m_cmdCancel;
};

} // namespace marvik::gui
