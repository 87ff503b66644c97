#include "services/module_base.h"

#include "base/host_text.h"
#include "services/resource_manager.h"

ModuleBase::ModuleBase() = default;
ModuleBase::~ModuleBase() = default;

std::shared_ptr<InstanceInfo> ModuleBase::GetInstanceInfo()
{
    return std::make_shared<InstanceInfo>(m_instance);
}

QWidget* ModuleBase::GetWidget()
{
    return nullptr;
}

void ModuleBase::SetProviders(void* /*quoteProvider*/, void* /*tradeProvider*/) {}

void ModuleBase::SetColorTable(void* table)
{
    ResourceManager::Instance(true)->SetColorTable(static_cast<const ConfigTable*>(table));
}

void ModuleBase::SetConfigTables(void* systemTable, void* userTable)
{
    ResourceManager& settings = *ResourceManager::Instance(true);
    settings.SetConfigTables(static_cast<const ConfigTable*>(systemTable),
                             static_cast<const ConfigTable*>(userTable));
    panelry::SetHostEncoding(settings.ReadConfig("system", "host_encoding"));
}

void ModuleBase::ReservedModuleOp(std::uintptr_t /*a*/, std::uintptr_t /*b*/) {}
