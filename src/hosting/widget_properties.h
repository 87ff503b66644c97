#pragma once

/// The Qt properties through which a module's widget and its frame speak to each other.
namespace panelry
{

// Set by the module on its widget, before GetWidget is first called.
inline constexpr char kFrameWidth[] = "nwidth";                    ///< int, pixels
inline constexpr char kFrameHeight[] = "nheight";                  ///< int, pixels
inline constexpr char kFixedSize[] = "property_fixed_size";        ///< bool: the frame keeps that size
inline constexpr char kSupportClone[] = "property_support_clone";  ///< bool: the frame has a clone button
inline constexpr char kStaysOnTop[] = "property_staysontop";       ///< bool: the frame stays on top
inline constexpr char kModuleData[] = "module_data";               ///< QVariantMap: what a clone starts with

// Set by the library on the module's widget.
inline constexpr char kModuleName[] = "property_modulename";  ///< QString: the title that the host gave
inline constexpr char kIgnoreLockHide[] =
    "ignord_lock_hide";  ///< bool: passed over by "show" and "hide" to all
inline constexpr char kFirstWidget[] = "property_firstwidget";  ///< bool: the component's first window
inline constexpr char kModulePointer[] = "module";              ///< void*: the ModuleBase*

}  // namespace panelry
