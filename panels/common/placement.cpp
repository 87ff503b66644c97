#include "common/placement.h"

#include <QEvent>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <optional>

#include "hosting/widget_properties.h"

namespace panelry
{

namespace
{

constexpr int kWhole = 100;

// Moves the window of a widget as it is shown for the first time.
class FirstShow : public QObject
{
public:
    FirstShow(QWidget& widget, QPoint place) : QObject(&widget), m_place(place)
    {
        widget.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show) {
            auto& widget = *static_cast<QWidget*>(watched);
            widget.removeEventFilter(this);
            QWidget* const frame = widget.window();
            if (frame != &widget) {
                frame->move(m_place);
                // A frame that is there already isn't moved, and the window manager would choose a place.
                frame->windowHandle()->setPosition(m_place);
            }
            deleteLater();
        }
        return false;
    }

private:
    const QPoint m_place;
};

// Neighbours in hundredths are neighbours in pixels.
QRect OnScreen(const QRect& hundredths)
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const auto across = [&](int x) { return screen.left() + screen.width() * x / kWhole; };
    const auto down = [&](int y) { return screen.top() + screen.height() * y / kWhole; };
    const QPoint begin(across(hundredths.x()), down(hundredths.y()));
    const QPoint end(across(hundredths.x() + hundredths.width()), down(hundredths.y() + hundredths.height()));
    return {begin, QSize(end.x() - begin.x(), end.y() - begin.y())};
}

std::optional<QRect> WantedPlace(const char* creationText)
{
    const QJsonObject creation = QJsonDocument::fromJson(QByteArray(creationText)).object();
    if (creation.contains(QLatin1String("init_data"))) {
        return std::nullopt;
    }
    const QJsonArray place =
        creation.value(QLatin1String("init_param")).toObject().value(QLatin1String("place")).toArray();
    const bool fits = std::all_of(place.begin(), place.end(), [](const QJsonValue& number) {
        return number.toInt(-1) >= 0 && number.toInt(-1) <= kWhole;
    });
    if (place.size() != 4 || !fits || place.at(2).toInt() == 0 || place.at(3).toInt() == 0) {
        return std::nullopt;
    }
    return OnScreen({place.at(0).toInt(), place.at(1).toInt(), place.at(2).toInt(), place.at(3).toInt()});
}

}  // namespace

void PlaceFrame(QWidget* widget, const char* creationText)
{
    const std::optional<QRect> place = WantedPlace(creationText);
    if (widget && place) {
        widget->setProperty(kFrameWidth, place->width());
        widget->setProperty(kFrameHeight, place->height());
        new FirstShow(*widget, place->topLeft());
    }
}

}  // namespace panelry
