#pragma once

/// For hosts that leave their main function without Uninit: the end of the process destroys the toolkit's
/// statics on one thread while the application thread still uses them. So the application thread is brought
/// to a standstill first. Nothing is torn down: its objects belong to it.
namespace panelry::bridge
{

/// Makes sure that the end of the process comes by here. Any thread, as often as one likes; on the main
/// thread it takes effect before anything is destroyed, elsewhere before what was made until now. A main thread
/// that ends alone, by pthread_exit, passes for the end of the process.
void GuardExit();

/// Application thread: stands still for good if the process is ending.
void HaltIfExiting();

}  // namespace panelry::bridge
