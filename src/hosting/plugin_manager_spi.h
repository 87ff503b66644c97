#pragma once

/// What the plug-in manager asks of the container layer above it.
///
/// Order of operations is binary contract; append nothing, reorder nothing.
/// Threading: application thread only. Payloads are passed on as the sending module gave them, untested.
class PluginManagerSpi
{
public:
    virtual void HandleLinkedMessage(void* payload, int msgId) = 0;  ///< messages 200 (as 102) and 207
    virtual void ForwardToHost(int msgId, void* payload) = 0;        ///< messages 205 and 206
    virtual void HandleMessage201(void* payload) = 0;
    virtual void HandleMessage202(void* payload) = 0;
    virtual void HandleMessage203(void* payload) = 0;

protected:
    ~PluginManagerSpi() = default;  // nobody deletes through this interface; takes no slot
};
