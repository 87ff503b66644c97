#include "services/module_base.h"

#include "hosting/module_manager_spi.h"
#include "hosting/plugin_manager_spi.h"
#include "support/slot_of.h"
#include "support/test.h"

using namespace panelry::test;

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

    void OperationsKeepTheirPlaces()
    {
        using M = ModuleBase;
        const int first = SlotOf(&M::Initialize);
        QCOMPARE(SlotsOf(&M::GetInstanceInfo, &M::OnMessage, &M::GetWidget, &M::SetProviders,
                         &M::SetColorTable, &M::SetConfigTables, &M::ReservedModuleOp),
                 (std::vector{first + 1, first + 2, first + 3, first + 4, first + 5, first + 6, first + 7}));
        using Manager = ModuleManagerSpi;
        QCOMPARE(SlotsOf(&Manager::SendModuleMessage, &Manager::CreateSubModule, &Manager::WriteModuleLog),
                 (std::vector{0, 1, 2}));
        using Plugins = PluginManagerSpi;
        QCOMPARE(SlotsOf(&Plugins::HandleLinkedMessage, &Plugins::ForwardToHost, &Plugins::HandleMessage201,
                         &Plugins::HandleMessage202, &Plugins::HandleMessage203),
                 (std::vector{0, 1, 2, 3, 4}));
    }
};

PANELRY_TEST(ModuleBaseTest)
#include "module_base_test.moc"
