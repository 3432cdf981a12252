// SPDX-License-Identifier: GPL-3.0-or-later
#include "gui/maps/MapWindow.h"

#include "core/app/Log.h"
#include "core/i18n/Texts.h"
#include "core/maps/Projection.h"

#include <QAction>
#include <QActionGroup>
#include <QHBoxLayout>
#include <QImageReader>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPainter>
#include <QPaintEvent>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace marvik::gui {

namespace {

// The marks' colour: pure blue.
const QColor kMarkColour(0, 0, 255);
const QColor kLabelText(0, 0, 120);
const QColor kLabelGround(255, 255, 255, 225);
constexpr double kMaxZoom = 8;
constexpr double kWheelStep = 1.25;
// How far a label keeps from its point: clear of the circle round it.
constexpr double kLabelGap = 8;

QPointF pixelCentre(QPoint pixel, double zoom)
{
    return (QPointF(pixel) + QPointF(0.5, 0.5)) * zoom;
}

} // namespace

/// `picInner`: the map at the view's scale, with the marks and labels
/// drawn on top at screen size, so they stay sharp and readable at any
/// zoom and on any screen.
class MapCanvas : public QWidget
{
public:
    MapCanvas(MapWindow &window, QWidget *parent)
        : QWidget(parent)
        , m_window(window)
    {
        setObjectName(QStringLiteral("picInner"));
        setCursor(Qt::OpenHandCursor);
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void drawMarks(QPainter &p) const;

    MapWindow &m_window;
    QPointF m_grab;
    bool m_dragging = false;
};

void MapCanvas::paintEvent(QPaintEvent *event)
{
    QPainter p(this);
    const QRect r = event->rect();
    const double zoom = m_window.m_zoom;
    const QPixmap &map = m_window.m_map;
    if (map.isNull()) {
        p.fillRect(r, palette().window());
    } else if (zoom == 1) {
        p.drawPixmap(r.topLeft(), map, r);
    } else {
        // Only the part that shows is scaled.
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        const QRectF source(r.x() / zoom, r.y() / zoom, r.width() / zoom, r.height() / zoom);
        p.drawPixmap(QRectF(r), map, source);
    }
    drawMarks(p);
}

void MapCanvas::drawMarks(QPainter &p) const
{
    const double zoom = m_window.m_zoom;
    const std::optional<QPoint> &me = m_window.m_mePixel;
    const std::optional<QPoint> &station = m_window.m_stationPixel;
    if (!me && !station)
        return;
    p.setRenderHint(QPainter::Antialiasing);

    if (me && station) {
        p.setPen(QPen(kMarkColour, 2, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(pixelCentre(*me, zoom), pixelCentre(*station, zoom));
    }
    for (const std::optional<QPoint> &point : {me, station}) {
        if (!point)
            continue;
        const QPointF c = pixelCentre(*point, zoom);
        p.setPen(QPen(kMarkColour, 4, Qt::SolidLine, Qt::RoundCap));
        p.drawPoint(c);
        p.setPen(QPen(kMarkColour, 2));
        p.setBrush(Qt::NoBrush);
        p.drawEllipse(c, 4, 4);
    }

    const QFont font = m_window.labelFont();
    p.setFont(font);
    const QFontMetricsF fm(font);
    for (const MapWindow::Label &label : m_window.labels()) {
        p.setPen(QPen(QColor(0, 0, 255, 110), 1));
        p.setBrush(kLabelGround);
        p.drawRoundedRect(label.box, 3, 3);
        p.setPen(kLabelText);
        for (qsizetype i = 0; i < label.lines.size(); ++i) {
            p.drawText(QPointF(label.box.left() + 2, label.box.top() + 1 + fm.ascent() + fm.height() * double(i)),
                label.lines[i]);
        }
    }
}

void MapCanvas::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_grab = event->globalPosition();
    m_dragging = true;
    setCursor(Qt::ClosedHandCursor);
}

void MapCanvas::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging || !(event->buttons() & Qt::LeftButton))
        return;
    const QPointF delta = event->globalPosition() - m_grab;
    m_grab = event->globalPosition();
    QScrollBar *h = m_window.m_outer->horizontalScrollBar();
    QScrollBar *v = m_window.m_outer->verticalScrollBar();
    h->setValue(h->value() - int(std::lround(delta.x())));
    v->setValue(v->value() - int(std::lround(delta.y())));
}

void MapCanvas::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_dragging = false;
        setCursor(Qt::OpenHandCursor);
    }
}

void MapCanvas::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_window.close();
}

void MapCanvas::wheelEvent(QWheelEvent *event)
{
    const double steps = event->angleDelta().y() / 120.0;
    if (steps == 0)
        return;
    const QPointF anchor = mapTo(m_window.m_outer->viewport(), event->position());
    m_window.setZoom(m_window.m_zoom * std::pow(kWheelStep, steps), anchor);
    event->accept();
}

MapWindow::MapWindow(const i18n::CurrentTexts &texts, QWidget *parent)
    : QMainWindow(parent)
    , m_texts(texts)
{
    setObjectName(QStringLiteral("Form3"));

    m_mapsMenu = menuBar()->addMenu(QString());
    m_mapsMenu->setObjectName(QStringLiteral("mnuMaps"));
    m_mapGroup = new QActionGroup(this);
    m_mapGroup->setExclusive(true);

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    // One line over the map when the station is not on it.
    m_noticeBar = new QWidget(central);
    m_noticeBar->setObjectName(QStringLiteral("fraNotice"));
    m_noticeBar->setAutoFillBackground(true);
    QPalette pal = m_noticeBar->palette();
    pal.setColor(QPalette::Window, QColor(255, 244, 200));
    pal.setColor(QPalette::WindowText, QColor(60, 45, 0));
    m_noticeBar->setPalette(pal);
    auto *noticeLayout = new QHBoxLayout(m_noticeBar);
    noticeLayout->setContentsMargins(8, 3, 8, 3);
    m_notice = new QLabel(m_noticeBar);
    m_notice->setObjectName(QStringLiteral("lblNotice"));
    m_showWorld = new QPushButton(m_noticeBar);
    m_showWorld->setObjectName(QStringLiteral("cmdWorldMap"));
    noticeLayout->addWidget(m_notice);
    noticeLayout->addWidget(m_showWorld);
    noticeLayout->addStretch();
    m_noticeBar->hide();
    connect(m_showWorld, &QPushButton::clicked, this, [this] { pick(worldMapIndex()); });

    m_outer = new QScrollArea(central);
    m_outer->setObjectName(QStringLiteral("picOuter"));
    m_outer->setAlignment(Qt::AlignCenter);
    m_outer->setFrameShape(QFrame::NoFrame);
    m_inner = new MapCanvas(*this, m_outer);
    m_outer->setWidget(m_inner);
    m_outer->setWidgetResizable(false);
    layout->addWidget(m_noticeBar);
    layout->addWidget(m_outer, 1);
    setCentralWidget(central);

    const auto shortcut = [this](QList<QKeySequence> keys, auto slot) {
        auto *action = new QAction(this);
        action->setShortcuts(keys);
        connect(action, &QAction::triggered, this, slot);
        addAction(action);
    };
    const auto centre = [this] { return QPointF(m_outer->viewport()->rect().center()); };
    shortcut({Qt::Key_0, QKeySequence(Qt::CTRL | Qt::Key_0)}, [this] { resetZoom(); });
    shortcut({Qt::Key_Plus, Qt::Key_Equal, QKeySequence::ZoomIn},
        [this, centre] { setZoom(m_zoom * kWheelStep, centre()); });
    shortcut({Qt::Key_Minus, QKeySequence::ZoomOut}, [this, centre] { setZoom(m_zoom / kWheelStep, centre()); });
    shortcut({Qt::Key_Escape}, [this] { close(); });

    connect(&m_texts, &i18n::CurrentTexts::changed, this, [this] {
        relabel();
        updateNotice();
        m_inner->update();
    });
    relabel();
    resize(800, 600);
}

MapWindow::~MapWindow() = default;

void MapWindow::setMaps(const QString &mapsDir, const QStringList &fileNames, int current)
{
    for (QAction *item : std::as_const(m_mapItems)) {
        m_mapGroup->removeAction(item);
        delete item;
    }
    m_mapItems.clear();
    m_mapsDir = mapsDir;
    m_files = fileNames;
    for (qsizetype i = 0; i < fileNames.size(); ++i) {
        auto *item = m_mapsMenu->addAction(maps::mapNameOfFile(fileNames[i]));
        item->setObjectName(QStringLiteral("mnuMap%1").arg(i + 1));
        item->setCheckable(true);
        m_mapGroup->addAction(item);
        connect(item, &QAction::triggered, this, [this, i] { pick(int(i)); });
        m_mapItems.append(item);
    }
    m_current = -1;
    setCurrentMap(current >= 0 && current < fileNames.size() ? current : 0);
}

void MapWindow::setCurrentMap(int index)
{
    if (index < 0 || index >= m_files.size()) {
        m_current = -1;
        m_map = QPixmap();
        m_unreadable = false;
        project();
        relabel();
        updateNotice();
        m_inner->resize(0, 0);
        return;
    }
    const bool changed = index != m_current;
    m_current = index;
    m_mapItems[index]->setChecked(true);
    if (changed)
        loadMap();
    project();
    relabel();
    updateNotice();
    m_inner->update();
    scrollToSubject();
}

QString MapWindow::currentMapName() const
{
    return m_current >= 0 ? maps::mapNameOfFile(m_files[m_current]) : QString();
}

void MapWindow::pick(int index)
{
    if (index < 0 || index >= m_files.size())
        return;
    setCurrentMap(index);
    emit mapChosen(index);
}

void MapWindow::loadMap()
{
    const QString path = m_mapsDir + u'/' + m_files[m_current];
    QImageReader reader(path);
    const QImage image = reader.read();
    m_unreadable = image.isNull();
    if (m_unreadable)
        qCWarning(lcMaps) << "cannot read the map" << path << reader.errorString();
    m_map = QPixmap::fromImage(image);
    // A smaller map may not allow the old scale's lower end.
    setZoom(m_zoom, QPointF(m_outer->viewport()->rect().center()));
    m_inner->resize((QSizeF(m_map.size()) * m_zoom).toSize());
}

void MapWindow::showStation(const maps::MapScene &scene)
{
    m_scene = scene;
    project();
    updateNotice();
    m_inner->update();
    scrollToSubject();
}

void MapWindow::project()
{
    const QString name = currentMapName();
    const auto pixelOf = [&](double lat, double lon) -> std::optional<QPoint> {
        qint32 x = 0;
        qint32 y = 0;
        if (maps::projectToMap(name, lat, lon, x, y) != maps::ProjectionStatus::Projected)
            return std::nullopt;
        return QPoint(x, y);
    };
    m_mePixel = m_scene.me ? pixelOf(m_scene.me->latitude, m_scene.me->longitude) : std::nullopt;
    m_stationPixel = m_scene.station ? pixelOf(m_scene.station->latitude, m_scene.station->longitude) : std::nullopt;

    // The subject is the station, or Me when the row has no position. A
    // map without a fit (a user's own bitmap) shows no marks and says nothing.
    const bool hasSubject = m_scene.station || m_scene.me;
    const std::optional<QPoint> &subject = m_scene.station ? m_stationPixel : m_mePixel;
    m_outside = hasSubject && maps::hasProjection(name) && !m_map.isNull()
        && (!subject || !QRect(QPoint(0, 0), m_map.size()).contains(*subject));
}

void MapWindow::relabel()
{
    m_mapsMenu->setTitle(m_texts[i18n::TextId::MenuMaps]);
    m_showWorld->setText(m_texts[i18n::TextId::MapShowWorld]);
    m_inner->setToolTip(m_texts[i18n::TextId::MapHint]);
    const QString name = currentMapName();
    setWindowTitle(name.isEmpty() ? QStringLiteral("Marvik") : name);
}

void MapWindow::updateNotice()
{
    QString text;
    if (m_unreadable && m_current >= 0)
        text = m_texts.fill(i18n::TextId::MapUnreadable, m_files[m_current]);
    else if (m_outside && m_scene.station)
        text = m_texts.fill(i18n::TextId::MapStationOutside, m_scene.station->callsign);
    else if (m_outside)
        text = m_texts[i18n::TextId::MapMeOutside];
    m_notice->setText(text);
    const int world = worldMapIndex();
    m_showWorld->setVisible(world >= 0 && world != m_current && !text.isEmpty());
    m_noticeBar->setVisible(!text.isEmpty());
}

int MapWindow::worldMapIndex() const
{
    for (qsizetype i = 0; i < m_files.size(); ++i) {
        if (maps::mapNameOfFile(m_files[i]) == u"World Map")
            return int(i);
    }
    return -1;
}

QFont MapWindow::labelFont() const
{
    QFont f = font();
    f.setBold(true);
    f.setItalic(true);
    return f;
}

QList<MapWindow::Label> MapWindow::labels() const
{
    QList<Label> result;
    const QFontMetricsF fm(labelFont());
    // Labels sit on the side of their point away from the other point, so
    // the line never runs through them.
    const auto place = [&](QPoint point, const QStringList &lines, const std::optional<QPoint> &other) {
        const QPointF at = pixelCentre(point, m_zoom);
        bool left = false;
        bool above = false;
        if (other) {
            const QPointF o = pixelCentre(*other, m_zoom);
            left = o.x() > at.x();
            above = o.y() > at.y();
        }
        double width = 0;
        for (const QString &line : lines)
            width = std::max(width, fm.horizontalAdvance(line));
        const QSizeF size(width + 4, fm.height() * double(lines.size()) + 2);
        QRectF box(QPointF(0, 0), size);
        box.moveLeft(left ? at.x() - kLabelGap - size.width() : at.x() + kLabelGap);
        box.moveTop(above ? at.y() - kLabelGap - size.height() : at.y() + kLabelGap);
        // A label that would leave the map goes to the point's other side.
        const QSizeF canvas = QSizeF(m_map.size()) * m_zoom;
        if (box.right() > canvas.width() || box.left() < 0)
            box.moveLeft(box.left() < 0 ? at.x() + kLabelGap : at.x() - kLabelGap - size.width());
        if (box.bottom() > canvas.height() || box.top() < 0)
            box.moveTop(box.top() < 0 ? at.y() + kLabelGap : at.y() - kLabelGap - size.height());
        result.append({box, lines});
    };
    if (m_stationPixel && m_scene.station) {
        QStringList lines {maps::toLabel(m_scene.station->callsign)};
        if (m_scene.me)
            lines.append(maps::distanceLabel(m_scene.station->callsign, m_scene.bearing));
        place(*m_stationPixel, lines, m_mePixel);
    }
    if (m_mePixel)
        place(*m_mePixel, {maps::fromMeLabel(m_texts[i18n::TextId::FromMe])}, m_stationPixel);
    return result;
}

void MapWindow::setZoom(double zoom, QPointF anchor)
{
    if (m_map.isNull())
        return;
    // Never smaller than the whole map in the view, never below a tenth.
    const QSize view = m_outer->viewport()->size();
    const double fit = std::min(double(view.width()) / m_map.width(), double(view.height()) / m_map.height());
    const double lowest = std::clamp(fit, 0.1, 1.0);
    zoom = std::clamp(zoom, lowest, kMaxZoom);
    const QSize size = (QSizeF(m_map.size()) * zoom).toSize();
    if (zoom == m_zoom && size == m_inner->size())
        return;
    const QPointF onMap = QPointF(m_inner->mapFrom(m_outer->viewport(), anchor.toPoint())) / m_zoom;
    m_zoom = zoom;
    m_inner->resize(size);
    const QPointF now = onMap * zoom;
    m_outer->horizontalScrollBar()->setValue(int(std::lround(now.x() - anchor.x())));
    m_outer->verticalScrollBar()->setValue(int(std::lround(now.y() - anchor.y())));
    m_inner->update();
}

void MapWindow::resetZoom()
{
    setZoom(1, QPointF(m_outer->viewport()->rect().center()));
    scrollToSubject();
}

void MapWindow::scrollToSubject()
{
    const std::optional<QPoint> &subject = m_stationPixel ? m_stationPixel : m_mePixel;
    if (!subject)
        return;
    // What must be in sight: the subject with its label, and Me with its
    // label as well when all of it fits the view.
    const QList<Label> boxes = labels();
    const QPointF s = pixelCentre(*subject, m_zoom);
    QRectF wanted = QRectF(s, QSizeF(0, 0)).adjusted(-kLabelGap, -kLabelGap, kLabelGap, kLabelGap);
    if (!boxes.isEmpty())
        wanted |= boxes.first().box;
    QRectF all = wanted;
    for (const Label &label : boxes)
        all |= label.box;
    if (m_mePixel)
        all |= QRectF(pixelCentre(*m_mePixel, m_zoom), QSizeF(0, 0));
    const QSize view = m_outer->viewport()->size();
    const QRectF room = QRectF(QPointF(0, 0), QSizeF(view)).adjusted(10, 10, -10, -10);
    if (all.width() <= room.width() && all.height() <= room.height())
        wanted = all;

    QScrollBar *h = m_outer->horizontalScrollBar();
    QScrollBar *v = m_outer->verticalScrollBar();
    const QRectF shown = room.translated(h->value(), v->value());
    // Already in sight: leave the view alone.
    if (shown.contains(wanted))
        return;
    h->setValue(int(std::lround(wanted.center().x() - view.width() / 2.0)));
    v->setValue(int(std::lround(wanted.center().y() - view.height() / 2.0)));
}

void MapWindow::fillScreen()
{
    const QScreen *screen = this->screen();
    if (!screen)
        return;
    // The whole window, frame included, covers the screen's free area (the
    // part no panel or task bar takes).
    const QRect frame = frameGeometry();
    const QRect inner = geometry();
    const QMargins margins(inner.left() - frame.left(), inner.top() - frame.top(), frame.right() - inner.right(),
        frame.bottom() - inner.bottom());
    setGeometry(screen->availableGeometry().marginsRemoved(margins));
}

void MapWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (event->spontaneous())
        return;
    fillScreen();
    // The window manager adds its frame after the first show; fit again
    // then, and scroll once the view has its final size.
    QTimer::singleShot(0, this, [this] {
        fillScreen();
        setZoom(m_zoom, QPointF(m_outer->viewport()->rect().center()));
        scrollToSubject();
    });
}

} // namespace marvik::gui
