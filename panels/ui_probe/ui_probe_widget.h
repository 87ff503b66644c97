#pragma once

#include <QWidget>

class QJsonObject;
class QTreeWidget;

namespace panelry
{

class StatusLine;

/// The UI probe's panel: says that it listens, and lists the newest 200 requests with their answers, the
/// newest at the end. Ctrl+L empties the list.
///
/// Ownership: made without a parent by its module. Threading: application thread.
class UiProbeWidget : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kMostRows = 200;

    /// `requestId` is the message that requests come by.
    explicit UiProbeWidget(int requestId, QWidget* parent = nullptr);

    void Add(const QJsonObject& request, const QJsonObject& answer);

    QSize sizeHint() const override;

private:
    void BuildList();
    void Clear();
    void ShowState();

    QTreeWidget* m_list = nullptr;
    StatusLine* m_status = nullptr;
    int m_answers = 0;
    int m_refusals = 0;
};

}  // namespace panelry
