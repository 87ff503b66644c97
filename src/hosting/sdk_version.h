#pragma once

/// The major version of the SDK. It changes when a record or an interface that crosses between library and
/// module changes its shape; a module built for another major can't be loaded. Stands in every module's
/// ABI note.
#define PANELRY_SDK_MAJOR 1
