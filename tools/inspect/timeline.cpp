#include "timeline.h"

#include "diagnostics/trialwatch_p.h"
#include "trialreport.h"

#include <QtCore/QFileInfo>
#include <QtGui/QFontMetrics>
#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtGui/QImageWriter>
#include <QtGui/QPainter>
#ifdef ZELVANE_HAVE_SVG
#include <QtSvg/QSvgGenerator>
#endif

#include <algorithm>
#include <cmath>

namespace ZelvaneInspect {

namespace {

using Zelvane::TrialPlugin;

constexpr int width = 960;
constexpr int margin = 16;
constexpr int titleHeight = 44;
constexpr int rowHeight = 30;
constexpr int barHeight = 18;
constexpr int axisHeight = 56;
constexpr int labelWidth = 260;

const QColor libraryColour(0x1f, 0x5f, 0xa8);
const QColor initializeColour(0x8c, 0xb8, 0xe8);
const QColor unloadColour(0x7e, 0x57, 0xc2);
const QColor failedColour(0xc6, 0x28, 0x28);
const QColor gridColour(0xdd, 0xdd, 0xdd);
const QColor textColour(0x22, 0x22, 0x22);
const QColor mutedColour(0x80, 0x80, 0x80);

// A round step for the axis: 1, 2 or 5 times a power of ten, giving about six ticks.
double tickStep(double span)
{
    const double rough = span / 6.0;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (double factor : { 1.0, 2.0, 5.0 }) {
        if (factor * power >= rough)
            return factor * power;
    }
    return 10.0 * power;
}

QString tickLabel(double ms, double step)
{
    return step < 1.0 ? QString::number(ms, 'f', step < 0.1 ? 2 : 1)
                      : QString::number(qRound64(ms));
}

QString shortOutcome(const TrialPlugin& plugin)
{
    switch (plugin.outcome) {
    case TrialPlugin::Outcome::Crashed:
        return QObject::tr("crashed (%1)")
            .arg(Zelvane::signalText(plugin.signal).section(QLatin1Char(' '), 0, 0));
    case TrialPlugin::Outcome::Exited:
        return QObject::tr("exited (code %1)").arg(plugin.exitCode);
    case TrialPlugin::Outcome::TimedOut:
        return QObject::tr("timed out");
    case TrialPlugin::Outcome::Failed:
        return QObject::tr("failed");
    case TrialPlugin::Outcome::NotTried:
        return QObject::tr("not tried");
    case TrialPlugin::Outcome::Dropped:
        return QObject::tr("dropped");
    case TrialPlugin::Outcome::Started:
        break;
    }
    return QString::number(double(plugin.end - plugin.libraryStart) / 1000.0, 'f', 1)
        + QStringLiteral(" ms");
}

// What shutdown() did to the plugin, in a few words; empty when it was not reached.
QString shortUnload(const TrialPlugin& plugin)
{
    switch (plugin.unload) {
    case TrialPlugin::Unload::Crashed:
        return QObject::tr("crashed unloading (%1)")
            .arg(Zelvane::signalText(plugin.signal).section(QLatin1Char(' '), 0, 0));
    case TrialPlugin::Unload::Exited:
        return QObject::tr("exited unloading (code %1)").arg(plugin.exitCode);
    case TrialPlugin::Unload::TimedOut:
        return QObject::tr("timed out unloading");
    case TrialPlugin::Unload::Unloaded:
        return QObject::tr("unloaded in %1 ms")
            .arg(QString::number(double(plugin.unloadEnd - plugin.unloadStart) / 1000.0, 'f', 2));
    case TrialPlugin::Unload::NotReached:
        break;
    }
    return QString();
}

// A cross where a plugin went down; returns where the text after it starts.
double drawCross(QPainter& painter, double barEnd, double barTop)
{
    painter.setPen(QPen(failedColour, 2.5));
    const QPointF centre(barEnd + 9, barTop + barHeight / 2.0);
    painter.drawLine(centre + QPointF(-5, -5), centre + QPointF(5, 5));
    painter.drawLine(centre + QPointF(-5, 5), centre + QPointF(5, -5));
    return barEnd + 18;
}

void paint(QPainter& painter, const Zelvane::TrialReport& report, const QSize& size)
{
    painter.fillRect(QRect(QPoint(0, 0), size), Qt::white);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = QGuiApplication::font();
    font.setPixelSize(13);
    painter.setFont(font);
    const QFontMetrics metrics(font);

    // With shutdown the axis runs on to the last unload, which comes after every start.
    qint64 endUs = 1;
    for (const TrialPlugin& plugin : report.plugins)
        endUs = std::max({ endUs, plugin.end, plugin.unloadEnd });
    const double spanMs = double(endUs) / 1000.0;
    const double step = tickStep(spanMs);
    const double axisMs = std::ceil(spanMs / step) * step;
    const int left = margin + labelWidth;
    const int right = size.width() - margin - 120;
    const auto x = [&](qint64 us) {
        return left + double(right - left) * (double(us) / 1000.0) / axisMs;
    };
    const int top = titleHeight;
    const int bottom = top + rowHeight * int(report.plugins.size());

    QFont titleFont = font;
    titleFont.setPixelSize(15);
    titleFont.setBold(true);
    painter.setFont(titleFont);
    painter.setPen(textColour);
    QString title = report.everyPluginStarted()
        ? QObject::tr("Plugin start-up: every plugin started")
        : QObject::tr("Plugin start-up: cannot start: %1")
              .arg(report.culprits().join(QStringLiteral(", ")));
    const QStringList cannotShutDown = report.shutdownCulprits();
    if (report.shutdown) {
        title += cannotShutDown.isEmpty()
            ? QObject::tr("; every plugin unloaded")
            : QObject::tr("; cannot shut down: %1").arg(cannotShutDown.join(QStringLiteral(", ")));
    }
    painter.drawText(QRect(margin, 0, size.width() - 2 * margin, titleHeight),
                     Qt::AlignLeft | Qt::AlignVCenter, title);
    painter.setFont(font);

    // The grid and the axis.
    for (double ms = 0; ms <= axisMs + step / 2; ms += step) {
        const double at = left + double(right - left) * ms / axisMs;
        painter.setPen(gridColour);
        painter.drawLine(QPointF(at, top), QPointF(at, bottom));
        painter.setPen(textColour);
        painter.drawText(QRectF(at - 40, bottom + 4, 80, metrics.height()), Qt::AlignHCenter,
                         tickLabel(ms, step));
    }
    painter.drawText(QRectF(left, bottom + 4 + metrics.height(), right - left, metrics.height()),
                     Qt::AlignHCenter, QObject::tr("milliseconds from the call of loadPlugins()"));

    for (int row = 0; row < report.plugins.size(); ++row) {
        const TrialPlugin& plugin = report.plugins.at(row);
        const int y = top + row * rowHeight;
        const bool bad = plugin.cannotStart();
        const bool badUnload = plugin.cannotShutDown();
        painter.setPen(bad || badUnload                                      ? failedColour
                           : plugin.outcome == TrialPlugin::Outcome::Started ? textColour
                                                                             : mutedColour);
        painter.drawText(QRect(margin, y, labelWidth - 8, rowHeight),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(plugin.name, Qt::ElideRight, labelWidth - 8));
        if (plugin.libraryStart < 0) {
            painter.drawText(QRectF(left + 6, y, right - left, rowHeight),
                             Qt::AlignLeft | Qt::AlignVCenter, shortOutcome(plugin));
            continue;
        }
        const double barTop = y + (rowHeight - barHeight) / 2.0;
        const qint64 libraryEnd = plugin.initializeStart >= 0 ? plugin.initializeStart : plugin.end;
        const QRectF libraryBar(x(plugin.libraryStart), barTop,
                                std::max(1.0, x(libraryEnd) - x(plugin.libraryStart)), barHeight);
        painter.fillRect(libraryBar,
                         bad && plugin.initializeStart < 0 ? failedColour.darker(120)
                                                           : libraryColour);
        double barEnd = libraryBar.right();
        if (plugin.initializeStart >= 0) {
            const QRectF initializeBar(x(plugin.initializeStart), barTop,
                                       std::max(1.0, x(plugin.end) - x(plugin.initializeStart)),
                                       barHeight);
            painter.fillRect(initializeBar, bad ? failedColour : initializeColour);
            barEnd = initializeBar.right();
        }
        if (bad)
            barEnd = drawCross(painter, barEnd, barTop);
        // The unload, on the same row: after every start, in the reverse order. At least a
        // few pixels wide, so that an unload of microseconds still shows its colour.
        QString text = shortOutcome(plugin);
        if (plugin.unloadStart >= 0 && plugin.unloadEnd >= 0) {
            const QRectF unloadBar(x(plugin.unloadStart), barTop,
                                   std::max(3.0, x(plugin.unloadEnd) - x(plugin.unloadStart)),
                                   barHeight);
            painter.fillRect(unloadBar, badUnload ? failedColour : unloadColour);
            barEnd = unloadBar.right();
            if (badUnload)
                barEnd = drawCross(painter, barEnd, barTop);
            text = QObject::tr("%1; %2").arg(text, shortUnload(plugin));
        }
        painter.setPen(bad || badUnload ? failedColour : textColour);
        painter.drawText(QRectF(barEnd + 6, y, size.width() - barEnd - 6, rowHeight),
                         Qt::AlignLeft | Qt::AlignVCenter, text);
    }

    // The legend.
    const int legendY = bottom + 8 + 2 * metrics.height();
    int legendX = left;
    const auto legend = [&](const QColor& colour, const QString& text) {
        painter.fillRect(QRectF(legendX, legendY + 3, 14, 10), colour);
        painter.setPen(textColour);
        painter.drawText(QPointF(legendX + 20, legendY + metrics.ascent()), text);
        legendX += 20 + metrics.horizontalAdvance(text) + 24;
    };
    legend(libraryColour, QObject::tr("loading the library"));
    legend(initializeColour, QObject::tr("initialize()"));
    if (report.shutdown) {
        legend(unloadColour, QObject::tr("unloading"));
        legend(failedColour, QObject::tr("cannot start or shut down"));
    } else {
        legend(failedColour, QObject::tr("cannot start"));
    }
}

} // namespace

QSize timelineSize(const Zelvane::TrialReport& report)
{
    return QSize(width,
                 titleHeight + rowHeight * int(std::max<qsizetype>(1, report.plugins.size()))
                     + axisHeight + margin);
}

bool writeTimeline(const Zelvane::TrialReport& report, const QString& fileName,
                   QString* errorString)
{
    const QSize size = timelineSize(report);
    if (QFileInfo(fileName).suffix().compare(QLatin1String("svg"), Qt::CaseInsensitive) == 0) {
#ifdef ZELVANE_HAVE_SVG
        QSvgGenerator generator;
        generator.setFileName(fileName);
        generator.setSize(size);
        generator.setViewBox(QRect(QPoint(0, 0), size));
        generator.setTitle(QObject::tr("Plugin start-up"));
        QPainter painter;
        if (!painter.begin(&generator)) {
            *errorString = QObject::tr("cannot write %1").arg(fileName);
            return false;
        }
        paint(painter, report, size);
        return painter.end();
#else
        *errorString = QObject::tr("this build has no SVG support: write a .png file");
        return false;
#endif
    }
    QImage image(size, QImage::Format_RGB32);
    {
        QPainter painter(&image);
        paint(painter, report, size);
    }
    QImageWriter writer(fileName);
    if (!writer.write(image)) {
        *errorString = QObject::tr("cannot write %1: %2").arg(fileName, writer.errorString());
        return false;
    }
    return true;
}

} // namespace ZelvaneInspect
