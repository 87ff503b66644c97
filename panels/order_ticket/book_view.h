#pragma once

#include <QStringList>
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
    Q_PROPERTY(QStringList rows READ Rows)

public:
    explicit BookView(QWidget* parent = nullptr);

    /// Repaints only what differs.
    void SetBook(const std::array<BookLevel, 10>& book);

    /// What is painted, from the top: "卖5 10.26 1200".
    QStringList Rows() const;

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
