#pragma once

#include <QWidget>

#include "services/records.h"

class QComboBox;
class QLineEdit;
class QPushButton;

namespace panelry
{

/// The line with which a stock is added: code, market, name. The market follows from the code until the user
/// chooses one. Enter in any field adds.
///
/// Ownership: a plain child widget. Threading: application thread.
class AddLine : public QWidget
{
    Q_OBJECT

public:
    explicit AddLine(QWidget* parent = nullptr);

    /// The stock that the other panels look at: offered as long as the user types nothing here.
    void Offer(const StringMap& stock);
    /// Empties the line and takes the keyboard, for the next stock.
    void StartAnew();

Q_SIGNALS:
    /// "stockcode", "market", "stockname"; the code isn't empty.
    void AddWanted(const StringMap& stock);

private:
    void BuildUi();
    QLineEdit* AddField(const QString& placeholder, const char* widest, int stretch);
    void OnCodeEdited(const QString& code);
    void SelectMarket(const std::string& market);
    void Add();
    void ShowState();

    bool m_touched = false;       // the user has typed here since the line was last empty
    bool m_marketChosen = false;  // by the user
    QLineEdit* m_code = nullptr;
    QComboBox* m_market = nullptr;
    QLineEdit* m_name = nullptr;
    QPushButton* m_add = nullptr;
};

}  // namespace panelry
