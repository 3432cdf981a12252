// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QStringList>
#include <QWidget>

class QLabel;

namespace marvik::gui {

/// The raised heading frame above a list grid with the column captions
/// `lblGrid0`..`lblGrid6`, laid out on the grid's column edges.
class HeadingBar : public QWidget
{
    Q_OBJECT

public:
    /// The bar's height: the frame runs from y = 60 to y = 77 of the window.
    static constexpr int kHeight = 18;

    /// Callsign, first name, the azimuth (no caption), full name, address,
    /// city, country.
    static constexpr int kColumns = 7;

    explicit HeadingBar(QWidget *parent = nullptr);

    void setCaptions(const QStringList &captions);

    /// The column edges in pixels, from 0; a column gets a caption when both
    /// of its edges are given.
    void setEdges(const QList<int> &edges);
    QList<int> edges() const { return m_edges; }
    QLabel *label(int column) const { return m_labels.at(column); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void layoutLabels();

    QList<int> m_edges;
    QList<QLabel *> m_labels;
};

} // namespace marvik::gui
