#pragma once

#include <QTimer>
#include <QWidget>
#include <cstdint>

#include "message_monitor/line_buffer.h"

class QAction;

namespace panelry
{

class MessageView;
class StatusLine;

/// The message monitor: the newest 5,000 messages, a row of actions, a status line.
///
/// Messages are shown in batches, some 30 times a second at most, so that a flood costs little.
/// Ownership: made without a parent by its module. Threading: application thread.
class MessageMonitorWidget : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kMostLines = 5'000;

    explicit MessageMonitorWidget(QWidget* parent = nullptr);

    void Add(int msgId, const QString& text);

    /// Paused, messages wait, up to the limit, and come when the pause ends.
    void SetPaused(bool paused);
    void SetWrapped(bool wrapped);
    /// Shown and waiting ones.
    void Clear();
    /// The selection, or else all that is shown.
    void Copy();

    MessageView* View() const { return m_view; }

    QSize sizeHint() const override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void BuildUi();
    void BuildActions(QWidget* bar);
    QAction* AddAction(QWidget* bar, const QString& text, const QKeySequence& keys, const QString& toolTip);
    void Flush();
    void ShowState();

    LineBuffer m_waiting{kMostLines};
    QTimer m_flush;
    bool m_paused = false;
    std::uint64_t m_messages = 0;

    MessageView* m_view = nullptr;
    StatusLine* m_status = nullptr;
};

}  // namespace panelry
