// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/share/StationView.h"

#include <QImage>
#include <QMainWindow>

#include <functional>
#include <optional>

class QAction;
class QLabel;
class QMenu;
class QSettings;
class QTimer;

namespace marvik::i18n {
class CurrentTexts;
}
namespace marvik::lookup {
class CookieJar;
}

namespace marvik::gui {

class WebView;

/// `frmStView`, the capture window: a street or satellite view of a station
/// in an embedded browser, captured as a picture of the size EasyPal users
/// send, to copy (`mnuCopy`), to save as Map.bmp (`mnuSave`) or to paste
/// into EasyPal's transmit window (`mnuPaste`). Every command captures what
/// the browser shows at that moment, so the user frames the view first.
class CaptureWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// The picture sizes offered, in the size menu's order; the last is the
    /// view's own size.
    static constexpr int kSizeCount = 4;

    CaptureWindow(const i18n::CurrentTexts &texts, lookup::CookieJar &jar, QSettings &store, QString dataFolder,
                  QWidget *parent = nullptr);
    ~CaptureWindow() override;

    /// Opens on a view request (callsign, "*", address): `Timer1` fires once,
    /// 100 ms later, to set the caption and load the address.
    void open(const QString &request);
    QString request() const { return m_request; }
    WebView *view() const { return m_view; }

    /// `CaptureView`: a picture of what the browser shows into `picCap`, its
    /// middle cut to the capture size's shape and scaled smoothly into
    /// `pic1`. False when there is no browser to take a picture of.
    bool captureView();
    /// `picCap`, the picture as the browser showed it.
    QImage rawCapture() const { return m_picCap; }
    /// `pic1`, the picture at the capture size.
    QImage capture() const { return m_pic1; }
    /// The capture size chosen in the size menu (0..kSizeCount-1), kept in
    /// the settings store.
    int sizeChoice() const { return m_sizeChoice; }
    /// The size the next capture gets.
    QSize captureSize() const;
    /// Map.bmp in the data folder: the last saved picture.
    QString workingCopy() const;

    /// The save-as dialog: gets the folder and the filter, returns the path
    /// the user chose (empty when cancelled).
    using SaveAsDialog = std::function<QString(QWidget *parent, const QString &folder, const QString &filter)>;
    /// The test seam for the save-as dialog; an empty function restores it.
    static void setSaveAsDialogForTests(SaveAsDialog dialog);

    /// A passing note in the window's status bar (what a paste could not do).
    void showNote(const QString &text);
    /// `mnuPaste` waits while a paste to EasyPal is under way.
    void setPasteEnabled(bool enabled);

signals:
    /// `mnuPaste`: the picture is on the clipboard; EasyPal is to paste it.
    void pasteRequested();

private:
    void start();
    void relabel();
    void copyToClipboard();
    void save();
    void paste();
    void chooseSize(int index);
    void putOnClipboard() const;
    QString askSavePath();

    const i18n::CurrentTexts &m_texts;
    QSettings &m_store;
    QString m_dataFolder;
    QString m_request;
    /// The request as the first tick of `Timer1` split it; nothing before.
    std::optional<share::ViewRequestParts> m_parts;
    int m_sizeChoice = 1;
    QImage m_picCap;
    QImage m_pic1;

    QTimer *m_timer = nullptr;
    WebView *m_view = nullptr;
    QLabel *m_preview = nullptr;
    QAction *m_paste = nullptr;
    QAction *m_save = nullptr;
    QAction *m_copy = nullptr;
    QMenu *m_sizeMenu = nullptr;
    QAction *m_sizeShown = nullptr;
};

} // namespace marvik::gui
