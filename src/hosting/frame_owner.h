#pragma once

#include <string>

class ContainerWidget;
class ModuleBase;
class QObject;

namespace panelry
{

/// What a frame asks of the layer that keeps the list of frames. Application thread.
class FrameOwner
{
public:
    /// Opens one more window of a component, as a clone of `source` (null: not a clone); `text` is an operate
    /// message, which may be empty.
    virtual void CreateContainer(int nComponentId, ContainerWidget* source, const std::string& text) = 0;

    /// Takes an open frame or widget, and the module in it, off the list.
    virtual void RemoveContainer(QObject* object) = 0;

    /// Hands a message to a module and keeps the module alive over the call.
    virtual void Deliver(ModuleBase* module, int msgId, const std::string& text) = 0;

protected:
    ~FrameOwner() = default;
};

}  // namespace panelry
