#pragma once

#include <cstdint>
#include <memory>

#include "services/module_info.h"
#include "services/virtual_enable_shared_from_this.h"

class ModuleManagerSpi;
class QWidget;

/// The base class of every module: the panels in module libraries and the services inside the library.
///
/// Order of operations and members is binary contract; append nothing, reorder nothing.
///
/// Ownership: CreateModule allocates the object, the plug-in manager owns it from the return on and deletes
///   it through the virtual destructor. The module owns its widget, with one exception: a widget that stands
///   without a frame is deleted by the library when the panels are torn down, *before* its module. Hold the
///   widget in a QPointer and delete in the destructor what is left of it.
/// Threading: application thread, but for message 119, which comes on the hook thread. A module must not
///   send from there.
/// Failures: nothing here reports one. An exception that leaves an operation ends the host.
class ModuleBase : public virtual_enable_shared_from_this<ModuleBase>
{
public:
    ModuleBase();
    ~ModuleBase() override;
    ModuleBase(const ModuleBase&) = delete;
    ModuleBase& operator=(const ModuleBase&) = delete;

    /// The module's own description; CreateModule copies its argument here.
    InstanceInfo m_instance;

    /// The way back to the library; set right after CreateModule returns, null before. Valid for the module's
    /// life.
    ModuleManagerSpi* m_manager = nullptr;

    /// Called once, after the three setters. `a` and `b` are empty texts. `initParam` is the creation text, a
    /// compact JSON object in UTF-8: "create_source" ("panelry"), "init_data" (clones only: the source
    /// widget's "module_data", all values texts), "init_param" (the host's, or null), "need_display" ("1" or
    /// "0").
    virtual void Initialize(int moduleId, const char* a, const char* b, const char* initParam) = 0;

    /// A fresh copy of m_instance. Called for the frame's title and for every message that goes by module id.
    virtual std::shared_ptr<InstanceInfo> GetInstanceInfo();

    /// Every message; what `payload` points to follows from `msgId`, see hosting/message_ids.h. Any number
    /// may come, -1 included. Payloads are valid during the call.
    virtual void OnMessage(int msgId, void* payload) = 0;

    /// The module's widget, always the same one, made without a parent; null for a module without a visible
    /// part.
    virtual QWidget* GetWidget();

    /// Once, at creation: the host's quote and trade service objects, either may be null. Ignored here.
    virtual void SetProviders(void* quoteProvider, void* tradeProvider);

    /// Once: the colour table (a ConfigTable, see services/records.h). Kept in this library's
    /// ResourceManager; the first one that isn't null stays.
    virtual void SetColorTable(void* table);

    /// Once: the settings of the installation and of the user (two ConfigTables). Kept in this library's
    /// ResourceManager, each for itself; the first that isn't null stays. An override calls this one too.
    virtual void SetConfigTables(void* systemTable, void* userTable);

    /// Never called; keeps its place in the table.
    virtual void ReservedModuleOp(std::uintptr_t a, std::uintptr_t b);
};
