#include "quote_board/quote_board_widget.h"

#include <QGridLayout>
#include <QItemSelectionModel>
#include <QScopedValueRollback>
#include <QTime>

#include "common/panel_style.h"
#include "common/status_line.h"
#include "quote_board/quote_colors.h"
#include "quote_board/quote_detail_view.h"
#include "quote_board/quote_list_model.h"
#include "quote_board/quote_list_view.h"

namespace panelry
{

namespace
{

constexpr char kSelected[] = "selected";
constexpr char kQuotes[] = "quotes";

}  // namespace

QuoteBoardWidget::QuoteBoardWidget(QWidget* parent) : QWidget(parent)
{
    BuildUi();
    ShowState();
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current, const QModelIndex& previous) {
                OnCurrentRowChanged(current.row(), previous.row());
            });
}

void QuoteBoardWidget::BuildUi()
{
    style::Apply(this, style::kHairline);  // shows through the gaps
    m_model = new QuoteListModel(m_book, this);
    m_list = new QuoteListView(this);
    m_list->setModel(m_model);
    m_detail = new QuoteDetailView(this);
    m_status = new StatusLine(this);
    style::Apply(m_list);
    setFocusProxy(m_list);

    auto* const layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    layout->addWidget(m_list, 0, 0);
    layout->addWidget(m_detail, 0, 1);
    layout->addWidget(m_status, 1, 0, 1, 2);
    layout->setColumnStretch(0, 1);
    layout->setRowStretch(0, 1);
}

QSize QuoteBoardWidget::sizeHint() const
{
    const QSize list = m_list->sizeHint();
    const QSize detail = m_detail->sizeHint();
    return {list.width() + 1 + detail.width(),
            std::max(list.height(), detail.height()) + 1 + m_status->sizeHint().height()};
}

void QuoteBoardWidget::SetColors(const QuoteColors& colors)
{
    m_list->SetColors(colors);
    m_detail->SetColors(colors);
}

void QuoteBoardWidget::ApplyPush(const QByteArray& text, bool addressed)
{
    QuoteBook::Result result = m_book.Apply(text);
    if (!result.quotes && result.problems.isEmpty() && addressed) {
        result.problems.append(QStringLiteral("推送中没有“quotes”"));
    }
    if (result.quotes) {
        ++m_pushes;
    }
    ShowResult(result);
}

void QuoteBoardWidget::ApplyStart(const QByteArray& text)
{
    ShowResult(m_book.Apply(text));
}

void QuoteBoardWidget::ShowResult(const QuoteBook::Result& result)
{
    m_model->Applied(result.changed);
    SelectWanted();
    ShowCurrent();
    if (result.quotes) {
        ShowState();
    }
    if (!result.problems.isEmpty()) {
        const int more = result.problems.size() - 1;
        const QString first = result.problems.first();
        m_status->Warn(more == 0 ? first
                                 : QStringLiteral("%1（另有 %2 处）").arg(first, QString::number(more)));
    }
}

void QuoteBoardWidget::Select(const QString& code)
{
    m_wanted = code;
    SelectWanted();
}

// The stock that was asked for as soon as it is known, and until then the first one.
void QuoteBoardWidget::SelectWanted()
{
    int row = m_wanted.isEmpty() ? -1 : m_book.RowOf(m_wanted);
    if (row >= 0) {
        m_wanted.clear();
    } else if (!m_list->currentIndex().isValid() && !m_book.Quotes().empty()) {
        row = 0;
    }
    if (row >= 0) {
        const QScopedValueRollback quiet(m_telling, false);
        m_list->setCurrentIndex(m_model->index(row, 0));
    }
}

void QuoteBoardWidget::OnCurrentRowChanged(int row, int previousRow)
{
    if (row == previousRow) {
        return;  // another column of the same stock
    }
    ShowCurrent();
    const Quote* const quote = Current();
    if (m_telling && quote) {
        m_wanted.clear();
        Q_EMIT StockPicked(quote->code, quote->name);
    }
}

const Quote* QuoteBoardWidget::Current() const
{
    const int row = m_list->currentIndex().row();
    return row < 0 ? nullptr : &m_book.Quotes()[static_cast<std::size_t>(row)];
}

void QuoteBoardWidget::ShowCurrent()
{
    if (const Quote* const quote = Current()) {
        m_detail->SetFace(FaceOf(*quote));
    }
}

void QuoteBoardWidget::ShowState()
{
    if (m_pushes == 0) {
        m_status->SetText(QStringLiteral("%1 只证券 · 等待推送").arg(m_book.Quotes().size()));
        return;
    }
    m_status->SetText(QStringLiteral("%1 只证券 · 推送 %2 次 · 更新 %3")
                          .arg(m_book.Quotes().size())
                          .arg(m_pushes)
                          .arg(QTime::currentTime().toString(QStringLiteral("HH:mm:ss"))));
}

QString QuoteBoardWidget::StatusText() const
{
    return m_status->Shown();
}

QVariantMap QuoteBoardWidget::ModuleData() const
{
    const Quote* const quote = Current();
    return {{QLatin1String(kSelected), quote ? quote->code : m_wanted},
            {QLatin1String(kQuotes), m_book.Text()}};
}

void QuoteBoardWidget::Restore(const QVariantMap& moduleData)
{
    m_wanted = moduleData.value(QLatin1String(kSelected)).toString();
    const QByteArray quotes = moduleData.value(QLatin1String(kQuotes)).toString().toUtf8();
    if (!quotes.isEmpty()) {
        ApplyStart(quotes);
    }
}

void QuoteBoardWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!window()->focusWidget()) {
        m_list->setFocus();  // the arrow keys work at once
    }
}

}  // namespace panelry
