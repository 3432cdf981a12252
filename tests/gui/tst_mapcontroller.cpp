// SPDX-License-Identifier: GPL-3.0-or-later
// The map window through the real main window: the Map button, a click on a
// row while the map is open, the map picked in its menu kept in Marvik.cfg,
// and the own latitude kept off the pole.
#include "support/GuiTestUtil.h"
#include "support/MarvikUnderTest.h"

#include "core/app/Config.h"
#include "core/app/Session.h"
#include "core/lists/ListStore.h"
#include "core/maps/Projection.h"
#include "gui/app/Commands.h"
#include "gui/app/CompositionRoot.h"
#include "gui/app/MainWindow.h"
#include "gui/app/Selection.h"
#include "gui/lists/ListGrid.h"
#include "gui/maps/MapController.h"
#include "gui/maps/MapWindow.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace marvik;
using test::readAll;
using test::writeAll;

class TestMapController : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<gui::CompositionRoot> m_root;

    QString file(const QString &name) const { return m_dir->filePath(name); }
    void start(double meLatitude)
    {
        app::Settings settings;
        settings.me = {meLatitude, -0.12};
        // The shipped maps, in the order of the map table: Asia, Australia,
        // Europe, Japan, N-Nederland, New Zealand, North America, UK, World.
        QVERIFY(app::writeConfig(file(u"Marvik.cfg"_qs), settings));
        m_root = std::make_unique<gui::CompositionRoot>(m_dir->path(), m_store.get());
        QVERIFY(m_root->startUp());
        m_root->mainWindow()->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_root->mainWindow()));
        m_root->lists().finishReading();
    }
    void click(int row)
    {
        gui::ListGrid *grid = m_root->mainWindow()->grid(1);
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, grid->visualRect(grid->model()->index(row, 0)).center());
    }
    gui::MapWindow *mapWindow() const { return m_root->map()->window(); }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QDir(m_dir->path()).mkpath(u"Maps"_qs);
        for (const QString &name : QDir(QStringLiteral(MARVIK_MAPS_DIR)).entryList({u"*.png"_qs}))
            QVERIFY(QFile::copy(QStringLiteral(MARVIK_MAPS_DIR "/") + name, file(u"Maps/"_qs + name)));
        writeAll(file(u"List1.dat"_qs), "G4XYZ*Bob**Robert Smith****0*0*20231231220000*\r\n"
                                        "VK2ABC*Ann**Ann Lee***Australia*-33.87*151.21*20240101000000*\r\n");
        m_store = std::make_unique<QSettings>(file(u"settings.ini"_qs), QSettings::IniFormat);
        test::pointSourcesNowhere(*m_store);
    }
    void cleanup()
    {
        m_root.reset();
        m_store.reset();
        m_dir.reset();
    }

    void mapButtonShowsTheRowWhereTheFitPutsIt()
    {
        start(51.5);
        m_root->session().settings().currentMap = 8; // World Map
        click(1); // VK2ABC
        QVERIFY(!mapWindow());
        QTest::mouseClick(test::findPart<QPushButton>(*m_root, u"cmdMap"_qs), Qt::LeftButton);
        QVERIFY(mapWindow() && mapWindow()->isVisible());
        QCOMPARE(mapWindow()->objectName(), u"Form3"_qs);
        QCOMPARE(mapWindow()->currentMapName(), u"World Map"_qs);
        qint32 x = 0;
        qint32 y = 0;
        double longitude = 151.21;
        QCOMPARE(maps::projectToMap(u"World Map"_qs, -33.87, longitude, x, y), maps::ProjectionStatus::Projected);
        QCOMPARE(mapWindow()->stationPixel(), std::optional<QPoint>(QPoint(x, y)));
        longitude = -0.12;
        QCOMPARE(maps::projectToMap(u"World Map"_qs, 51.5, longitude, x, y), maps::ProjectionStatus::Projected);
        QCOMPARE(mapWindow()->mePixel(), std::optional<QPoint>(QPoint(x, y)));
        QCOMPARE(m_root->selection().stationPosition().latitude, -33.87);

        // While open, the map follows a click on a row; a row without a
        // position leaves Me alone on the map.
        click(0);
        QVERIFY(!mapWindow()->stationPixel());
        QVERIFY(mapWindow()->mePixel());
    }

    void pickedMapIsKeptInTheConfiguration()
    {
        start(51.5);
        click(1);
        m_root->commands().action(u"actMap"_qs)->trigger();
        auto *uk = mapWindow()->findChild<QAction *>(u"mnuMap8"_qs);
        QVERIFY(uk);
        uk->trigger();
        QCOMPARE(mapWindow()->currentMapName(), u"UK Map"_qs);
        m_root->mainWindow()->close();
        QVERIFY(!mapWindow() || !mapWindow()->isVisible());
        QVERIFY(readAll(file(u"Marvik.cfg"_qs)).contains("Maps:\r\n 7 \r\n"));
    }

    void ownLatitudeIsKeptOffThePole()
    {
        start(90);
        click(1);
        m_root->commands().action(u"actMap"_qs)->trigger();
        QCOMPARE(m_root->session().me().latitude, 89.0);
        m_root->mainWindow()->close();
        QVERIFY(readAll(file(u"Marvik.cfg"_qs)).startsWith("LatLon:\r\n 89\r\n"));
    }
};

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toLocal8Bit());
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Marvik"));
    TestMapController test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_mapcontroller.moc"
