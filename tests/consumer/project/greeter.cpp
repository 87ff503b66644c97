// A panel that answers push data with a greeting from the settings.

#include <QLabel>
#include <QPointer>
#include <string>

#include "hosting/message_ids.h"
#include "hosting/module_library.h"
#include "hosting/module_manager_spi.h"
#include "services/resource_manager.h"

class Greeter : public ModuleBase
{
public:
    explicit Greeter(const InstanceInfo& info) { m_instance = info; }
    ~Greeter() override { delete m_widget; }

    void Initialize(int, const char*, const char*, const char* initParam) override
    {
        m_widget = new QLabel(QString::fromUtf8(initParam));
    }

    void OnMessage(int msgId, void* payload) override
    {
        if (msgId != panelry::kPushData) {
            return;
        }
        const std::string greeting = ResourceManager::Instance(true)->ReadConfig("greeter", "greeting");
        std::string answer = greeting + ", " + static_cast<const char*>(payload);
        m_manager->SendModuleMessage(panelry::kToHost205, answer.data(), this, panelry::kAlongLink);
    }

    QWidget* GetWidget() override { return m_widget; }

private:
    QPointer<QLabel> m_widget;
};

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo> offered = [] {
        ModuleInfo info;
        info.module_id = 42000;
        info.module_title = "Greeter";
        return std::vector<ModuleInfo>{info};
    }();
    return &offered;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new Greeter(*info);
}
