#pragma once

namespace panelry
{

/// Makes the embedded style sheet, icons and translation catalogues known. In a static library their units
/// are linked, and then registered while the library loads, only because this refers to them. Harmless to
/// repeat.
void InitResources();

}  // namespace panelry
