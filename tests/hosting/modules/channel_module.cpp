// A module library without modules of its own: the test that loads it says what it offers and makes the
// objects.

#include <QCoreApplication>
#include <QVariant>

#include "hosting/module_library.h"
#include "hosting/modules/module_channel.h"

static panelry::test::ModuleChannel& Channel()
{
    const QVariant channel = QCoreApplication::instance()->property(panelry::test::kChannelProperty);
    return *static_cast<panelry::test::ModuleChannel*>(channel.value<void*>());
}

std::vector<ModuleInfo>* GetModuleInfo()
{
    return &Channel().offers;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return Channel().make(*info);
}
