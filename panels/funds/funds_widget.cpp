#include "funds/funds_widget.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QShortcut>
#include <QTableView>
#include <QVBoxLayout>
#include <algorithm>

#include "base/number_text.h"
#include "common/panel_style.h"
#include "common/status_line.h"
#include "host_tables/table_style.h"

namespace panelry
{

namespace
{

struct Balance {
    const char* key;
    const char* title;
};
constexpr Balance kBalances[] = {{"account", "资金账号"}, {"zcc", "总资产"},    {"gpsz", "证券市值"},
                                 {"zjye", "资金余额"},    {"kyye", "可用余额"}, {"sjye", "可取余额"},
                                 {"djye", "冻结余额"},    {"zyk", "持仓盈亏"},  {"rzkyed", "融资可用额度"}};
constexpr char kProfit[] = "zyk";
constexpr char kNormal[] = "zijin_data_proc";

QString Heading(const std::string& name)
{
    if (name == kNormal) {
        return QStringLiteral("普通账户");
    }
    return QStringLiteral("信用账户 · 币种 %1").arg(QString::fromStdString(name.substr(name.rfind('_') + 1)));
}

// The profit has six decimals on its way; two are shown.
QString ShownText(const std::string& key, const std::string& value)
{
    return QString::fromStdString(key == kProfit && !value.empty() ? FixedText(TextToDouble(value), 2)
                                                                   : value);
}

}  // namespace

FundsWidget::FundsWidget(QWidget* parent)
    : QWidget(parent), m_view(new QTableView(this)), m_status(new StatusLine(this))
{
    style::Apply(this, style::kHairline);  // shows through the gaps
    style::ApplyToTable(*m_view);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    m_view->setModel(&m_model);
    m_view->installEventFilter(this);
    SetTitles();
    m_status->SetText(QStringLiteral("等待数据"));
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_status);
    setFocusProxy(m_view);
    auto* const refresh = new QShortcut(QKeySequence(Qt::Key_F5), this);
    refresh->setContext(Qt::WidgetWithChildrenShortcut);
    connect(refresh, &QShortcut::activated, this, &FundsWidget::RefreshWanted);
}

void FundsWidget::SetTitles()
{
    QStringList titles;
    for (const Balance& balance : kBalances) {
        titles.append(QString::fromUtf8(balance.title));
    }
    m_model.setRowCount(titles.size());
    m_model.setVerticalHeaderLabels(titles);
}

void FundsWidget::SetColors(const TableColors& colors)
{
    m_colors = colors;
}

void FundsWidget::SetFunds(const std::string& name, const StringMap& funds)
{
    m_funds[name] = funds;
    Fill();
}

// Texts change in place, so that nothing flickers and a selection stays.
void FundsWidget::Fill()
{
    m_model.setColumnCount(static_cast<int>(m_funds.size()));
    int column = 0;
    for (const auto& [name, funds] : m_funds) {
        m_model.setHeaderData(column, Qt::Horizontal, Heading(name));
        int row = 0;
        for (const Balance& balance : kBalances) {
            const auto found = funds.find(balance.key);
            const std::string value = found == funds.end() ? std::string() : found->second;
            const QModelIndex cell = m_model.index(row++, column);
            m_model.setData(cell, ShownText(balance.key, value));
            m_model.setData(cell, static_cast<int>(Qt::AlignRight | Qt::AlignVCenter), Qt::TextAlignmentRole);
            const double profit = std::string(balance.key) == kProfit ? TextToDouble(value) : 0;
            m_model.setData(cell,
                            profit > 0   ? QVariant(m_colors.rise)
                            : profit < 0 ? QVariant(m_colors.fall)
                                         : QVariant(),
                            Qt::ForegroundRole);
        }
        ++column;
    }
    m_status->SetText(QStringLiteral("%1 个账户 · F5 刷新").arg(m_funds.size()));
}

QString FundsWidget::Shown(const QString& title, const QString& heading) const
{
    for (int row = 0; row < m_model.rowCount(); ++row) {
        for (int column = 0; column < m_model.columnCount(); ++column) {
            if (m_model.headerData(row, Qt::Vertical).toString() == title &&
                m_model.headerData(column, Qt::Horizontal).toString() == heading) {
                return m_model.index(row, column).data().toString();
            }
        }
    }
    return {};
}

QString FundsWidget::AsText() const
{
    const QItemSelectionModel* const selection = m_view->selectionModel();
    QString text;
    for (int row = -1; row < m_model.rowCount(); ++row) {
        QStringList cells{row < 0 ? QString() : m_model.headerData(row, Qt::Vertical).toString()};
        bool wanted = row < 0 || !selection->hasSelection();
        for (int column = 0; column < m_model.columnCount(); ++column) {
            cells.append(row < 0 ? m_model.headerData(column, Qt::Horizontal).toString()
                                 : m_model.index(row, column).data().toString());
            wanted = wanted || selection->isSelected(m_model.index(row, column));
        }
        text += wanted ? cells.join(QLatin1Char('\t')) + QLatin1Char('\n') : QString();
    }
    return text;
}

QString FundsWidget::StatusText() const
{
    return m_status->Shown();
}

QSize FundsWidget::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    return {metrics.averageCharWidth() * 60,
            metrics.height() * 8 / 5 * (static_cast<int>(std::size(kBalances)) + 1) + metrics.height() * 2};
}

void FundsWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!window()->focusWidget()) {
        m_view->setFocus();
    }
}

bool FundsWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy)) {
        QApplication::clipboard()->setText(AsText());
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace panelry
