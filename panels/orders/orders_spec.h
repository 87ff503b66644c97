#pragma once

#include "host_tables/tables_widget.h"

namespace panelry
{

/// The number of the panel of orders and deals.
inline constexpr unsigned kOrdersPanelId = 41006;

/// Orders that can be cancelled, all orders of the day, deals.
TablesSpec OrdersSpec();

}  // namespace panelry
