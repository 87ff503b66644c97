#pragma once

#include "host_tables/tables_widget.h"

namespace panelry
{

/// The number of the holdings panel.
inline constexpr unsigned kHoldingsPanelId = 41007;

TablesSpec HoldingsSpec();

}  // namespace panelry
