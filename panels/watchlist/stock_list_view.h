#pragma once

#include <QTableView>

namespace panelry
{

class StockListModel;

/// A list of stocks: one row each, one current. Up, Down, Page and Home/End move, typing a code jumps to it.
/// Double click and Enter pick, Delete removes. Where the order is the user's, rows are dragged with the
/// mouse or moved with Alt+Up and Alt+Down; Escape and a change of the list end a drag. The view only asks;
/// the list changes when the service has done it.
///
/// Ownership: a plain child widget; the model belongs to the caller. Threading: application thread.
class StockListView : public QTableView
{
    Q_OBJECT

public:
    enum class Order { Users, Fixed };

    StockListView(StockListModel* model, Order order, QWidget* parent = nullptr);

    /// What stands in the middle while there are no rows.
    void SetEmptyText(const QString& text);

    /// The current row, -1 for none.
    int Row() const { return currentIndex().row(); }
    void SelectRow(int row);

    QSize sizeHint() const override;

Q_SIGNALS:
    void PickWanted(int row);
    void RemoveWanted(int row);
    /// The row `from` is to stand at `to` afterwards.
    void MoveWanted(int from, int to);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyboardSearch(const QString& search) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    static constexpr int kNone = -1;

    void Measure();
    void MoveBy(int step);
    int GapAt(int y) const;
    void EndDrag();

    const Order m_order;
    QString m_emptyText;
    int m_pressedRow = kNone;  // the mouse is down on it
    int m_pressedY = 0;
    int m_gap = kNone;  // while a row is dragged: it would go before this one
};

}  // namespace panelry
