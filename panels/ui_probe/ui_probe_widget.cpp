#include "ui_probe/ui_probe_widget.h"

#include <QHeaderView>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QScrollBar>
#include <QShortcut>
#include <QTime>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "common/panel_style.h"
#include "common/status_line.h"

namespace panelry
{

namespace
{

enum Column { kTime, kRequest, kWhat, kOutcome, kColumns };

constexpr int kColumnsWanted = 84;
constexpr int kLinesWanted = 14;

QString Outcome(const QJsonObject& answer)
{
    if (!answer[QLatin1String("ok")].toBool()) {
        return answer[QLatin1String("error")].toString();
    }
    if (answer.contains(QLatin1String("count"))) {
        return QStringLiteral("找到 %1 个").arg(answer[QLatin1String("count")].toInt());
    }
    return answer[QLatin1String("nested")].toBool() ? QStringLiteral("已打开菜单或对话框")
                                                    : QStringLiteral("成功");
}

// The request without its name, which has a column of its own.
QString Rest(QJsonObject request)
{
    request.remove(QStringLiteral("request"));
    return QString::fromUtf8(QJsonDocument(request).toJson(QJsonDocument::Compact));
}

}  // namespace

UiProbeWidget::UiProbeWidget(int requestId, QWidget* parent) : QWidget(parent), m_status(new StatusLine(this))
{
    style::Apply(this, style::kHairline);  // shows through the gaps
    auto* const heading =
        new QLabel(QStringLiteral("正在监听消息 %1，应答以 205 发回主机").arg(requestId), this);
    style::Apply(heading, style::kBand);
    heading->setMargin(fontMetrics().averageCharWidth());
    BuildList();

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    layout->addWidget(heading);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_status);
    setFocusProxy(m_list);
    auto* const clear = new QShortcut(QKeySequence(QStringLiteral("Ctrl+L")), this);
    clear->setContext(Qt::WidgetWithChildrenShortcut);
    connect(clear, &QShortcut::activated, this, &UiProbeWidget::Clear);
    ShowState();
}

void UiProbeWidget::BuildList()
{
    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("requests"));
    style::Apply(m_list);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setToolTip(QStringLiteral("Ctrl+L：清空列表"));
    m_list->setHeaderLabels(
        {QStringLiteral("时间"), QStringLiteral("请求"), QStringLiteral("内容"), QStringLiteral("结果")});
    const int unit = m_list->fontMetrics().averageCharWidth();
    m_list->header()->setStyleSheet(style::HeaderSheet(unit / 2));
    m_list->header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_list->setColumnWidth(
        kTime, m_list->fontMetrics().horizontalAdvance(QStringLiteral("00:00:00.000")) + 3 * unit);
    m_list->setColumnWidth(kRequest, 8 * unit);
    m_list->setColumnWidth(kWhat, 36 * unit);
}

void UiProbeWidget::Add(const QJsonObject& request, const QJsonObject& answer)
{
    const QScrollBar* const bar = m_list->verticalScrollBar();
    const bool following = bar->value() == bar->maximum();  // who scrolls up reads in peace
    const bool ok = answer[QLatin1String("ok")].toBool();
    ++m_answers;
    m_refusals += ok ? 0 : 1;
    auto* const row = new QTreeWidgetItem(
        m_list, {QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz")),
                 request[QLatin1String("request")].toString(), Rest(request), Outcome(answer)});
    row->setToolTip(kWhat, row->text(kWhat));
    row->setToolTip(kOutcome, row->text(kOutcome));
    if (!ok) {
        row->setForeground(kOutcome, QColor(style::kWarningText));
    }
    if (m_list->topLevelItemCount() > kMostRows) {
        delete m_list->takeTopLevelItem(0);
    }
    if (following) {
        m_list->scrollToBottom();
    }
    ShowState();
}

void UiProbeWidget::Clear()
{
    m_list->clear();
    m_answers = 0;
    m_refusals = 0;
    ShowState();
}

void UiProbeWidget::ShowState()
{
    m_status->SetText(
        m_answers == 0
            ? QStringLiteral("尚无请求")
            : QStringLiteral("已应答 %1 个请求，其中 %2 个未能完成").arg(m_answers).arg(m_refusals));
}

QSize UiProbeWidget::sizeHint() const
{
    const QFontMetrics metrics = m_list->fontMetrics();
    return {metrics.averageCharWidth() * kColumnsWanted, metrics.lineSpacing() * (kLinesWanted + 4)};
}

}  // namespace panelry
