#include "plot.h"

#include <QtGui/QFont>
#include <QtGui/QFontMetrics>
#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>

#include <cmath>

namespace {

struct Range
{
    double low = 0; // decades: log10 of the axis ends
    double high = 0;
};

Range decades(const QList<Series>& series, bool x)
{
    double low = HUGE_VAL;
    double high = -HUGE_VAL;
    for (const Series& line : series) {
        for (const QPointF& point : line.points) {
            const double value = x ? point.x() : point.y();
            if (value <= 0)
                continue;
            low = std::min(low, std::log10(value));
            high = std::max(high, std::log10(value));
        }
    }
    if (low > high)
        return { 0, 1 };
    return { std::floor(low), std::max(std::ceil(high), std::floor(low) + 1) };
}

QString decadeLabel(int exponent, bool milliseconds)
{
    const double value = std::pow(10.0, exponent);
    if (!milliseconds)
        return QString::number(value, 'f', 0);
    if (exponent < 0)
        return QString::number(value * 1000, 'f', 0) + QStringLiteral(" µs");
    if (exponent >= 3)
        return QString::number(value / 1000, 'f', 0) + QStringLiteral(" s");
    return QString::number(value, 'f', 0) + QStringLiteral(" ms");
}

void drawPanel(QPainter& painter, const QRectF& area, const Panel& panel)
{
    const QFontMetrics metrics(painter.font());
    const QRectF plot = area.adjusted(70, 40, -20, -60);
    painter.setPen(Qt::black);
    QFont bold = painter.font();
    bold.setBold(true);
    painter.save();
    painter.setFont(bold);
    painter.drawText(QRectF(area.left(), area.top() + 8, area.width(), 24), Qt::AlignCenter,
                     panel.title);
    painter.restore();

    const Range xs = decades(panel.series, true);
    const Range ys = decades(panel.series, false);
    const auto mapX = [&](double value) {
        return plot.left() + (std::log10(value) - xs.low) / (xs.high - xs.low) * plot.width();
    };
    const auto mapY = [&](double value) {
        return plot.bottom() - (std::log10(value) - ys.low) / (ys.high - ys.low) * plot.height();
    };

    // Grid and labels at every decade.
    painter.setPen(QPen(QColor(0xdd, 0xdd, 0xdd), 1));
    for (int exponent = int(xs.low); exponent <= int(xs.high); ++exponent) {
        const double x = mapX(std::pow(10.0, exponent));
        painter.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
    }
    for (int exponent = int(ys.low); exponent <= int(ys.high); ++exponent) {
        const double y = mapY(std::pow(10.0, exponent));
        painter.drawLine(QPointF(plot.left(), y), QPointF(plot.right(), y));
    }
    painter.setPen(Qt::black);
    painter.drawRect(plot);
    for (int exponent = int(xs.low); exponent <= int(xs.high); ++exponent) {
        const double x = mapX(std::pow(10.0, exponent));
        painter.drawText(QRectF(x - 40, plot.bottom() + 4, 80, 20), Qt::AlignCenter,
                         decadeLabel(exponent, false));
    }
    for (int exponent = int(ys.low); exponent <= int(ys.high); ++exponent) {
        const double y = mapY(std::pow(10.0, exponent));
        painter.drawText(QRectF(area.left(), y - 10, plot.left() - area.left() - 6, 20),
                         Qt::AlignRight | Qt::AlignVCenter, decadeLabel(exponent, true));
    }
    painter.drawText(QRectF(plot.left(), plot.bottom() + 24, plot.width(), 20), Qt::AlignCenter,
                     QStringLiteral("plugins"));

    // The lines, then the legend in the upper left corner.
    painter.setRenderHint(QPainter::Antialiasing);
    qreal legendY = plot.top() + 8;
    for (const Series& line : panel.series) {
        QPen pen(line.color, 2.5);
        if (line.dashed)
            pen.setStyle(Qt::DashLine);
        painter.setPen(pen);
        QPainterPath path;
        bool first = true;
        for (const QPointF& point : line.points) {
            if (point.y() <= 0)
                continue;
            const QPointF at(mapX(point.x()), mapY(point.y()));
            first ? path.moveTo(at) : path.lineTo(at);
            first = false;
        }
        painter.drawPath(path);
        painter.setBrush(line.color);
        for (const QPointF& point : line.points) {
            if (point.y() > 0)
                painter.drawEllipse(QPointF(mapX(point.x()), mapY(point.y())), 3.5, 3.5);
        }
        painter.setBrush(Qt::NoBrush);

        painter.drawLine(QPointF(plot.left() + 10, legendY + 8),
                         QPointF(plot.left() + 40, legendY + 8));
        painter.setPen(Qt::black);
        painter.drawText(QPointF(plot.left() + 46, legendY + 8 + metrics.ascent() / 2.0 - 1),
                         line.label);
        legendY += metrics.height() + 4;
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
}

} // namespace

bool writePlot(const QString& fileName, const QString& title, const QList<Panel>& panels)
{
    const int panelWidth = 640;
    QImage image(panelWidth * int(panels.size()), 520, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    QFont font = painter.font();
    font.setPixelSize(13);
    painter.setFont(font);
    painter.setPen(Qt::black);
    painter.drawText(QRectF(0, 4, image.width(), 24), Qt::AlignCenter, title);
    for (int index = 0; index < panels.size(); ++index)
        drawPanel(painter, QRectF(index * panelWidth, 24, panelWidth, image.height() - 24),
                  panels.at(index));
    painter.end();
    return image.save(fileName);
}
