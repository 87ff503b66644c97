#pragma once

/// The message ids that mean something to the library itself. All others are a matter between modules, or
/// between the host ("cmd" of an operate message) and a module.
///
/// "In": a module calls SendModuleMessage. "Out": the library calls a module's OnMessage.
namespace panelry
{

enum MessageId : int {
    /// In and out, StringMap*: the stock that was selected, at least "stockcode", "market", "stockname". In a
    /// frame it becomes the group's stock; a new module gets those three keys, which may be empty. A panel
    /// that picked it from the latest stocks adds kFromLatest "1": the pick then leaves that list as it is.
    kStockSelected = 102,
    /// Out, const char* (UTF-8 JSON): push data for one component, first of two calls.
    kInitData = 113,
    /// Out, const char* (UTF-8 JSON): push data, after 113 or alone when it goes to all panels.
    kPushData = 114,
    /// Out, uiohook_event* (<uiohook.h>): a key or mouse action, on the hook thread. Must not send, block or touch a
    /// widget; input/hook_subscription.h hands it over.
    kHookEvent = 119,
    /// In, const char* (JSON): register for and unregister from key and mouse events. Not passed on.
    kRegisterHotKey = 120,
    kUnregisterHotKey = 121,
    /// In: a watchlist request. Not passed on.
    kWatchlistRequest = 123,
    /// In, any payload: for the container layer, not passed on. It sees 200 as 102.
    kLinkedAsStock = 200,
    kContainer201 = 201,
    kContainer202 = 202,
    kContainer203 = 203,
    /// In, const char* (text): a request to the host, handed to its callback as it stands. Not passed on.
    kToHost205 = 205,
    kToHost206 = 206,
    /// In, any payload: for the container layer, under its own number. Not passed on.
    kLinked207 = 207,
};

/// Ids from here on are the modules' own: no host sends them, and their payload is of any type.
inline constexpr int kModuleIdsBegin = 1'000'000;

/// Whether OnMessage's payload is text (const char*, UTF-8) under `msgId`. It is so for what hosts send, and
/// below kModuleIdsBegin by agreement for what modules send too; the exceptions are the library's ids.
constexpr bool CarriesText(int msgId)
{
    const bool library = msgId == kStockSelected || (msgId >= kHookEvent && msgId <= kWatchlistRequest) ||
                         (msgId >= kLinkedAsStock && msgId <= kLinked207);
    return !library && msgId < kModuleIdsBegin;
}

/// Key of a kStockSelected payload; the word is spelled so on both sides.
inline constexpr char kFromLatest[] = "from_lastest";

/// `targetModuleId` of SendModuleMessage for "along the sender's link".
inline constexpr int kAlongLink = -1;

}  // namespace panelry
