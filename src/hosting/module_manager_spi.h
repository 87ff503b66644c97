#pragma once

#include <memory>

class ModuleBase;

/// What a module can ask of the library; reached through ModuleBase::m_manager.
///
/// Order of operations is binary contract; append nothing, reorder nothing.
/// Threading: application thread only. Data that arrives on another thread is carried over first; nothing is
///   sent from inside message 119.
class ModuleManagerSpi
{
public:
    /// Sends a message; returns after all receivers have returned. `sender` itself is left out; only a
    /// sub-module in a frame hears its own message, through its parent.
    ///
    /// `targetModuleId` -1: to the other modules of the sender's frame and to their sub-modules; from a
    /// sender without a frame, or null, to all modules there are. Any other value: to every module object
    /// whose `module_id` equals it, wherever it stands. Some ids go to the library or the host instead, see
    /// hosting/message_ids.h. `payload` is read, and for 102 changed, during the call only.
    virtual void SendModuleMessage(int msgId, void* payload, ModuleBase* sender, int targetModuleId) = 0;

    /// Makes a module of kind `moduleId` that hears what `parent` hears and dies when `parent` is removed. It
    /// gets no setters, no Initialize and no 102: that is the parent's business. Empty for an unknown id.
    virtual std::shared_ptr<ModuleBase> CreateSubModule(int moduleId, ModuleBase* parent) = 0;

    /// Writes a line to the main logger; `level` 0 to 6, any other writes nothing. As long as no logger is
    /// running, and none is by default, nothing is written.
    virtual void WriteModuleLog(int level, const char* text) = 0;

protected:
    ~ModuleManagerSpi() = default;  // nobody deletes through this interface; takes no slot
};
