#include "desktop/screen.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QRegularExpression>
#include <QScreen>
#include <algorithm>

#include "support/host_process.h"

namespace panelry::test::screen
{

namespace
{

QStringList Words(const QString& text)
{
    return text.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
}

}  // namespace

QStringList Windows(const QString& title)
{
    return Words(
        OutputOf(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                             QStringLiteral("--name"), QStringLiteral("^%1$").arg(title)}));
}

QRect Geometry(const QString& window)
{
    const QString text = OutputOf(QStringLiteral("xdotool"),
                                  {QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), window});
    const auto number = [&text](const char* name) {
        const QRegularExpression line(QStringLiteral("%1=(-?\\d+)").arg(QLatin1String(name)));
        return line.match(text).captured(1).toInt();
    };
    return {number("X"), number("Y"), number("WIDTH"), number("HEIGHT")};
}

QString Property(const QString& window, const QString& name)
{
    return OutputOf(QStringLiteral("xprop"), {QStringLiteral("-id"), window, name});
}

QString Topmost()
{
    const QString stacking = OutputOf(QStringLiteral("xprop"),
                                      {QStringLiteral("-root"), QStringLiteral("_NET_CLIENT_LIST_STACKING")});
    return QString::number(stacking.section(QStringLiteral("0x"), -1).toULongLong(nullptr, 16));
}

void Do(const QString& words)
{
    OutputOf(QStringLiteral("xdotool"), Words(words));
}

void Drag(const QPoint& from, const QPoint& to, int button)
{
    const auto moveTo = [](const QPoint& point) {
        Do(QStringLiteral("mousemove --sync %1 %2").arg(point.x()).arg(point.y()));
    };
    moveTo(from);
    Do(QStringLiteral("mousedown %1").arg(button));
    moveTo((from + to) / 2);
    moveTo(to);
    Do(QStringLiteral("mouseup %1").arg(button));
}

void Click(const QPoint& at)
{
    Do(QStringLiteral("mousemove --sync %1 %2 click 1").arg(at.x()).arg(at.y()));
}

double ShareOf(const QColor& color, const QRect& area)
{
    const QImage image = QGuiApplication::primaryScreen()
                             ->grabWindow(0, area.x(), area.y(), area.width(), area.height())
                             .toImage();
    int hits = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            hits += image.pixelColor(x, y) == color;
        }
    }
    return static_cast<double>(hits) / std::max(1, image.width() * image.height());
}

}  // namespace panelry::test::screen
