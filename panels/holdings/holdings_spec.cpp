#include "holdings/holdings_spec.h"

namespace panelry
{

TablesSpec HoldingsSpec()
{
    return {"holdings",
            {{"持仓",
              "gupiao_table",
              &DataDealBase::QueryPositions,
              "2102",
              false,
              {{"2102", ColumnKind::Text, 7},
               {"2103", ColumnKind::Text, 10},
               {"2117", ColumnKind::Number},
               {"2121", ColumnKind::Number},
               {"2122", ColumnKind::Number},
               {"2124", ColumnKind::Number},
               {"2125", ColumnKind::Number, 11},
               {"2147", ColumnKind::Profit, 10},
               {"3616", ColumnKind::Profit}}}}};
}

}  // namespace panelry
