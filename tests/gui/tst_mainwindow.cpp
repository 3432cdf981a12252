// SPDX-License-Identifier: GPL-3.0-or-later
// The main window driven as a user drives it: clicks on rows, the context
// menus, the list chooser, F8, and the files it leaves on disk.
#include "support/GuiTestUtil.h"

#include "core/i18n/Texts.h"
#include "gui/app/AppController.h"
#include "gui/app/Commands.h"
#include "gui/app/MainCommands.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"
#include "gui/app/Messages.h"
#include "gui/maps/MapController.h"
#include "gui/maps/MapWindow.h"
#include "gui/app/StatusLine.h"
#include "gui/app/Selection.h"
#include "gui/web/WebView.h"
#include "core/app/Session.h"
#include "core/lists/ListStore.h"
#include "core/lookup/LookUp.h"
#include "core/lookup/Sources.h"
#include "gui/lookup/LookupController.h"
#include "support/MarvikUnderTest.h"
#include "gui/lists/ListGrid.h"
#include "core/lists/CallListModel.h"
#include "core/maps/Geometry.h"

#include <QAbstractButton>
#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>
#include <QPainter>
#include <QStyleOptionViewItem>
#include <QPlainTextEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <memory>

using namespace marvik;
using test::DialogAnswerer;
using test::readAll;
using test::writeAll;

namespace {

const QByteArray kConfig = "LatLon:\r\n 51.5\r\n -0.12\r\nSort:\r\n 0 \r\n 0 \r\nStartup:\r\n0\r\nG0XYZ\r\n\r\n\r\n"
                           " 1 \r\n 0 \r\nDX\r\n\r\nEurope\r\nxxx list\r\nOld\r\n1\r\nMaps:\r\n 0 \r\nWORLDMAP*3*4\r\n";

// Stored unsorted, with a stale bearing and a lower-case twin of DL1ABC.
const QByteArray kList1 = "K1ABC*Jim**James Taylor*45 Elm Rd*Boston, MA*USA*42.36*-71.06*20240105093000*x\r\n"
                          "DL1ABC*Hansi*123\xB0*Hans Meyer*Hauptstr. 12*Berlin*Germany*52.52*13.405*20240102101500*\r\n"
                          "G4XYZ*Bob**Robert Smith*12 High Street*Leeds*England*0*-1.55*20231231220000*\r\n"
                          "dl1abc*Hans**Hans Meyer******20240101000000*\r\n";
const QByteArray kList2 = "F5ABC*Jean**Jean Dupont*3 Rue*Paris*France*48.86*0*20240112154500*\r\n";

QString az(double lat, double lon)
{
    return maps::azimuthText(maps::bearingFrom({51.5, -0.12}, lat, lon).degrees);
}

/// Receives the URL the help command opens instead of a desktop viewer.
class UrlCatcher : public QObject
{
    Q_OBJECT

public:
    explicit UrlCatcher(QUrl *target)
        : m_target(target)
    {
    }
    Q_INVOKABLE void open(const QUrl &url) { *m_target = url; }

private:
    QUrl *m_target;
};

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<gui::CompositionRoot> m_root;
    gui::MainWindow *m_window = nullptr;
    std::unique_ptr<QTcpServer> m_silent;

    QString file(const QString &name) const { return m_dir->filePath(name); }
    gui::MainWindow *start()
    {
        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        m_window = m_root->mainWindow();
        if (!m_root->startUp())
            return nullptr;
        m_window->show();
        if (!QTest::qWaitForWindowExposed(m_window))
            return nullptr;
        // The lists arrive from their readers after the first paint.
        m_root->lists().finishReading();
        return m_window;
    }
    /// Points every callbook at a server that takes the connection and
    /// never answers, so a lookup stays in flight until it is cancelled:
    /// against a closed port the whole chain of sources is refused within
    /// milliseconds, before a test can see its first request.
    void holdLookups()
    {
        m_silent = std::make_unique<QTcpServer>();
        QVERIFY(m_silent->listen(QHostAddress::LocalHost));
        const QString host = QStringLiteral("http://127.0.0.1:%1").arg(m_silent->serverPort());
        lookup::SourceSettings sources;
        for (const lookup::SourceInfo &info : lookup::sourceTable()) {
            sources.setHost(info.source, host);
            sources.setServiceHost(info.source, host);
        }
        sources.save(*m_store);
    }
    QTimer *timer(int n) const { return test::findPart<QTimer>(*m_root, QStringLiteral("Timer%1").arg(n)); }
    /// The requests of the lookup control still in flight.
    QStringList lookups() const { return m_root->lookup()->lookUp()->pendingRequests(); }
    template<typename T>
    T *child(const QString &name) const { return test::findPart<T>(*m_root, name); }
    QString cell(int list, int row, int column) const
    {
        return m_root->lists().model(list)->index(row, column).data().toString();
    }
    QStringList callsigns(int list) const
    {
        QStringList out;
        for (int r = 0; r < m_root->lists().model(list)->rowCount(); ++r)
            out << cell(list, r, 0);
        return out;
    }
    QPoint cellPoint(int row, int column) const
    {
        gui::ListGrid *g = m_window->grid(m_root->selection().currentList());
        return g->visualRect(g->model()->index(row, column)).center();
    }
    void click(int row, int column, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(m_window->grid(m_root->selection().currentList())->viewport(), button, {}, cellPoint(row, column));
    }
    /// Right-clicks a row, returns the opened row menu (closed again by the caller).
    QMenu *rowMenu(int row)
    {
        click(row, 0, Qt::RightButton);
        return child<QMenu>(QStringLiteral("mnuPopup"));
    }
    void trigger(const QString &action)
    {
        child<QMenu>(QStringLiteral("mnuPopup"))->hide();
        child<QAction>(action)->trigger();
    }
    void switchTo(int list)
    {
        auto *cbo = child<QComboBox>(QStringLiteral("cboList"));
        cbo->setCurrentIndex(list - 1);
        emit cbo->activated(list - 1);
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QDir(m_dir->path()).mkpath(QStringLiteral("Maps"));
        QDir(m_dir->path()).mkpath(QStringLiteral("Images/Thumbs"));
        writeAll(file(QStringLiteral("Maps/WorldMap.bmp")), "BM");
        writeAll(file(QStringLiteral("Maps/Worldmap.bmp")), "BM");
        writeAll(file(QStringLiteral("Marvik.cfg")), kConfig);
        writeAll(file(QStringLiteral("List1.dat")), kList1);
        writeAll(file(QStringLiteral("List2.dat")), kList2);
        QImage thumb(24, 16, QImage::Format_RGB32);
        thumb.fill(Qt::darkGreen);
        QVERIFY(thumb.save(file(QStringLiteral("Images/Thumbs/DL1ABC.jpg")), "BMP"));
        // The picture behind the thumbnail, which a click on it opens.
        QVERIFY(thumb.scaled(48, 32).save(file(QStringLiteral("Images/DL1ABC.jpg")), "PNG"));
        m_store = std::make_unique<QSettings>(file(QStringLiteral("settings.ini")), QSettings::IniFormat);
        test::pointSourcesNowhere(*m_store);
    }

    void cleanup()
    {
        m_root.reset();
        m_silent.reset();
        m_window = nullptr;
        m_store.reset();
        m_dir.reset();
    }

    void startUpShowsTheListsAsStored()
    {
        QVERIFY(start());
        QCOMPARE(m_window->objectName(), QStringLiteral("Form1"));
        QCOMPARE(m_window->windowTitle(), QStringLiteral("Marvik  3.12"));
        auto *cbo = child<QComboBox>(QStringLiteral("cboList"));
        QCOMPARE(cbo->count(), 5);
        QCOMPARE(cbo->itemText(0), QStringLiteral(" DX  (4)"));
        QCOMPARE(cbo->itemText(1), QStringLiteral(" List 2  (1)"));
        QCOMPARE(cbo->itemText(2), QStringLiteral(" Europe  (0)"));
        QCOMPARE(cbo->itemText(3), QStringLiteral(" xxx list  (0)"));
        QCOMPARE(m_root->selection().currentList(), 1);
        QVERIFY(child<QLineEdit>(QStringLiteral("txtCall"))->hasFocus());
        // Sorted by callsign, case-sensitive: lower case after upper case.
        QCOMPARE(callsigns(1), (QStringList{u"DL1ABC"_qs, u"G4XYZ"_qs, u"K1ABC"_qs, u"dl1abc"_qs}));
        // The stale bearing is recomputed; latitude 0 leaves it empty.
        QCOMPARE(cell(1, 0, 2), az(52.52, 13.405));
        QCOMPARE(cell(1, 1, 2), QString());
        QCOMPARE(m_root->lists().model(1)->index(0, 2).data(Qt::TextAlignmentRole).toInt(),
                 int(Qt::AlignRight | Qt::AlignVCenter));
        // Hansi is not Hans: marked; K1ABC's Jim is not James: marked; dl1abc's Hans is.
        QCOMPARE(m_root->lists().model(1)->index(0, 1).data(Qt::BackgroundRole).value<QColor>(), QColor(187, 238, 255));
        QVERIFY(!m_root->lists().model(1)->index(3, 1).data(Qt::BackgroundRole).isValid());
        QVERIFY(!m_root->lists().model(1)->index(0, 1).data(lists::CallListModel::ThumbnailRole).value<QImage>().isNull());
        QCOMPARE(m_root->session().settings().maps.size(), 1);
        QCOMPARE(m_root->session().settings().maps[0].value1, QStringLiteral("3"));
        QCOMPARE(child<QMenu>(QStringLiteral("mnuDatabase"))->title(), QStringLiteral("QRZ.com"));
        QVERIFY(child<QAction>(QStringLiteral("mnuSource1"))->isChecked());
        QVERIFY(child<QAction>(QStringLiteral("mnuLang0"))->isChecked());
        QVERIFY(child<QRadioButton>(QStringLiteral("optSort0"))->isChecked());
        QCOMPARE(child<QPushButton>(QStringLiteral("cmdGet"))->palette().color(QPalette::Button), QColor(170, 197, 255));
        // The map part is wired in.
        QVERIFY(child<QPushButton>(QStringLiteral("cmdMap"))->isEnabled());
        // The dialogs' items: the setup ones always, the manual update of a
        // row only while a row is selected.
        QVERIFY(child<QAction>(QStringLiteral("mnuLatLon"))->isEnabled());
        QVERIFY(child<QAction>(QStringLiteral("mnuAdd"))->isEnabled());
        QCOMPARE(m_root->selection().currentRow(), -1);
        QVERIFY(!child<QAction>(QStringLiteral("mnuManUpdate"))->isEnabled());
        QVERIFY(child<QAction>(QStringLiteral("mnuNames"))->isEnabled());
        QCOMPARE(m_window->minimumSize(), QSize(300, 200));
        QCOMPARE(m_window->maximumWidth(), 614);
        QCOMPARE(m_window->size(), QSize(400, 466));
    }

    // Starting Marvik neither loads nor starts the web engine: only a web
    // window's first opening does.
    void startingLoadsNoWebEngine()
    {
        QVERIFY(start());
        QVERIFY(!gui::isWebModuleLoaded());
        QFile maps(u"/proc/self/maps"_qs);
        QVERIFY(maps.open(QIODevice::ReadOnly));
        const QByteArray mapped = maps.readAll();
        QVERIFY(!mapped.contains("libQt6WebEngine"));
        QVERIFY(!mapped.contains("libmarvik_web"));
    }

    void currentListFromTheFile_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("shown");
        QTest::newRow("0 shows list 1") << QByteArray("0") << 1;
        QTest::newRow("2") << QByteArray("2") << 2;
    }
    void currentListFromTheFile()
    {
        QFETCH(QByteArray, line);
        QFETCH(int, shown);
        writeAll(file(QStringLiteral("Marvik.cfg")), QByteArray(kConfig).replace("Old\r\n1\r\n", QByteArray("Old\r\n" + line + "\r\n")));
        QVERIFY(start());
        QCOMPARE(m_root->selection().currentList(), shown);
        QVERIFY(m_window->grid(shown)->isVisible());
    }

    void secondInstanceIsRefused()
    {
        QVERIFY(start());
        gui::CompositionRoot second(m_dir->path(), m_store.get());
        DialogAnswerer answer;
        QVERIFY(!second.startUp());
        QVERIFY(answer.dialog().seen);
        QCOMPARE(answer.dialog().title, QStringLiteral("Marvik"));
        QCOMPARE(answer.dialog().text, QStringLiteral("Another instance of Marvik is running"));
        QCOMPARE(answer.dialog().icon, QMessageBox::Warning);
    }

    void damagedListIsKeptAndReported()
    {
        writeAll(file(QStringLiteral("List2.dat")), kList2 + "BROKEN*line\r\n" + kList2);
        DialogAnswerer answer;
        QVERIFY(start());
        // List 2 is read in the background once the window has painted: the
        // chooser first counts the file's lines, then the rows the load kept.
        auto *chooser = child<QComboBox>(QStringLiteral("cboList"));
        QTRY_VERIFY(answer.dialog().seen);
        QCOMPARE(chooser->itemText(1).right(4), QStringLiteral(" (2)"));
        QVERIFY(answer.dialog().text.contains(QStringLiteral("List2.dat, line 2")));
        const QStringList copies = QDir(m_dir->path()).entryList({QStringLiteral("List2.dat.damaged-*")});
        QCOMPARE(copies.size(), 1);
        QCOMPARE(readAll(file(copies[0])), kList2 + "BROKEN*line\r\n" + kList2);
    }

    void shutDownWritesConfigurationListsAndPlacement_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<bool>("placementStored");
        QTest::newRow("normal") << u"normal"_qs << true;
        QTest::newRow("expanded") << u"expanded"_qs << false;
        QTest::newRow("maximised") << u"maximised"_qs << false;
    }
    void shutDownWritesConfigurationListsAndPlacement()
    {
        QFETCH(QString, state);
        QFETCH(bool, placementStored);
        writeAll(file(QStringLiteral("Marvik.ini")), "old settings");
        QVERIFY(start());
        m_window->move(30, 45);
        m_window->resize(500, 300);
        if (state == u"expanded")
            child<QAction>(QStringLiteral("mnuExpand"))->trigger();
        if (state == u"maximised")
            m_window->setWindowState(Qt::WindowMaximized);
        QTest::qWait(20);
        m_window->close();

        const QByteArray cfg = "LatLon:\r\n 51.5\r\n-0.12\r\nSort:\r\n 0 \r\n 0 \r\nStartup:\r\n0\r\nG0XYZ\r\n\r\n\r\n"
                               " 1 \r\n 0 \r\nDX\r\nList 2\r\nEurope\r\nxxx list\r\nOld\r\n1\r\nMaps:\r\n 0 \r\nWorldMap*3*4\r\n";
        QCOMPARE(readAll(file(QStringLiteral("Marvik.cfg"))), cfg);
        QCOMPARE(readAll(file(QStringLiteral("List1.dat"))),
                 "DL1ABC*Hansi*" + az(52.52, 13.405).toLatin1() +
                     "*Hans Meyer*Hauptstr. 12*Berlin*Germany*52.52*13.405*20240102101500*\r\n"
                     "G4XYZ*Bob**Robert Smith*12 High Street*Leeds*England*0*-1.55*20231231220000*\r\n"
                     "K1ABC*Jim*" + az(42.36, -71.06).toLatin1() +
                     "*James Taylor*45 Elm Rd*Boston, MA*USA*42.36*-71.06*20240105093000*x\r\n"
                     "dl1abc*Hans**Hans Meyer******20240101000000*\r\n");
        QCOMPARE(readAll(file(QStringLiteral("List3.dat"))), QByteArray());
        QVERIFY(QFileInfo::exists(file(QStringLiteral("MarvikOld.ini"))));
        QVERIFY(!QFileInfo::exists(file(QStringLiteral("Marvik.ini"))));
        m_store->sync();
        QCOMPARE(m_store->contains(QStringLiteral("Me/Width")), placementStored);
        if (placementStored) {
            QCOMPARE(m_store->value(QStringLiteral("Me/Left")).toString(), QStringLiteral("450"));
            QCOMPARE(m_store->value(QStringLiteral("Me/Top")).toString(), QStringLiteral("675"));
            QCOMPARE(m_store->value(QStringLiteral("Me/Width")).toString(), QStringLiteral("7500"));
            QCOMPARE(m_store->value(QStringLiteral("Me/Height")).toString(), QStringLiteral("4500"));
        }
    }

    void writeFailureIsReported()
    {
        QVERIFY(start());
        QDir(m_dir->path()).mkdir(QStringLiteral("List4.dat"));
        DialogAnswerer answer;
        m_window->close();
        QVERIFY(answer.dialog().seen);
        QVERIFY(answer.dialog().text.contains(QStringLiteral("List4.dat could not be written")));
        // The other lists are written all the same.
        QVERIFY(readAll(file(QStringLiteral("List5.dat"))).isEmpty());
        QVERIFY(QFileInfo::exists(file(QStringLiteral("List5.dat"))));
    }

    void sortOptionsAndTheSortModeQuirk()
    {
        QVERIFY(start());
        auto *byTime = child<QRadioButton>(QStringLiteral("optSort1"));
        QTest::mouseClick(byTime, Qt::LeftButton);
        QCOMPARE(callsigns(1), (QStringList{u"K1ABC"_qs, u"DL1ABC"_qs, u"dl1abc"_qs, u"G4XYZ"_qs}));
        QCOMPARE(m_root->session().settings().sortMode, qint16(1));
        // Any later change sorts with the program's sort mode, which comes back as 9.
        click(0, 0);
        trigger(QStringLiteral("mnuAddTo3"));
        QCOMPARE(m_root->session().settings().sortMode, qint16(9));
        QVERIFY(byTime->isChecked());
        QTest::mouseClick(child<QRadioButton>(QStringLiteral("optSort0")), Qt::LeftButton);
        QCOMPARE(callsigns(1), (QStringList{u"DL1ABC"_qs, u"G4XYZ"_qs, u"K1ABC"_qs, u"dl1abc"_qs}));
        QCOMPARE(m_root->session().settings().sortMode, qint16(0));
    }

    void listSwitchReloadsFromTheFile()
    {
        QVERIFY(start());
        writeAll(file(QStringLiteral("List2.dat")), kList2 + "W1AW*Hiram**Hiram Maxim******20200101000000*\r\n");
        switchTo(2);
        QCOMPARE(m_root->selection().currentList(), 2);
        QVERIFY(m_window->grid(2)->isVisible());
        QVERIFY(!m_window->grid(1)->isVisible());
        QCOMPARE(callsigns(2), (QStringList{u"F5ABC"_qs, u"W1AW"_qs}));
        QVERIFY(child<QLineEdit>(QStringLiteral("txtCall"))->hasFocus());
    }

    void clickSelectsTheRowAndTheThumbnailZone_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<bool>("picture");
        // 2200 and 2500 twips are 146.7 and 166.7 pixels: the zone is 147..166.
        QTest::newRow("146 px") << 146 << false;
        QTest::newRow("147 px") << 147 << true;
        QTest::newRow("167 px") << 167 << false;
    }
    void clickSelectsTheRowAndTheThumbnailZone()
    {
        QFETCH(int, x);
        QFETCH(bool, picture);
        QVERIFY(start());
        QSignalSpy pictures(m_window, &gui::MainWindow::thumbnailClicked);
        QSignalSpy rows(m_window, &gui::MainWindow::rowMouseUp);
        const QPoint at(x, cellPoint(0, 1).y());
        QTest::mouseClick(m_window->grid(1)->viewport(), Qt::LeftButton, {}, at);
        QCOMPARE(m_root->selection().currentRow(), 0);
        QCOMPARE(pictures.size(), picture ? 1 : 0);
        QCOMPARE(rows.size(), 1);
        // A row without a thumbnail never opens a picture.
        QTest::mouseClick(m_window->grid(1)->viewport(), Qt::LeftButton, {}, QPoint(x, cellPoint(2, 1).y()));
        QCOMPARE(m_root->selection().currentRow(), 2);
        QCOMPARE(pictures.size(), picture ? 1 : 0);
    }

    void languagesRelabelTheWindow()
    {
        struct Language
        {
            int index;
            QString setup, german, satellite, clearPrompt, yes;
        };
        // Through every language and back to English, each from the one
        // before: the captions come from the shipped files.
        const QList<Language> languages{
            {2, u"Optionen"_qs, u"Deutsch"_qs, u"Google-Satellitenansicht von DL1ABC"_qs,
             u"Alle Einträge in xxx löschen?"_qs, u"&Ja"_qs},
            {1, u"Ajustes"_qs, u"Alemán"_qs, u"Vista de satélite de DL1ABC (Google)"_qs,
             u"¿Borrar todas las entradas de xxx?"_qs, u"&Sí"_qs},
            {3, u"Réglages"_qs, u"Allemand"_qs, u"Vue satellite Google de DL1ABC"_qs,
             u"Supprimer toutes les entrées de xxx\u00A0?"_qs, u"&Oui"_qs},
            {4, u"Opties"_qs, u"Duits"_qs, u"Google-satellietbeeld van DL1ABC"_qs,
             u"Alle items in xxx verwijderen?"_qs, u"&Ja"_qs},
            {0, u"Setup"_qs, u"German"_qs, u"Google satellite view of DL1ABC"_qs, u"Delete all entries in xxx?"_qs,
             u"&Yes"_qs},
        };
        QVERIFY(start());
        for (const Language &l : languages) {
            child<QAction>(QStringLiteral("mnuLang%1").arg(l.index))->trigger();
            QCOMPARE(gui::messages::takeShown().size(), 0);
            for (int i = 0; i < 5; ++i)
                QCOMPARE(child<QAction>(QStringLiteral("mnuLang%1").arg(i))->isChecked(), i == l.index);
            QCOMPARE(child<QMenu>(QStringLiteral("mnuSetup"))->title(), l.setup);
            QCOMPARE(child<QAction>(QStringLiteral("mnuLang2"))->text(), l.german);
            rowMenu(0);
            QCOMPARE(child<QAction>(QStringLiteral("mnuStView1"))->text(), l.satellite);
            DialogAnswerer no(QMessageBox::No);
            trigger(QStringLiteral("mnuClear"));
            // The list name as the chooser shows it, blanks and all.
            QCOMPARE(no.dialog().text, QString(l.clearPrompt).replace(u"xxx"_qs, u" DX  "_qs));
            QVERIFY2(no.dialog().buttonTexts.contains(l.yes), qPrintable(no.dialog().buttonTexts.join(u'|')));
        }
        // A language whose file is gone: its own built-in message, the
        // language names back in English, every other text as it was.
        child<QAction>(QStringLiteral("mnuLang2"))->trigger();
        QVERIFY(QFile::remove(file(QStringLiteral("Languages/Marvik_Dutch.Language"))));
        {
            DialogAnswerer ok;
            child<QAction>(QStringLiteral("mnuLang4"))->trigger();
            QCOMPARE(ok.dialog().text, QStringLiteral("Taalbestand ontbreekt of corrupt."));
        }
        QCOMPARE(child<QAction>(QStringLiteral("mnuLang2"))->text(), QStringLiteral("German"));
        QCOMPARE(child<QMenu>(QStringLiteral("mnuSetup"))->title(), QStringLiteral("Optionen"));
        QVERIFY(child<QAction>(QStringLiteral("mnuLang4"))->isChecked());
        // The choice is kept in Marvik.cfg's language line.
        m_window->close();
        QCOMPARE(readAll(file(QStringLiteral("Marvik.cfg"))).split('\n').value(12), QByteArray(" 4 \r"));
    }

    void theWholeMenuBarShowsAtTheMinimumWidth()
    {
        QVERIFY(start());
        // The longest label a source can give the first menu.
        const int callook = lookup::menuIndexOf(lookup::Source::Callook);
        child<QAction>(QStringLiteral("mnuSource%1").arg(callook))->trigger();
        m_window->resize(m_window->minimumWidth(), 400);
        QTest::qWait(50);
        auto *bar = m_window->menuBar();
        for (QAction *a : {child<QMenu>(QStringLiteral("mnuDatabase"))->menuAction(), child<QAction>(QStringLiteral("mnuExpand")),
                           child<QMenu>(QStringLiteral("mnuSetup"))->menuAction(), child<QAction>(QStringLiteral("mnuHelp")),
                           child<QAction>(QStringLiteral("mnuAbout"))}) {
            const QRect r = bar->actionGeometry(a);
            QVERIFY2(!r.isEmpty() && r.right() <= bar->width() && r.bottom() <= bar->height(),
                     qPrintable(a->objectName() + u" is not shown whole"_qs));
        }
        // Nothing went into the bar's overflow button.
        const auto overflow = bar->findChildren<QToolButton *>(QStringLiteral("qt_menubar_ext_button"));
        QVERIFY(overflow.isEmpty() || !overflow.first()->isVisible());
    }

    void aDisabledMapButtonLooksDisabled()
    {
        QVERIFY(start());
        auto *map = child<QPushButton>(QStringLiteral("cmdMap"));
        map->setEnabled(true);
        const QImage enabled = map->grab().toImage();
        map->setEnabled(false);
        const QImage disabled = map->grab().toImage();
        QCOMPARE(enabled.size(), disabled.size());
        // The face's middle, left of the caption, and the caption's darkest pixel.
        const QPoint face(4, map->height() / 2);
        QVERIFY(enabled.pixelColor(face) != disabled.pixelColor(face));
        const auto darkest = [](const QImage &image) {
            int least = 255;
            for (int y = 2; y < image.height() - 2; ++y) {
                for (int x = 2; x < image.width() - 2; ++x)
                    least = std::min(least, qGray(image.pixel(x, y)));
            }
            return least;
        };
        QVERIFY2(darkest(disabled) > darkest(enabled) + 40, "the disabled caption is as dark as the enabled one");
    }

    void theThirdMenuStandsAtTheRight()
    {
        QVERIFY(start());
        m_window->resize(600, 400);
        QTest::qWait(20);
        auto *bar = m_window->menuBar();
        const QRect expand = bar->actionGeometry(child<QAction>(QStringLiteral("mnuExpand")));
        const QRect setup = bar->actionGeometry(child<QMenu>(QStringLiteral("mnuSetup"))->menuAction());
        const QRect about = bar->actionGeometry(child<QAction>(QStringLiteral("mnuAbout")));
        QCOMPARE(setup.top(), expand.top());
        QVERIFY2(setup.left() - expand.right() > 100, "Setup does not stand apart from Expand");
        QVERIFY2(bar->width() - about.right() < 20, "About does not end at the bar's right end");
    }

    void theListFromTheKeyboard()
    {
        QVERIFY(start());
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window));
        auto *callBox = child<QLineEdit>(QStringLiteral("txtCall"));
        auto *grid = child<gui::ListGrid>(QStringLiteral("Grid1"));
        const QStringList before = callsigns(1);
        callBox->setFocus();
        // Down from the callsign box: into the list, on its first row.
        QTest::keyClick(callBox, Qt::Key_Down);
        QTRY_VERIFY(grid->hasFocus());
        QCOMPARE(m_root->selection().currentRow(), 0);
        QTest::keyClick(grid, Qt::Key_Down);
        QCOMPARE(m_root->selection().currentRow(), 1);
        QTest::keyClick(grid, Qt::Key_PageDown);
        QCOMPARE(m_root->selection().currentRow(), before.size() - 1);
        QTest::keyClick(grid, Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(m_root->selection().currentRow(), 0);

        // The row menu for the current row, from the Menu key and Shift+F10.
        QTest::keyClick(grid, Qt::Key_Down);
        for (const auto &[key, mods] : {std::pair{Qt::Key_Menu, Qt::KeyboardModifiers()},
                                        std::pair{Qt::Key_F10, Qt::KeyboardModifiers(Qt::ShiftModifier)}}) {
            QTest::keyClick(grid, key, mods);
            auto *menu = child<QMenu>(QStringLiteral("mnuPopup"));
            QTRY_VERIFY(menu->isVisible());
            QCOMPARE(child<QAction>(QStringLiteral("mnuName"))->text(),
                     QStringLiteral("Change first name of ") + before[1]);
            menu->hide();
        }

        // Delete takes the current row at once; Ctrl+Z brings it back, in
        // the grid and in the file.
        grid->setFocus();
        QTest::keyClick(grid, Qt::Key_Delete);
        QStringList without = before;
        without.removeAt(1);
        QCOMPARE(callsigns(1), without);
        QVERIFY(!readAll(file(QStringLiteral("List1.dat"))).contains(QByteArray(before[1].toLatin1() + '*')));
        QVERIFY(m_window->statusLine().noteText().contains(before[1] + QStringLiteral(" deleted")));
        QVERIFY(grid->hasFocus());
        QCOMPARE(m_root->selection().currentRow(), 1);
        QTest::keyClick(grid, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(callsigns(1), before);
        QVERIFY(readAll(file(QStringLiteral("List1.dat"))).contains(QByteArray(before[1].toLatin1() + '*')));

        // A cleared list comes back the same way.
        {
            DialogAnswerer yes(QMessageBox::Yes);
            rowMenu(0);
            trigger(QStringLiteral("mnuClear"));
        }
        QCOMPARE(m_root->lists().model(1)->rowCount(), 0);
        grid->setFocus();
        QTest::keyClick(grid, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(callsigns(1), before);
        QVERIFY(child<QComboBox>(QStringLiteral("cboList"))->itemText(0).endsWith(QStringLiteral("  (4)")));
        // Undo is one step: a second Ctrl+Z changes nothing.
        QTest::keyClick(grid, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(callsigns(1), before);

        // Escape and F6 go back to the callsign box; F6 comes in again.
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window));
        grid->setFocus();
        QTest::keyClick(grid, Qt::Key_Escape);
        QTRY_VERIFY(callBox->hasFocus());
        QTest::keyClick(callBox, Qt::Key_F6);
        QTRY_VERIFY(grid->hasFocus());
        QTest::keyClick(grid, Qt::Key_F6);
        QTRY_VERIFY(callBox->hasFocus());
    }

    void enterOnARowShowsTheMap()
    {
        QVERIFY(start());
        auto *grid = child<gui::ListGrid>(QStringLiteral("Grid1"));
        grid->setFocus();
        grid->setCurrentIndex(grid->model()->index(0, 0));
        m_root->selection().setCurrentIndex(grid->currentIndex());
        QTest::keyClick(grid, Qt::Key_Return);
        QTRY_VERIFY(m_root->map()->window() && m_root->map()->window()->isVisible());
        m_root->map()->window()->close();
    }

    void thumbnailsAreSharpAtEveryScale_data()
    {
        QTest::addColumn<qreal>("scale");
        QTest::addColumn<QColor>("drawn");
        // The stored thumbnail is green, the picture behind it blue: which
        // one the cell shows says where its pixels came from.
        QTest::newRow("100%") << qreal(1.0) << QColor(Qt::darkGreen);
        QTest::newRow("200%") << qreal(2.0) << QColor(Qt::blue);
        QTest::newRow("150%") << qreal(1.5) << QColor(Qt::blue);
    }
    void thumbnailsAreSharpAtEveryScale()
    {
        QFETCH(qreal, scale);
        QFETCH(QColor, drawn);
        QImage picture(96, 64, QImage::Format_RGB32);
        picture.fill(Qt::blue);
        QVERIFY(picture.save(file(QStringLiteral("Images/DL1ABC.jpg")), "PNG"));
        QVERIFY(start());
        auto *grid = child<gui::ListGrid>(QStringLiteral("Grid1"));
        const QModelIndex cellIndex = grid->model()->index(callsigns(1).indexOf(u"DL1ABC"_qs), 1);
        QVERIFY(cellIndex.isValid());
        QImage canvas(QSize(100, 19) * scale, QImage::Format_ARGB32);
        canvas.setDevicePixelRatio(scale);
        canvas.fill(Qt::white);
        {
            QPainter painter(&canvas);
            QStyleOptionViewItem option;
            option.initFrom(grid);
            option.rect = QRect(0, 0, 100, 19);
            grid->itemDelegate()->paint(&painter, option, cellIndex);
        }
        // The middle of the thumbnail, at the cell's right end.
        const QColor seen = canvas.pixelColor(QPoint(100 - 12, 9) * scale);
        QCOMPARE(seen.name(), drawn.name());
    }

    // One field of 50 MB (a damaged or hostile file): the grid paints a
    // bounded part, the add/edit dialog shows it cut and keeps it whole, and
    // the file keeps every byte.
    void aHugeFieldNeitherFreezesNorIsLost()
    {
        const QByteArray huge(50 * 1024 * 1024, 'a');
        const QByteArray line = "ZZ9ZZ*Zed**" + huge + "*1 Road*Town*Country*10.5*20.5*20240101000000*\r\n";
        writeAll(file(QStringLiteral("List3.dat")), line);
        QVERIFY(start());
        switchTo(3);
        auto *grid = child<gui::ListGrid>(QStringLiteral("Grid3"));
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < 5; ++i)
            grid->grab();
        QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(grid->model()->index(0, 3).data().toString().size() <= 1001);

        rowMenu(0);
        bool seen = false;
        QTimer::singleShot(100, this, [&seen] {
            auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("txtName"));
            QVERIFY(name);
            QVERIFY(name->text().size() <= 1001);
            QVERIFY(name->isReadOnly());
            // A box the user may edit is still saved as typed.
            dialog->findChild<QLineEdit *>(QStringLiteral("txtAdd2"))->setText(QStringLiteral("Village"));
            seen = true;
            QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("cmdAdd")), Qt::LeftButton);
        });
        trigger(QStringLiteral("mnuManUpdate"));
        QTRY_VERIFY(seen);
        QCOMPARE(cell(3, 0, 5), QStringLiteral("Village"));
        QCOMPARE(m_root->lists().model(3)->record(0)[lists::Column::FullName].size(), huge.size());
        m_window->close();
        const QByteArray saved = readAll(file(QStringLiteral("List3.dat")));
        QVERIFY(saved.startsWith("ZZ9ZZ*Zed*"));
        QVERIFY(saved.contains(QByteArray("*" + huge + "*1 Road*Village*Country*10.5*20.5*")));
    }

    void rowMenuCaptions_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<bool>("views");
        QTest::newRow("DL1ABC, both coordinates") << 0 << true;
        QTest::newRow("G4XYZ, latitude 0 only") << 1 << true;
        QTest::newRow("dl1abc, no position") << 3 << false;
    }
    void rowMenuCaptions()
    {
        QFETCH(int, row);
        QFETCH(bool, views);
        QVERIFY(start());
        QMenu *menu = rowMenu(row);
        QVERIFY(menu->isVisible());
        const QString call = cell(1, row, 0);
        QCOMPARE(m_root->selection().currentRow(), row);
        QCOMPARE(child<QAction>(QStringLiteral("mnuName"))->text(), QStringLiteral("Change first name of ") + call);
        QCOMPARE(child<QMenu>(QStringLiteral("mnuAddCall"))->menuAction()->text(), QStringLiteral("Add %1 to").arg(call));
        QCOMPARE(child<QAction>(QStringLiteral("mnuUpdate"))->text(), QStringLiteral("Update %1 from QRZ.com").arg(call));
        QCOMPARE(child<QAction>(QStringLiteral("mnuStView0"))->isEnabled(), views);
        QCOMPARE(child<QAction>(QStringLiteral("mnuStView1"))->isEnabled(), views);
        const QStringList lines{u" DX  (4)"_qs, u" List 2  (1)"_qs, u" Europe  (0)"_qs, u" xxx list  (0)"_qs,
                                u" Old  (0)"_qs};
        for (int k = 1; k <= 5; ++k) {
            for (const QString &name : {QStringLiteral("mnuAddTo%1"), QStringLiteral("mnuAddAllTo%1")}) {
                QAction *a = child<QAction>(name.arg(k));
                QCOMPARE(a->text(), lines[k - 1]);
                QCOMPARE(a->isVisible(), k != 1);
            }
        }
        // The lookup and the sharing part are wired in and the source is online.
        QVERIFY(child<QAction>(QStringLiteral("mnuUpdate"))->isEnabled());
        QCOMPARE(child<QAction>(QStringLiteral("mnuManUpdate"))->text(), QStringLiteral("Update %1 manually").arg(call));
        QVERIFY(child<QAction>(QStringLiteral("mnuManUpdate"))->isEnabled());
        QVERIFY(child<QAction>(QStringLiteral("mnuAddNew"))->isEnabled());
        QVERIFY(child<QAction>(QStringLiteral("mnu4"))->isEnabled());
        QVERIFY(child<QAction>(QStringLiteral("mnu3"))->isEnabled());
        menu->hide();
        QVERIFY(child<QLineEdit>(QStringLiteral("txtCall"))->hasFocus());
    }


    void emptyGridOpensTheShortMenu()
    {
        QVERIFY(start());
        switchTo(3);
        QTest::mouseClick(m_window->grid(3)->viewport(), Qt::RightButton, {}, QPoint(30, 10));
        auto *menu = child<QMenu>(QStringLiteral("mnuPopup2"));
        QVERIFY(menu->isVisible());
        QVERIFY(!child<QMenu>(QStringLiteral("mnuPopup"))->isVisible());
        QCOMPARE(child<QAction>(QStringLiteral("mnuAddNew2"))->text(), QStringLiteral("Manually add new callsign"));
        QVERIFY(child<QAction>(QStringLiteral("mnuAddNew2"))->isEnabled());
        menu->hide();
    }

    void copyOneEntry()
    {
        QVERIFY(start());
        rowMenu(0); // DL1ABC
        trigger(QStringLiteral("mnuAddTo2"));
        QCOMPARE(callsigns(2), (QStringList{u"DL1ABC"_qs, u"F5ABC"_qs}));
        QCOMPARE(readAll(file(QStringLiteral("List2.dat"))),
                 "DL1ABC*Hansi*" + az(52.52, 13.405).toLatin1() +
                     "*Hans Meyer*Hauptstr. 12*Berlin*Germany*52.52*13.405*20240102101500*\r\n" + kList2);
        QCOMPARE(child<QComboBox>(QStringLiteral("cboList"))->itemText(1), QStringLiteral(" List 2  (2)"));
        // The copy brings its thumbnail and its nickname mark along.
        QVERIFY(!m_root->lists().model(2)->index(0, 1).data(lists::CallListModel::ThumbnailRole).value<QImage>().isNull());
        QVERIFY(m_root->lists().model(2)->index(0, 1).data(Qt::BackgroundRole).isValid());
        // The list it came from is untouched.
        QCOMPARE(readAll(file(QStringLiteral("List1.dat"))), kList1);

        // The lower-case twin is another callsign; DL1ABC again is a duplicate.
        rowMenu(3);
        trigger(QStringLiteral("mnuAddTo2"));
        QCOMPARE(m_root->lists().model(2)->rowCount(), 3);
        rowMenu(0);
        DialogAnswerer answer;
        trigger(QStringLiteral("mnuAddTo2"));
        QVERIFY(answer.dialog().seen);
        QCOMPARE(answer.dialog().title, QStringLiteral("Marvik"));
        QCOMPARE(answer.dialog().text, QStringLiteral("DL1ABC already in  List 2  "));
        QCOMPARE(m_root->lists().model(2)->rowCount(), 3);
    }


    void copyAllSkipsDuplicatesSilently()
    {
        QVERIFY(start());
        switchTo(2);
        rowMenu(0);
        trigger(QStringLiteral("mnuAddTo1"));
        switchTo(1);
        rowMenu(0);
        DialogAnswerer answer;
        trigger(QStringLiteral("mnuAddAllTo2"));
        QTest::qWait(50);
        QVERIFY(!answer.dialog().seen);
        QCOMPARE(callsigns(2), (QStringList{u"DL1ABC"_qs, u"F5ABC"_qs, u"G4XYZ"_qs, u"K1ABC"_qs, u"dl1abc"_qs}));
        QCOMPARE(readAll(file(QStringLiteral("List2.dat"))).count("\r\n"), 5);
        QCOMPARE(child<QComboBox>(QStringLiteral("cboList"))->itemText(1), QStringLiteral(" List 2  (5)"));
        // Latitude 0: no azimuth in the copy either.
        QCOMPARE(cell(2, 2, 2), QString());
    }

    void deleteKeepsTheTwoWayRule()
    {
        QVERIFY(start());
        rowMenu(2); // K1ABC
        trigger(QStringLiteral("mnu3"));
        QCOMPARE(callsigns(1), (QStringList{u"DL1ABC"_qs, u"G4XYZ"_qs, u"dl1abc"_qs}));
        QCOMPARE(readAll(file(QStringLiteral("List1.dat"))).count("\r\n"), 3);
        QVERIFY(!readAll(file(QStringLiteral("List1.dat"))).contains("K1ABC"));
        switchTo(2);
        rowMenu(0);
        trigger(QStringLiteral("mnu3"));
        QCOMPARE(m_root->lists().model(2)->rowCount(), 0);
        QCOMPARE(readAll(file(QStringLiteral("List2.dat"))), QByteArray());
        QCOMPARE(child<QComboBox>(QStringLiteral("cboList"))->itemText(1), QStringLiteral(" List 2  (0)"));
    }

    void clearAsksFirst_data()
    {
        QTest::addColumn<int>("list");
        QTest::addColumn<QString>("prompt");
        QTest::newRow("DX") << 1 << u"Delete all entries in  DX  ?"_qs;
        QTest::newRow("a name with xxx") << 4 << u"Delete all entries in  xxx list  ?"_qs;
    }
    void clearAsksFirst()
    {
        QFETCH(int, list);
        QFETCH(QString, prompt);
        writeAll(file(QStringLiteral("List4.dat")), kList2);
        QVERIFY(start());
        switchTo(list);
        const int rows = m_root->lists().model(list)->rowCount();
        const QByteArray before = readAll(m_root->session().dataFolder().listFile(list));
        {
            DialogAnswerer no(QMessageBox::No);
            rowMenu(0);
            trigger(QStringLiteral("mnuClear"));
            QCOMPARE(no.dialog().text, prompt);
            QCOMPARE(no.dialog().icon, QMessageBox::Warning);
            QCOMPARE(no.dialog().buttons, QMessageBox::Yes | QMessageBox::No);
            QCOMPARE(m_root->lists().model(list)->rowCount(), rows);
        }
        DialogAnswerer yes(QMessageBox::Yes);
        rowMenu(0);
        trigger(QStringLiteral("mnuClear"));
        QCOMPARE(m_root->lists().model(list)->rowCount(), 0);
        QVERIFY(child<QComboBox>(QStringLiteral("cboList"))->itemText(list - 1).endsWith(QStringLiteral("  (0)")));
        // The file keeps its rows until the next save.
        QCOMPARE(readAll(m_root->session().dataFolder().listFile(list)), before);
        m_window->close();
        QCOMPARE(readAll(m_root->session().dataFolder().listFile(list)), QByteArray());
    }

    void renameChangesEveryList_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::newRow("new name") << u"Hannes"_qs;
        QTest::newRow("cancel") << QString();
    }
    void renameChangesEveryList()
    {
        QFETCH(QString, answer);
        writeAll(file(QStringLiteral("List3.dat")), "DL1ABC*Hansi******0*0*20240102101500*\r\n");
        QVERIFY(start());
        DialogAnswerer input(QMessageBox::Ok, answer);
        rowMenu(0);
        trigger(QStringLiteral("mnuName"));
        QCOMPARE(input.dialog().title, QStringLiteral("Marvik"));
        QCOMPARE(input.dialog().text, QStringLiteral("New first name for DL1ABC in every list:"));
        if (answer.isEmpty()) {
            QCOMPARE(readAll(file(QStringLiteral("List1.dat"))), kList1);
            QCOMPARE(cell(1, 0, 1), QStringLiteral("Hansi"));
            return;
        }
        QCOMPARE(cell(1, 0, 1), answer);
        QCOMPARE(cell(1, 3, 1), QStringLiteral("Hans")); // dl1abc is another callsign
        QCOMPARE(cell(3, 0, 1), answer);
        QCOMPARE(m_root->lists().model(3)->index(0, 1).data(Qt::BackgroundRole).value<QColor>(), QColor(187, 238, 255));
        QCOMPARE(readAll(file(QStringLiteral("List3.dat"))), "DL1ABC*Hannes******0*0*20240102101500*\r\n");
        QVERIFY(readAll(file(QStringLiteral("List1.dat"))).startsWith("DL1ABC*Hannes*"));
    }

    void getOnAnEntryInTheListBlinksIt()
    {
        QVERIFY(start());
        QTimer *blink = timer(1);
        QCOMPARE(blink->objectName(), QStringLiteral("Timer1"));
        QCOMPARE(blink->interval(), 250);
        blink->setInterval(2);
        QList<bool> red;
        bool statusShown = true;
        connect(blink, &QTimer::timeout, this, [&] {
            red << (m_root->lists().model(1)->index(2, 0).data(Qt::BackgroundRole).value<QColor>() == QColor(255, 0, 0));
            if (red.size() < 20) {
                statusShown = statusShown && child<QLabel>(QStringLiteral("lblStatus"))->isVisible() &&
                              child<QLabel>(QStringLiteral("lblStatus"))->text() == u"Already in list" &&
                              !child<QComboBox>(QStringLiteral("cboList"))->isVisible() &&
                              !child<QRadioButton>(QStringLiteral("optSort0"))->isVisible();
            }
        });
        auto *txt = child<QLineEdit>(QStringLiteral("txtCall"));
        txt->setText(QStringLiteral("k1abc"));
        QTest::keyClick(txt, Qt::Key_Return);
        QCOMPARE(m_root->selection().currentRow(), 2);
        QVERIFY(blink->isActive());
        QTRY_VERIFY(!blink->isActive());
        QCOMPARE(red.size(), 20);
        QVERIFY(statusShown);
        for (int i = 0; i < red.size(); ++i)
            QCOMPARE(red[i], i % 2 == 0);
        QVERIFY(!m_root->lists().model(1)->index(2, 0).data(Qt::BackgroundRole).isValid());
        QVERIFY(!child<QLabel>(QStringLiteral("lblStatus"))->isVisible());
        QVERIFY(child<QRadioButton>(QStringLiteral("optSort1"))->isVisible());
        QVERIFY(!lookups().contains(u"K1ABC2"_qs));
    }

    void getOnANewCallsignGoesToTheLookup()
    {
        holdLookups();
        QVERIFY(start());
        auto *txt = child<QLineEdit>(QStringLiteral("txtCall"));
        txt->setText(QStringLiteral("w1aw"));
        QTest::mouseClick(child<QPushButton>(QStringLiteral("cmdGet")), Qt::LeftButton);
        QTRY_VERIFY(lookups().contains(u"W1AW2"_qs));
        QCOMPARE(m_root->lists().model(1)->rowCount(), 4);
        // While it runs, the Get button cancels it.
        QCOMPARE(child<QPushButton>(QStringLiteral("cmdGet"))->text(), QStringLiteral("Cancel"));
        QTest::mouseClick(child<QPushButton>(QStringLiteral("cmdGet")), Qt::LeftButton);
        QCOMPARE(child<QPushButton>(QStringLiteral("cmdGet"))->text(), QStringLiteral("Get"));
        // A CD source starts no online lookup.
        child<QAction>(QStringLiteral("mnuSource5"))->trigger();
        QCOMPARE(child<QMenu>(QStringLiteral("mnuDatabase"))->title(), QStringLiteral("QRZ CD"));
        txt->setText(QStringLiteral("k2xx"));
        QTest::mouseClick(child<QPushButton>(QStringLiteral("cmdGet")), Qt::LeftButton);
        QVERIFY(!lookups().contains(u"K2XX2"_qs));
        QCOMPARE(child<QLabel>(QStringLiteral("lblStatus"))->text(), QStringLiteral("No online source selected"));
    }

    void f8PastesACallsign_data()
    {
        QTest::addColumn<QString>("clipboard");
        QTest::addColumn<QString>("typed");
        QTest::newRow("de w1abc 599") << u"de w1abc 599"_qs << u"W1ABC"_qs;
        QTest::newRow("leading blank") << u" W1ABC"_qs << QString();
        QTest::newRow("in the list") << u"dl1abc"_qs << u"DL1ABC"_qs;
    }
    void f8PastesACallsign()
    {
        QFETCH(QString, clipboard);
        QFETCH(QString, typed);
        holdLookups();
        QVERIFY(start());
        QGuiApplication::clipboard()->setText(clipboard);
        auto *txt = child<QLineEdit>(QStringLiteral("txtCall"));
        QTest::keyClick(txt, Qt::Key_F8);
        QCOMPARE(txt->text(), typed);
        const bool inList = typed == u"DL1ABC";
        QCOMPARE(timer(1)->isActive(), inList);
        QTRY_COMPARE(lookups().contains(typed + u'2'), !inList && !typed.isEmpty());
    }

    void expandAndCollapse()
    {
        QVERIFY(start());
        auto *expand = child<QAction>(QStringLiteral("mnuExpand"));
        QCOMPARE(expand->text(), QStringLiteral("  Expand  "));
        m_window->resize(450, 400);
        QTest::qWait(10);
        expand->trigger();
        QCOMPARE(expand->text(), QStringLiteral("  Collapse  "));
        QCOMPARE(m_window->maximumWidth(), 935);
        QTRY_COMPARE(m_window->width(), 935);
        gui::ListGrid *g = m_window->grid(1);
        QVERIFY(!g->isColumnHidden(4));
        QCOMPARE(g->columnViewportPosition(6), 799);
        QCOMPARE(child<QLabel>(QStringLiteral("lblGrid6"))->text(), QStringLiteral("Country"));
        QVERIFY(child<QLabel>(QStringLiteral("lblGrid6"))->isVisible());
        expand->trigger();
        QCOMPARE(expand->text(), QStringLiteral("  Expand  "));
        QTRY_COMPARE(m_window->width(), 450);
        QCOMPARE(m_window->maximumWidth(), 614);
        QCOMPARE(g->columnViewportPosition(3), 205);
        QCOMPARE(g->columnWidth(3), 240);
        QVERIFY(!child<QLabel>(QStringLiteral("lblGrid4"))->isVisible());
    }


    void alwaysOnTopToggles_data()
    {
        QTest::addColumn<int>("toggles");
        QTest::newRow("once") << 1;
        QTest::newRow("twice") << 2;
    }
    void alwaysOnTopToggles()
    {
        QFETCH(int, toggles);
        QVERIFY(start());
        auto *onTop = child<QAction>(QStringLiteral("mnuOnTop"));
        for (int i = 0; i < toggles; ++i)
            onTop->trigger();
        const bool on = toggles % 2;
        QCOMPARE(onTop->isChecked(), on);
        QCOMPARE(bool(m_window->windowFlags() & Qt::WindowStaysOnTopHint), on);
        QVERIFY(m_window->isVisible());
        m_window->close();
        QVERIFY(readAll(file(QStringLiteral("Marvik.cfg"))).contains(on ? "Startup:\r\n1\r\n" : "Startup:\r\n0\r\n"));
    }

    void aboutAndHelp()
    {
        QVERIFY(start());
        DialogAnswerer answer;
        child<QAction>(QStringLiteral("mnuAbout"))->trigger();
        QCOMPARE(answer.dialog().text, QStringLiteral("Marvik  3.12"));
        QCOMPARE(answer.dialog().title, QStringLiteral("Marvik"));
        QCOMPARE(answer.dialog().icon, QMessageBox::Information);
        // The licence and the map data's credit, in a box wide enough for
        // its title.
        QVERIFY(answer.dialog().informative.contains(QStringLiteral("GNU General Public License")));
        QVERIFY(answer.dialog().informative.contains(QStringLiteral("Natural Earth")));
        QVERIFY2(answer.dialog().size.width() >= 320, qPrintable(QString::number(answer.dialog().size.width())));

        QUrl opened;
        UrlCatcher catcher(&opened);
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "open");
        child<QAction>(QStringLiteral("mnuHelp"))->trigger();
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        QVERIFY(opened.isLocalFile());
        QCOMPARE(QFileInfo(opened.toLocalFile()).fileName(), QStringLiteral("Help.txt"));
        QVERIFY(readAll(opened.toLocalFile()).contains("Marvik"));

        // No desktop viewer for text files: Marvik's own reading window.
        m_root->app()->setFileOpener([](const QUrl &) { return false; });
        child<QAction>(QStringLiteral("mnuHelp"))->trigger();
        QPlainTextEdit *help = nullptr;
        for (QWidget *w : QApplication::topLevelWidgets()) {
            if (w->objectName() == u"frmHelp" && w->isVisible())
                help = qobject_cast<QPlainTextEdit *>(w);
        }
        QVERIFY(help);
        QVERIFY(help->isReadOnly());
        QVERIFY(help->toPlainText().contains(QStringLiteral("Marvik")));
        QCOMPARE(help->windowTitle(), QStringLiteral("Marvik Help"));
        help->close();
    }

    // A whole new set of texts at run time relabels every caption that comes
    // from a text: menu bar, both context menus, the sort options, the
    // buttons, the headings and the default list names.
    void madeUpTextsRelabelEveryCaption()
    {
        QVERIFY(start());
        const i18n::Texts english = i18n::Texts::english();
        i18n::Texts madeUp = english;
        for (int i = 0; i < i18n::kTextCount; ++i) {
            const auto id = i18n::TextId(i);
            QString text = QStringLiteral("Z%1").arg(i);
            if (english[id].contains(u"xxx"))
                text += u" xxx";
            if (english[id].contains(u"???"))
                text += u" ???";
            madeUp[id] = text;
        }
        m_root->texts().setTexts(madeUp);

        QMenu *menu = rowMenu(0);
        menu->hide();
        QCOMPARE(child<QAction>(u"mnuName"_qs)->text(), madeUp.fill(i18n::TextId::MenuName, u"DL1ABC"_qs));
        QCOMPARE(child<QAction>(u"mnuUpdate"_qs)->text(),
                 madeUp.fill(i18n::TextId::MenuUpdate, u"DL1ABC"_qs, u"QRZ.com"_qs));
        QCOMPARE(child<QRadioButton>(u"optSort0"_qs)->text(), madeUp[i18n::TextId::SortByCallsign]);
        QCOMPARE(child<QRadioButton>(u"optSort1"_qs)->text(), madeUp[i18n::TextId::SortByDateTime]);
        QCOMPARE(child<QPushButton>(u"cmdGet"_qs)->text(), madeUp[i18n::TextId::ButtonGet]);
        QCOMPARE(child<QLabel>(u"lblGrid3"_qs)->text(), madeUp[i18n::TextId::HeadingFullName]);
        QCOMPARE(child<QAction>(u"mnuExpand"_qs)->text(), u"  "_qs + madeUp[i18n::TextId::MenuExpand] + u"  "_qs);
        // List 2 had its default name; the others keep the names the user gave.
        auto *chooser = child<QComboBox>(u"cboList"_qs);
        QCOMPARE(chooser->itemText(1), u" "_qs + madeUp[i18n::TextId::ListWord] + u" 2  (1)"_qs);
        QCOMPARE(chooser->itemText(0), u" DX  (4)"_qs);
        QCOMPARE(child<QAction>(u"mnuAddTo2"_qs)->text(), chooser->itemText(1));

        // No caption anywhere still holds an English text. Source names and
        // the user's list names are names, not texts.
        QStringList englishTexts;
        for (int i = 0; i < i18n::kTextCount; ++i) {
            const QString text = english[i18n::TextId(i)].section(u"xxx"_qs, 0, 0).trimmed();
            if (text.size() >= 4)
                englishTexts << text;
        }
        QStringList captions;
        for (QAction *a : m_window->findChildren<QAction *>())
            captions << a->text();
        for (QWidget *w : m_window->findChildren<QWidget *>()) {
            if (auto *b = qobject_cast<QAbstractButton *>(w))
                captions << b->text();
            if (auto *l = qobject_cast<QLabel *>(w))
                captions << l->text();
        }
        for (int n = 0; n < chooser->count(); ++n)
            captions << chooser->itemText(n);
        for (const QString &caption : std::as_const(captions)) {
            for (const QString &text : std::as_const(englishTexts))
                QVERIFY2(!caption.contains(text), qPrintable(caption + u" holds "_qs + text));
        }
    }

    void listNamesDialog()
    {
        QVERIFY(start());
        QTimer::singleShot(50, this, [this] {
            auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QCOMPARE(dialog->objectName(), QStringLiteral("Form8"));
            auto *box = dialog->findChild<QLineEdit *>(QStringLiteral("txtListName2"));
            QCOMPARE(box->text(), QStringLiteral("Europe"));
            box->setText(QStringLiteral("EU"));
            // An emptied box: the list gets the name a list without one gets.
            dialog->findChild<QLineEdit *>(QStringLiteral("txtListName0"))->setText(QStringLiteral("  "));
            QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("cmdClose")), Qt::LeftButton);
        });
        child<QAction>(QStringLiteral("mnuNames"))->trigger();
        QCOMPARE(child<QComboBox>(QStringLiteral("cboList"))->itemText(2), QStringLiteral(" EU  (0)"));
        QCOMPARE(child<QComboBox>(QStringLiteral("cboList"))->itemText(0), QStringLiteral(" List 1  (4)"));
        // Cancel, and Escape, change nothing.
        for (const bool escape : {false, true}) {
            QTimer::singleShot(50, this, [escape] {
                auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
                QVERIFY(dialog);
                dialog->findChild<QLineEdit *>(QStringLiteral("txtListName2"))->setText(QStringLiteral("Lost"));
                if (escape)
                    QTest::keyClick(dialog, Qt::Key_Escape);
                else
                    QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("cmdCancel")), Qt::LeftButton);
            });
            child<QAction>(QStringLiteral("mnuNames"))->trigger();
            QCOMPARE(child<QComboBox>(QStringLiteral("cboList"))->itemText(2), QStringLiteral(" EU  (0)"));
        }
        m_window->close();
        QVERIFY(readAll(file(QStringLiteral("Marvik.cfg"))).contains("List 1\r\nList 2\r\nEU\r\nxxx list\r\n"));
    }

};

int main(int argc, char *argv[])
{
    // Never the user's own settings or data folder.
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toLocal8Bit());
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Marvik"));
    TestMainWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_mainwindow.moc"
