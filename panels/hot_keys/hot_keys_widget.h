#pragma once

#include <QStringList>
#include <QVariantMap>
#include <QWidget>

class QCheckBox;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;

namespace panelry
{

class StatusLine;

/// The hot keys panel: a line to type combinations into, the list of them, and below what has arrived, the newest
/// line last. Enter adds, Delete removes, Ctrl+N goes to the line, Ctrl+L empties the log.
///
/// Ownership: made without a parent by its module. Threading: application thread.
class HotKeysWidget : public QWidget
{
    Q_OBJECT
    /// What a clone starts with: {"combinations": "f9 ctrl+shift+a", "releases": "1", "mouse": "0"}.
    Q_PROPERTY(QVariantMap module_data READ ModuleData)

public:
    explicit HotKeysWidget(QWidget* parent = nullptr);
    ~HotKeysWidget() override;

    QStringList Combinations() const;
    bool Releases() const;
    bool Mouse() const;

    /// Adds what the user typed, or says why not.
    void Add(const QString& typed);
    /// Appends a line to what has arrived.
    void ShowArrival(const QString& text);

    QStringList Arrivals() const;
    QString StatusText() const;
    QVariantMap ModuleData() const;
    void Restore(const QVariantMap& moduleData);
    QSize sizeHint() const override;

Q_SIGNALS:
    /// Something else is to be listened to.
    void WishesChanged();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void BuildUi();
    QWidget* BuildLine();
    QWidget* BuildChoices();
    void AddShortcuts();
    void RemoveCurrent();
    void ShowState();

    QLineEdit* m_line = nullptr;
    QPushButton* m_add = nullptr;
    QPushButton* m_remove = nullptr;
    QListWidget* m_combinations = nullptr;
    QCheckBox* m_releases = nullptr;
    QCheckBox* m_mouse = nullptr;
    QPlainTextEdit* m_arrivals = nullptr;
    StatusLine* m_status = nullptr;
    int m_arrived = 0;
};

}  // namespace panelry
