#pragma once

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QWidget>

namespace panelry::bench
{

/// A widget with twenty children such as an order ticket has: ten labels, five line edits, five buttons.
/// Tells by a property that it has been painted.
class TicketWidget : public QWidget
{
public:
    static constexpr char kPainted[] = "bench_painted";
    static constexpr int kWidth = 420;
    static constexpr int kHeight = 260;

    TicketWidget()
    {
        auto* const layout = new QGridLayout(this);
        for (int row = 0; row < 5; ++row) {
            const QString text = QStringLiteral("field %1").arg(row);
            layout->addWidget(new QLabel(text), row, 0);
            layout->addWidget(new QLineEdit(text), row, 1);
            layout->addWidget(new QLabel(text), row, 2);
            layout->addWidget(new QPushButton(text), row, 3);
        }
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QWidget::paintEvent(event);
        setProperty(kPainted, true);
    }
};

}  // namespace panelry::bench
