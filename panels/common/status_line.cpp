#include "common/status_line.h"

#include <QFontMetrics>
#include <QPainter>
#include <QTime>

#include "common/panel_style.h"

namespace panelry
{

namespace
{

constexpr int kProblemShownMs = 10'000;

}  // namespace

StatusLine::StatusLine(QWidget* parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_problemShown.setSingleShot(true);
    connect(&m_problemShown, &QTimer::timeout, this, qOverload<>(&QWidget::update));
}

void StatusLine::SetText(const QString& text)
{
    if (text == m_text) {
        return;
    }
    m_text = text;
    if (!m_problemShown.isActive()) {
        update();
    }
}

void StatusLine::Warn(const QString& problem)
{
    m_problem = QTime::currentTime().toString(QStringLiteral("HH:mm:ss ")) + problem;
    ++m_problems;
    setToolTip(m_problem);
    m_problemShown.start(kProblemShownMs);
    update();
}

QString StatusLine::Shown() const
{
    if (m_problemShown.isActive()) {
        return m_problem;
    }
    return m_problems == 0 ? m_text : QStringLiteral("%1 · 有误 %2 次").arg(m_text).arg(m_problems);
}

QSize StatusLine::sizeHint() const
{
    return {0, fontMetrics().height() * 3 / 2};
}

QSize StatusLine::minimumSizeHint() const
{
    return sizeHint();
}

void StatusLine::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), QColor(style::kBand));
    const int margin = fontMetrics().averageCharWidth();
    const QRect text = rect().adjusted(margin, 0, -margin, 0);
    painter.setPen(QColor(m_problemShown.isActive() ? style::kWarningText : style::kMutedText));
    painter.drawText(text, Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(Shown(), Qt::ElideRight, text.width()));
}

}  // namespace panelry
