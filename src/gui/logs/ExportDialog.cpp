// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/logs/ExportDialog.h"

#include "core/i18n/Texts.h"
#include "core/logs/AdifExport.h"
#include "gui/widgets/ChameleonButton.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QRegularExpression>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

namespace marvik::gui {

using i18n::TextId;

namespace {

// The dialogs' button face.
const QColor kButtonFace(170, 197, 255);

// What the mode box offers; any other ADIF mode may be typed.
const QStringList kModes = {QStringLiteral("SSTV"), QStringLiteral("FAX"), QStringLiteral("DIGITALVOICE"),
                            QStringLiteral("SSB"),  QStringLiteral("FM"),  QStringLiteral("AM"),
                            QStringLiteral("CW")};

const QRegularExpression kLogSuffix(QStringLiteral("\\.(adi|adif|adx)$"), QRegularExpression::CaseInsensitiveOption);

ChameleonButton *dialogButton(QWidget *parent, const char *name)
{
    auto *b = new ChameleonButton(parent);
    b->setObjectName(QLatin1String(name));
    b->setBackColor(kButtonFace);
    b->setForeColor(Qt::black);
    return b;
}

} // namespace

ExportDialog::ExportDialog(const i18n::CurrentTexts &texts, const QString &listLine, const ExportChoices &initial,
                           Browse browse, QWidget *parent)
    : QDialog(parent)
    , m_texts(texts)
    , m_listLine(listLine)
    , m_browse(std::move(browse))
    , m_list(new QLabel(this))
    , m_fileLabel(new QLabel(this))
    , m_file(new QLineEdit(initial.file, this))
    , m_cmdBrowse(dialogButton(this, "cmdBrowse"))
    , m_formatLabel(new QLabel(this))
    , m_adi(new QRadioButton(this))
    , m_adx(new QRadioButton(this))
    , m_bandLabel(new QLabel(this))
    , m_band(new QComboBox(this))
    , m_modeLabel(new QLabel(this))
    , m_mode(new QComboBox(this))
    , m_cmdExport(dialogButton(this, "cmdExport"))
    , m_cmdCancel(dialogButton(this, "cmdCancel"))
{
    setObjectName(QStringLiteral("frmAdifExport"));
    m_list->setObjectName(QStringLiteral("lblList"));
    m_file->setObjectName(QStringLiteral("txtFile"));
    m_file->setMinimumWidth(280);
    m_fileLabel->setBuddy(m_file);
    m_adi->setObjectName(QStringLiteral("optAdi"));
    m_adx->setObjectName(QStringLiteral("optAdx"));
    auto *formats = new QButtonGroup(this);
    formats->addButton(m_adi);
    formats->addButton(m_adx);
    (initial.format == logs::AdifFormat::Adx ? m_adx : m_adi)->setChecked(true);
    m_formatLabel->setBuddy(m_adi);

    m_band->setObjectName(QStringLiteral("cboBand"));
    m_band->addItem(QString(), QString());
    for (const QString &band : logs::bandNames())
        m_band->addItem(band, band);
    m_band->setCurrentIndex(std::max(0, m_band->findData(initial.band)));
    m_bandLabel->setBuddy(m_band);

    m_mode->setObjectName(QStringLiteral("cboMode"));
    m_mode->setEditable(true);
    m_mode->setInsertPolicy(QComboBox::NoInsert);
    m_mode->addItems(kModes);
    // Only what a log's MODE field can hold can be typed.
    m_mode->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("([A-Za-z0-9][A-Za-z0-9/-]{0,31})?")), m_mode));
    m_mode->setCurrentText(initial.mode);
    m_modeLabel->setBuddy(m_mode);

    m_cmdExport->setDefault(true);

    auto *grid = new QGridLayout;
    grid->addWidget(m_list, 0, 0, 1, 3);
    grid->addWidget(m_fileLabel, 1, 0);
    grid->addWidget(m_file, 1, 1);
    grid->addWidget(m_cmdBrowse, 1, 2);
    auto *formRow = new QHBoxLayout;
    formRow->addWidget(m_adi);
    formRow->addWidget(m_adx);
    formRow->addStretch();
    grid->addWidget(m_formatLabel, 2, 0);
    grid->addLayout(formRow, 2, 1, 1, 2);
    grid->addWidget(m_bandLabel, 3, 0);
    grid->addWidget(m_band, 3, 1, Qt::AlignLeft);
    grid->addWidget(m_modeLabel, 4, 0);
    grid->addWidget(m_mode, 4, 1, Qt::AlignLeft);
    grid->setColumnStretch(1, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cmdExport);
    buttons->addWidget(m_cmdCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addSpacing(6);
    layout->addLayout(buttons);

    setTabOrder(m_file, m_cmdBrowse);
    setTabOrder(m_cmdBrowse, m_adi);
    setTabOrder(m_adi, m_adx);
    setTabOrder(m_adx, m_band);
    setTabOrder(m_band, m_mode);
    setTabOrder(m_mode, m_cmdExport);
    setTabOrder(m_cmdExport, m_cmdCancel);

    connect(m_cmdBrowse, &QPushButton::clicked, this, &ExportDialog::browse);
    connect(m_cmdExport, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_adi, &QRadioButton::toggled, this, &ExportDialog::formatChosen);
    connect(m_file, &QLineEdit::textEdited, this, &ExportDialog::fileEdited);
    connect(m_file, &QLineEdit::textChanged, this, &ExportDialog::updateButtons);
    connect(&texts, &i18n::CurrentTexts::changed, this, &ExportDialog::relabel);
    relabel();
    updateButtons();
    m_file->setFocus();
}

void ExportDialog::relabel()
{
    setWindowTitle(m_texts[TextId::ExportTitle]);
    m_list->setText(m_listLine);
    m_fileLabel->setText(m_texts[TextId::ExportFile]);
    m_cmdBrowse->setCaption(m_texts[TextId::ExportBrowse]);
    m_formatLabel->setText(m_texts[TextId::ExportFormat]);
    m_adi->setText(m_texts[TextId::ExportAdi]);
    m_adx->setText(m_texts[TextId::ExportAdx]);
    m_bandLabel->setText(m_texts[TextId::ExportBand]);
    m_band->setItemText(0, m_texts[TextId::ExportNoBand]);
    m_modeLabel->setText(m_texts[TextId::ExportMode]);
    m_cmdExport->setCaption(m_texts[TextId::ExportButton]);
    m_cmdCancel->setCaption(m_texts[TextId::ButtonCancel]);
}

void ExportDialog::browse()
{
    if (!m_browse)
        return;
    const QString chosen = m_browse(m_file->text());
    if (chosen.isEmpty())
        return;
    m_file->setText(chosen);
    fileEdited();
}

void ExportDialog::fileEdited()
{
    // A name that says its form chooses it, as marvik-cli does.
    const QRegularExpressionMatch m = kLogSuffix.match(m_file->text());
    if (!m.hasMatch())
        return;
    const bool adx = m.captured(1).compare(QLatin1StringView("adx"), Qt::CaseInsensitive) == 0;
    QSignalBlocker quiet(m_adi);
    (adx ? m_adx : m_adi)->setChecked(true);
}

void ExportDialog::formatChosen()
{
    // The file's suffix follows the form, so the name never says otherwise.
    QString name = m_file->text();
    const QRegularExpressionMatch m = kLogSuffix.match(name);
    if (!m.hasMatch())
        return;
    name.chop(m.capturedLength(0));
    m_file->setText(name + (m_adx->isChecked() ? QStringLiteral(".adx") : QStringLiteral(".adi")));
}

void ExportDialog::updateButtons()
{
    m_cmdExport->setEnabled(!m_file->text().trimmed().isEmpty());
}

ExportChoices ExportDialog::choices() const
{
    ExportChoices c;
    c.file = m_file->text().trimmed();
    c.format = m_adx->isChecked() ? logs::AdifFormat::Adx : logs::AdifFormat::Adi;
    c.band = m_band->currentData().toString();
    c.mode = m_mode->currentText().trimmed();
    return c;
}

} // namespace marvik::gui
