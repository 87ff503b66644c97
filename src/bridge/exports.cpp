#include "bridge/exports.h"

#include "bridge/host_bridge.h"

void Init(void* quoteProvider, void* tradeProvider, void (*hostCallback)(std::int32_t nCode, void* pData))
{
    panelry::bridge::Init(quoteProvider, tradeProvider, hostCallback);
}

void NotifyMsg(std::int32_t type, std::int32_t id, const char* text)
{
    panelry::bridge::NotifyMsg(type, id, text);
}

void Uninit()
{
    panelry::bridge::Uninit();
}
