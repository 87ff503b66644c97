#include "services/module_base.h"

#include "hosting/module_manager_spi.h"
#include "hosting/plugin_manager_spi.h"
#include "services/resource_manager.h"
#include "support/slot_of.h"
#include "support/test.h"

using panelry::test::SlotOf;

namespace
{

class BareModule : public ModuleBase
{
public:
    void Initialize(int, const char*, const char*, const char*) override {}
    void OnMessage(int, void*) override {}
};

struct Left : virtual_enable_shared_from_this<Left> {
    int padding = 0;
};
struct Right : virtual_enable_shared_from_this<Right> {
    ~Right() override { QVERIFY_EXCEPTION_THROWN(shared_from_this(), std::bad_weak_ptr); }
};
struct Both : Left, Right {
};

}  // namespace

class ModuleBaseTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AllViewsOfAnObjectShareOneCount()
    {
        const auto both = std::make_shared<Both>();
        const std::shared_ptr<Left> left = both->Left::shared_from_this();
        const std::shared_ptr<Right> right = both->Right::shared_from_this();
        QCOMPARE(left.get(), static_cast<Left*>(both.get()));
        QCOMPARE(right.get(), static_cast<Right*>(both.get()));
        QCOMPARE(both.use_count(), 3L);
        QVERIFY(!left.owner_before(right) && !right.owner_before(left));
        Both unowned;
        QVERIFY_EXCEPTION_THROWN(unowned.Left::shared_from_this(), std::bad_weak_ptr);
    }

    void DefaultsOfAModule()
    {
        BareModule module;
        QVERIFY(!module.m_manager && !module.GetWidget());
        const std::shared_ptr<InstanceInfo> blank = module.GetInstanceInfo();
        QCOMPARE(int{blank->module_kind}, 1);
        QVERIFY(blank->module_id == 0 && blank->group_id == 0 && blank->module_title.empty());
        module.m_instance.module_title = "title";
        QCOMPARE(module.GetInstanceInfo()->module_title, "title");
        QVERIFY(blank->module_title.empty());  // a record of its own, not a view
    }

    void TablesGoToTheResourceManager()
    {
        ConfigTable system{{"s", {{"k", "system"}, {"other", "x"}}}};
        ConfigTable user{{"s", {{"k", "user"}}}};
        BareModule module;
        module.SetColorTable(&user);
        module.SetConfigTables(&system, &user);
        const ResourceManager* const resources = ResourceManager::Instance(false);
        QVERIFY(resources);
        QCOMPARE(resources->ColorTable(), &user);
        QCOMPARE(resources->ReadConfig("s", "k"), "user");
        QCOMPARE(resources->ReadConfig("s", "other"), "x");
        ResourceManager::Destroy();
    }

    void OperationsKeepTheirPlaces()
    {
        const std::vector<int> module{
            SlotOf(&ModuleBase::Initialize),      SlotOf(&ModuleBase::GetInstanceInfo),
            SlotOf(&ModuleBase::OnMessage),       SlotOf(&ModuleBase::GetWidget),
            SlotOf(&ModuleBase::SetProviders),    SlotOf(&ModuleBase::SetColorTable),
            SlotOf(&ModuleBase::SetConfigTables), SlotOf(&ModuleBase::ReservedModuleOp)};
        const std::vector<int> manager{SlotOf(&ModuleManagerSpi::SendModuleMessage),
                                       SlotOf(&ModuleManagerSpi::CreateSubModule),
                                       SlotOf(&ModuleManagerSpi::WriteModuleLog)};
        const std::vector<int> container{
            SlotOf(&PluginManagerSpi::HandleLinkedMessage), SlotOf(&PluginManagerSpi::ForwardToHost),
            SlotOf(&PluginManagerSpi::HandleMessage201), SlotOf(&PluginManagerSpi::HandleMessage202),
            SlotOf(&PluginManagerSpi::HandleMessage203)};
        for (std::size_t i = 1; i < module.size(); ++i) {
            QCOMPARE(module[i], module[0] + static_cast<int>(i));
        }
        QCOMPARE(manager, (std::vector<int>{0, 1, 2}));
        QCOMPARE(container, (std::vector<int>{0, 1, 2, 3, 4}));
    }
};

PANELRY_TEST(ModuleBaseTest)
#include "module_base_test.moc"
