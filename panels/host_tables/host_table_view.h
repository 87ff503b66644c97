#pragma once

#include <QPointer>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QTimer>
#include <string>
#include <vector>

namespace panelry
{

class HostTableModel;

/// A table of the host's as people use it: sorted by a click on a heading, filtered by a text, columns moved and
/// widened with the mouse and remembered. Ctrl+C copies the selected rows with the headings, Enter and a double
/// click pick a row, Delete asks for its removal. News of the host keep the selection and the place.
///
/// What is remembered stands in "userconfig/panels.ini" under the view's name. A directory that can't be written
/// remembers nothing.
///
/// Ownership: a plain child widget; the model belongs to the caller. Threading: application thread.
class HostTableView : public QTableView
{
    Q_OBJECT

public:
    HostTableView(HostTableModel* model, QString name, QWidget* parent = nullptr);
    ~HostTableView() override;

    /// Shows the rows in which some column holds `text`, in either case.
    void SetFilter(const QString& text);
    /// What stands in the middle while there are no rows.
    void SetEmptyText(const QString& text);

    /// Rows of the model, in the order shown.
    std::vector<int> SelectedRows() const;
    int ShownRows() const { return m_proxy.rowCount(); }
    /// Selected rows as text: columns as shown, tabulators between, headings first. Empty without a selection.
    QString SelectionAsText() const;

    QSize sizeHint() const override;

Q_SIGNALS:
    void Picked(int row);
    void RemoveWanted();
    /// Other rows are shown or selected than before.
    void RowsChanged();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void SetUp();
    void Measure();
    void ShowColumns();
    void Remember();
    void Recall();
    void BeforeReset();
    void AfterReset();

    HostTableModel* const m_model;
    const QString m_name;
    QString m_emptyText;
    QSortFilterProxyModel m_proxy;
    QTimer m_rememberSoon;
    bool m_measured = false;
    std::vector<std::string> m_selectedKeys;  // across a reset
    std::string m_currentKey;
    int m_scrolled = 0;
};

}  // namespace panelry
