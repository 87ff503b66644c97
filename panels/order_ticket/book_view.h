#pragma once

#include <QWidget>

#include "order_ticket/ticket_face.h"

namespace panelry
{

/// The five levels of both sides. A click picks a level's price.
///
/// Ownership: a plain child widget. Threading: application thread.
class BookView : public QWidget
{
    Q_OBJECT

public:
    explicit BookView(QWidget* parent = nullptr);

    /// Repaints only what differs.
    void SetBook(const std::array<BookLevel, 10>& book);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    void PricePicked(const QString& price);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QRect RowRect(int row) const;

    std::array<BookLevel, 10> m_book;
};

}  // namespace panelry
