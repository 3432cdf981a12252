// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/share/CaptureWindow.h"

#include "core/app/Log.h"
#include "core/app/TextFile.h"
#include "core/i18n/Texts.h"
#include "gui/app/Commands.h"
#include "gui/app/Messages.h"
#include "gui/web/WebView.h"

#include <QActionGroup>
#include <QBuffer>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QImageWriter>
#include <QLabel>
#include <QMenuBar>
#include <QMimeData>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>

#include <algorithm>
#include <array>

namespace marvik::gui {

using i18n::TextId;

namespace {

/// The sizes EasyPal users send, then the view's own size (empty).
const std::array<QSize, CaptureWindow::kSizeCount> kSizes{QSize(320, 240), QSize(640, 480), QSize(800, 600), QSize()};
/// How the sizes are kept in the settings store.
const std::array<QString, CaptureWindow::kSizeCount> kSizeKeys{
    QStringLiteral("320x240"), QStringLiteral("640x480"), QStringLiteral("800x600"), QStringLiteral("shown")};
const QString kSizeSetting = QStringLiteral("Capture/Size");
/// A picture as operators most often send it.
constexpr int kDefaultSize = 1;

constexpr int kStartDelayMs = 100;
constexpr int kPreviewWidth = 200;

const QString kWorkingCopy = QStringLiteral("Map.bmp");
const QString kBmpFilter = QStringLiteral("bmp files (*.bmp)");

CaptureWindow::SaveAsDialog &saveAsSeam()
{
    static CaptureWindow::SaveAsDialog seam;
    return seam;
}

/// The middle of `source` in the shape of `target`, scaled smoothly to it:
/// a view wider or taller than the picture loses its edges, never its
/// proportions, so a street or a roof keeps its shape.
QImage fitTo(const QImage &source, QSize target)
{
    const QSize sourceSize = source.size();
    QSize cut = target.scaled(sourceSize, Qt::KeepAspectRatio);
    cut = cut.boundedTo(sourceSize).expandedTo(QSize(1, 1));
    const QRect region(QPoint((sourceSize.width() - cut.width()) / 2, (sourceSize.height() - cut.height()) / 2), cut);
    return source.copy(region).scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

/// A Windows bitmap file of the picture: what Map.bmp holds and what the
/// clipboard offers as image/bmp, which Wine turns into a device-independent
/// bitmap for EasyPal.
QByteArray bmpBytes(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "bmp");
    if (!writer.write(image))
        qCWarning(lcShare) << "the picture could not be made a bitmap:" << writer.errorString();
    return bytes;
}

QString sizeText(QSize size)
{
    return QStringLiteral("%1 \u00D7 %2").arg(size.width()).arg(size.height());
}

} // namespace

CaptureWindow::CaptureWindow(const i18n::CurrentTexts &texts, lookup::CookieJar &jar, QSettings &store,
                             QString dataFolder, QWidget *parent)
    : QMainWindow(parent)
    , m_texts(texts)
    , m_store(store)
    , m_dataFolder(std::move(dataFolder))
{
    setObjectName(QStringLiteral("frmStView"));
    // Room for an 800 x 600 picture beside the preview.
    resize(1040, 720);

    m_timer = new QTimer(this);
    m_timer->setObjectName(QStringLiteral("Timer1"));
    m_timer->setSingleShot(true);
    m_timer->setInterval(kStartDelayMs);
    connect(m_timer, &QTimer::timeout, this, &CaptureWindow::start);

    const auto command = [this](const char *name, void (CaptureWindow::*slot)()) {
        QAction *a = menuBar()->addAction(QString());
        a->setObjectName(QLatin1String(name));
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    m_paste = command("mnuPaste", &CaptureWindow::paste);
    m_save = command("mnuSave", &CaptureWindow::save);
    m_copy = command("mnuCopy", &CaptureWindow::copyToClipboard);

    const QString kept = m_store.value(kSizeSetting).toString();
    const auto keptAt = std::find(kSizeKeys.begin(), kSizeKeys.end(), kept);
    m_sizeChoice = keptAt == kSizeKeys.end() ? kDefaultSize : int(keptAt - kSizeKeys.begin());
    m_sizeMenu = menuBar()->addMenu(QString());
    m_sizeMenu->setObjectName(QStringLiteral("mnuSize"));
    m_sizeMenu->menuAction()->setObjectName(QStringLiteral("mnuSize"));
    auto *group = new QActionGroup(m_sizeMenu);
    group->setExclusive(true);
    for (int i = 0; i < kSizeCount; ++i) {
        QAction *a = m_sizeMenu->addAction(kSizes[std::size_t(i)].isEmpty() ? QString() : sizeText(kSizes[std::size_t(i)]));
        a->setObjectName(QStringLiteral("mnuSize%1").arg(i));
        a->setCheckable(true);
        a->setChecked(i == m_sizeChoice);
        group->addAction(a);
        connect(a, &QAction::triggered, this, [this, i] { chooseSize(i); });
    }
    m_sizeShown = m_sizeMenu->actions().constLast();

    auto *central = new QWidget(this);
    auto *layout = new QHBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    m_view = new WebView(jar, central);
    m_view->setObjectName(QStringLiteral("webView"));
    layout->addWidget(m_view, 1);
    m_preview = new QLabel(central);
    m_preview->setObjectName(QStringLiteral("pic1"));
    m_preview->setFixedWidth(kPreviewWidth);
    m_preview->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_preview->setFrameShape(QFrame::StyledPanel);
    layout->addWidget(m_preview);
    setCentralWidget(central);
    statusBar()->setObjectName(QStringLiteral("statusBar"));

    relabel();
    connect(&texts, &i18n::CurrentTexts::changed, this, &CaptureWindow::relabel);
}

CaptureWindow::~CaptureWindow() = default;

void CaptureWindow::open(const QString &request)
{
    m_request = request;
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
    m_timer->start();
}

void CaptureWindow::start()
{
    m_timer->stop();
    m_parts = share::splitViewRequest(m_request);
    relabel();
    qCDebug(lcShare) << "capture window opens" << m_parts->address;
    m_view->load(QUrl(m_parts->address));
}

void CaptureWindow::relabel()
{
    if (m_parts)
        setWindowTitle(share::captureCaption(m_texts.texts(), *m_parts));
    m_paste->setText(Commands::menuText(m_texts[TextId::CapturePaste]));
    m_save->setText(Commands::menuText(m_texts[TextId::CaptureSave]));
    m_copy->setText(Commands::menuText(m_texts[TextId::CaptureCopy]));
    m_sizeMenu->setTitle(Commands::menuText(m_texts[TextId::CaptureSizeMenu]));
    m_sizeShown->setText(Commands::menuText(m_texts[TextId::CaptureSizeShown]));
    m_view->setUnavailableText(m_texts[TextId::WebUnavailable]);
}

QSize CaptureWindow::captureSize() const
{
    const QSize chosen = kSizes[std::size_t(m_sizeChoice)];
    if (!chosen.isEmpty())
        return chosen;
    const QWidget *content = m_view->content();
    return content ? content->size() : QSize();
}

QString CaptureWindow::workingCopy() const
{
    return QDir(m_dataFolder).filePath(kWorkingCopy);
}

bool CaptureWindow::captureView()
{
    QWidget *content = m_view->content();
    const QSize target = captureSize();
    if (!content || target.isEmpty())
        return false;
    QImage grabbed = content->grab().toImage();
    if (grabbed.isNull())
        return false;
    // No transparency: a bitmap for Windows programs has none.
    m_picCap = grabbed.convertToFormat(QImage::Format_RGB32);
    m_picCap.setDevicePixelRatio(1);
    m_pic1 = fitTo(m_picCap, target);
    m_preview->setPixmap(QPixmap::fromImage(
        m_pic1.scaledToWidth(std::min(kPreviewWidth - 4, m_pic1.width()), Qt::SmoothTransformation)));
    m_preview->setToolTip(sizeText(m_pic1.size()));
    return true;
}

void CaptureWindow::putOnClipboard() const
{
    // Qt offers the image as PNG; Wine hands a Windows program a bitmap
    // only from image/bmp, so that goes along in so many bytes.
    auto *mime = new QMimeData;
    mime->setImageData(m_pic1);
    mime->setData(QStringLiteral("image/bmp"), bmpBytes(m_pic1));
    QGuiApplication::clipboard()->setMimeData(mime);
}

void CaptureWindow::copyToClipboard()
{
    if (captureView())
        putOnClipboard();
}

void CaptureWindow::paste()
{
    if (!captureView())
        return;
    putOnClipboard();
    emit pasteRequested();
}

void CaptureWindow::save()
{
    if (!captureView())
        return;
    const QByteArray bytes = bmpBytes(m_pic1);
    const QString path = workingCopy();
    QString why;
    if (!app::writeFileAtomically(path, bytes, &why)) {
        messages::exclamation(this, m_texts.fill(TextId::FileWriteFailed, QDir::toNativeSeparators(path), why));
        return;
    }
    const QString chosen = askSavePath();
    if (chosen.isEmpty())
        return;
    if (!app::writeFileAtomically(chosen, bytes, &why))
        messages::exclamation(this, m_texts.fill(TextId::FileWriteFailed, QDir::toNativeSeparators(chosen), why));
}

QString CaptureWindow::askSavePath()
{
    if (const SaveAsDialog &seam = saveAsSeam())
        return seam(this, m_dataFolder, kBmpFilter);
    QFileDialog dialog(this);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDirectory(m_dataFolder);
    dialog.setNameFilter(kBmpFilter);
    dialog.setDefaultSuffix(QStringLiteral("bmp"));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return dialog.selectedFiles().constFirst();
}

void CaptureWindow::setSaveAsDialogForTests(SaveAsDialog dialog)
{
    saveAsSeam() = std::move(dialog);
}

void CaptureWindow::chooseSize(int index)
{
    if (index < 0 || index >= kSizeCount)
        return;
    m_sizeChoice = index;
    m_store.setValue(kSizeSetting, kSizeKeys[std::size_t(index)]);
}

void CaptureWindow::showNote(const QString &text)
{
    statusBar()->showMessage(text, 8000);
}

void CaptureWindow::setPasteEnabled(bool enabled)
{
    m_paste->setEnabled(enabled);
}

} // namespace marvik::gui
