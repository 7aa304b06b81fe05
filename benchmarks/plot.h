#pragma once

#include <QtCore/QList>
#include <QtCore/QPointF>
#include <QtCore/QString>
#include <QtGui/QColor>

// A line of the scaling plot: its points are (plugins, milliseconds).
struct Series
{
    QString label;
    QColor color;
    bool dashed = false;
    QList<QPointF> points;
};

struct Panel
{
    QString title;
    QList<Series> series;
};

// Draws the panels side by side, both axes logarithmic, and writes a PNG file.
bool writePlot(const QString& fileName, const QString& title, const QList<Panel>& panels);
