// The module library of the benchmarks. A file named "..._N.so" offers two modules: N counts its messages,
// 1000 + N has a widget with twenty children. So copies of one library offer modules of their own.

#include <dlfcn.h>

#include <QObject>
#include <QPointer>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "hosting/message_ids.h"
#include "hosting/module_library.h"
#include "hosting/module_manager_spi.h"
#include "hosting/widget_properties.h"
#include "modules/bench_messages.h"
#include "modules/ticket_widget.h"

using namespace panelry::bench;

namespace
{

// A QObject, so that the host's messages reach it although it has no widget.
class Counter : public QObject, public ModuleBase
{
public:
    void Initialize(int, const char*, const char*, const char*) override {}

    void OnMessage(int msgId, void* payload) override
    {
        if (msgId == kReportToHost) {
            std::string text = std::to_string(m_count);
            m_manager->SendModuleMessage(panelry::kToHost205, text.data(), this, panelry::kAlongLink);
        } else if (msgId == kAddCount) {
            *static_cast<std::uint64_t*>(payload) += m_count;
        } else if (msgId != panelry::kStockSelected) {  // every new module gets that one
            ++m_count;
        }
    }

private:
    std::uint64_t m_count = 0;
};

class Panel : public ModuleBase
{
public:
    Panel() : m_widget(new TicketWidget)
    {
        m_widget->setProperty(panelry::kFrameWidth, TicketWidget::kWidth);
        m_widget->setProperty(panelry::kFrameHeight, TicketWidget::kHeight);
    }
    ~Panel() override { delete m_widget; }

    void Initialize(int, const char*, const char*, const char*) override {}
    void OnMessage(int, void*) override {}
    QWidget* GetWidget() override { return m_widget; }

private:
    QPointer<QWidget> m_widget;
};

std::uint32_t OwnNumber()
{
    static const char here = 0;
    Dl_info file{};
    dladdr(&here, &file);
    return static_cast<std::uint32_t>(std::atoi(std::strrchr(file.dli_fname, '_') + 1));
}

}  // namespace

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo> offered{{1, OwnNumber(), "counter", "Counter", ""},
                                           {1, kFirstPanel + OwnNumber(), "panel", "Panel", ""}};
    return &offered;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    ModuleBase* const module = info->module_id < kFirstPanel ? static_cast<ModuleBase*>(new Counter)
                                                             : static_cast<ModuleBase*>(new Panel);
    module->m_instance = *info;
    return module;
}
