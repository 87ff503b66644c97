#pragma once

#include <QByteArray>
#include <QPointer>
#include <optional>

#include "quote_board/quote_board_widget.h"
#include "services/module_base.h"

namespace panelry
{

/// The quote board's number.
inline constexpr unsigned kQuoteBoardId = 41001;

/// The quote board as a module: push data in, the stock picked (102) out and in, state into clones.
///
/// Listens to 102, 113, 114 and the frame commands (common/frame_commands.h); every other id is nobody's
/// business here, and its payload stays unread. The text of an addressed push comes twice, under 113 and then
/// under 114, and is applied once.
///
/// Ownership: holds the widget, which the library may delete first. Threading: application thread.
class QuoteBoardModule : public ModuleBase
{
public:
    explicit QuoteBoardModule(const InstanceInfo& info);
    ~QuoteBoardModule() override;

    void Initialize(int moduleId, const char* a, const char* b, const char* initParam) override;
    void OnMessage(int msgId, void* payload) override;
    QWidget* GetWidget() override { return m_widget; }

private:
    void OnInitData(const char* text);
    void OnPushData(const char* text);
    void OnStockSelected(const void* payload);
    void TellStock(const QString& code, const QString& name);

    QPointer<QuoteBoardWidget> m_widget;
    std::optional<QByteArray> m_awaited;  // the text that came under 113 and is to come again under 114
};

}  // namespace panelry
