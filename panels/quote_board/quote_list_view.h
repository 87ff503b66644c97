#pragma once

#include <QTableView>

#include "quote_board/quote_colors.h"

namespace panelry
{

/// The list of stocks: one row each, one current. Up, Down, Page and Home/End move, typing a code jumps to
/// it.
///
/// Ownership: a plain child widget. Threading: application thread.
class QuoteListView : public QTableView
{
    Q_OBJECT

public:
    explicit QuoteListView(QWidget* parent = nullptr);

    void SetColors(const QuoteColors& colors);
    const QuoteColors& Colors() const { return m_colors; }

    void setModel(QAbstractItemModel* model) override;
    void keyboardSearch(const QString& search) override;
    QSize sizeHint() const override;

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void changeEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void Measure();

    QuoteColors m_colors;
};

}  // namespace panelry
