#pragma once

#include <cstdint>
#include <functional>
#include <string>

/// The providers of the contract host: they answer nothing, and tell what is asked of them once they are told
/// to. Each has the number that Init was called with; nothing of theirs is ever freed.
namespace panelry::test
{

using Tell = std::function<void(const std::string&)>;

/// What is told from now on goes to `tell`.
void TellOfProviders(Tell tell);

/// The providers' addresses as Init wants them, null for the number 0. The same number is the same object.
void* QuoteProviderOf(std::uintptr_t number);
void* TradeProviderOf(std::uintptr_t number);

/// The number behind such an address.
std::uintptr_t NumberOfProvider(void* provider);

/// A log-in, and a cancel of the normal account, as the newest trade provider tells all that ever attached.
void PushLogin(int state);
void PushCancel();

}  // namespace panelry::test
