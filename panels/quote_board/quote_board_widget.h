#pragma once

#include <QByteArray>
#include <QVariantMap>
#include <QWidget>

#include "quote_board/quote_book.h"

namespace panelry
{

class QuoteDetailView;
class QuoteListModel;
class QuoteListView;
class StatusLine;
struct QuoteColors;

/// The quote board: a list of stocks, the current one in full, a status line.
///
/// Ownership: made without a parent by its module. Threading: application thread.
/// Failures: a bad push is told in the status line, and the board keeps what it has.
class QuoteBoardWidget : public QWidget
{
    Q_OBJECT
    /// What a clone starts with; worked out when it is asked for.
    Q_PROPERTY(QVariantMap module_data READ ModuleData)

public:
    explicit QuoteBoardWidget(QWidget* parent = nullptr);

    void SetColors(const QuoteColors& colors);

    /// Takes a push, see QuoteBook::Apply(). One without quotes is somebody else's, unless it was `addressed`
    /// to this board.
    void ApplyPush(const QByteArray& text, bool addressed);

    /// Takes quotes that the board begins with, in the form of a push. Not counted as one: what opened the
    /// board may come again as a push.
    void ApplyStart(const QByteArray& text);

    /// Makes a stock the current one without a StockPicked(). One that isn't known becomes current when its
    /// quote comes, if nobody has picked another by then.
    void Select(const QString& code);

    /// Null before the first stock.
    const Quote* Current() const;

    const QuoteBook& Book() const { return m_book; }
    /// Pushes of quotes so far, good or bad.
    int Pushes() const { return m_pushes; }
    /// What the status line shows.
    QString StatusText() const;

    /// {"selected": code, "quotes": a push text that holds everything}.
    QVariantMap ModuleData() const;
    /// The other way.
    void Restore(const QVariantMap& moduleData);

    QSize sizeHint() const override;

Q_SIGNALS:
    /// The user picked another stock; at the end of all that the board does about it.
    void StockPicked(const QString& code, const QString& name);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void BuildUi();
    void ShowResult(const QuoteBook::Result& result);
    void SelectWanted();
    void OnCurrentRowChanged(int row, int previousRow);
    void ShowCurrent();
    void ShowState();

    QuoteBook m_book;
    QString m_wanted;  // code of a stock that is to become current as soon as it is known
    int m_pushes = 0;
    bool m_telling = true;  // false while the program, not the user, moves the selection

    QuoteListModel* m_model = nullptr;
    QuoteListView* m_list = nullptr;
    QuoteDetailView* m_detail = nullptr;
    StatusLine* m_status = nullptr;
};

}  // namespace panelry
