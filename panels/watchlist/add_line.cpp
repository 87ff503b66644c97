#include "watchlist/add_line.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>

#include "common/market.h"
#include "common/panel_style.h"

namespace panelry
{

namespace
{

constexpr int kLongestName = 40;

}  // namespace

AddLine::AddLine(QWidget* parent) : QWidget(parent)
{
    BuildUi();
    connect(m_code, &QLineEdit::textEdited, this, &AddLine::OnCodeEdited);
    connect(m_name, &QLineEdit::textEdited, this, [this] { m_touched = true; });
    connect(m_code, &QLineEdit::textChanged, this, &AddLine::ShowState);
    connect(m_market, QOverload<int>::of(&QComboBox::activated), this, [this] { m_marketChosen = true; });
    for (const QLineEdit* const field : {m_code, m_name}) {
        connect(field, &QLineEdit::returnPressed, this, &AddLine::Add);
    }
    connect(m_add, &QPushButton::clicked, this, &AddLine::Add);
    ShowState();
}

void AddLine::BuildUi()
{
    style::Apply(this, style::kBand);
    const int margin = fontMetrics().averageCharWidth();
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(margin, margin / 2, margin, margin / 2);
    layout->setSpacing(margin / 2);
    m_code = AddField(QStringLiteral("代码"), "000000", 2);
    m_code->setObjectName(QStringLiteral("code"));
    m_code->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9A-Za-z.]{1,12}")), m_code));
    m_market = new QComboBox(this);
    for (const char* const market : {kShanghai, kShenzhen}) {
        m_market->addItem(MarketName(market), QString::fromLatin1(market));
    }
    layout->addWidget(m_market);
    m_name = AddField(QStringLiteral("名称（可不填）"), "0000", 3);
    m_name->setMaxLength(kLongestName);
    m_add = new QPushButton(QStringLiteral("添加"), this);
    m_add->setObjectName(QStringLiteral("add"));
    m_add->setAutoDefault(true);  // Enter presses it too
    layout->addWidget(m_add);
}

QLineEdit* AddLine::AddField(const QString& placeholder, const char* widest, int stretch)
{
    auto* const field = new QLineEdit(this);
    field->setPlaceholderText(placeholder);
    field->setMinimumWidth(fontMetrics().horizontalAdvance(QLatin1String(widest)) +
                           3 * fontMetrics().averageCharWidth());
    static_cast<QHBoxLayout*>(layout())->addWidget(field, stretch);
    return field;
}

void AddLine::Offer(const StringMap& stock)
{
    if (m_touched) {
        return;
    }
    m_code->setText(QString::fromStdString(FieldOf(stock, "stockcode")));
    m_name->setText(QString::fromStdString(FieldOf(stock, "stockname")));
    SelectMarket(FieldOf(stock, "market"));
}

void AddLine::StartAnew()
{
    m_touched = false;
    m_marketChosen = false;
    m_code->clear();
    m_name->clear();
    m_code->setFocus();
}

void AddLine::OnCodeEdited(const QString& code)
{
    if (!m_touched) {
        m_name->clear();  // it belonged to the stock that was offered
    }
    m_touched = !code.isEmpty();
    if (!m_marketChosen) {
        SelectMarket(MarketOf(code));
    }
}

// A market without a name stands under its number from then on.
void AddLine::SelectMarket(const std::string& market)
{
    const QString number = QString::fromStdString(market);
    int place = m_market->findData(number);
    if (place < 0 && !market.empty()) {
        m_market->addItem(MarketName(market), number);
        place = m_market->count() - 1;
    }
    m_market->setCurrentIndex(qMax(place, 0));
}

void AddLine::Add()
{
    if (m_code->text().isEmpty()) {
        m_code->setFocus();
        return;
    }
    Q_EMIT AddWanted({{"stockcode", m_code->text().toStdString()},
                      {"market", m_market->currentData().toString().toStdString()},
                      {"stockname", m_name->text().trimmed().toStdString()}});
}

void AddLine::ShowState()
{
    m_add->setEnabled(!m_code->text().isEmpty());
}

}  // namespace panelry
